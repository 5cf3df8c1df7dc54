#include "tarvobase/list_view/GetFiltersUseCase.h"

namespace tarvo {

void GetFiltersUseCase::getFilters(const Metadata& column) {
    answer([column] { return GetFilters::getFilters(column); },
           [identifier = column.fieldIdentifier()](GetFiltersUseCaseDelegate& delegate,
                                                   const GetFilters::Filters& filters) {
               delegate.filters(filters, identifier);
           });
}

void GetFiltersUseCase::getFilters(const std::vector<Metadata>& columns) {
    answer(
        [columns] {
            std::vector<const Metadata*> pointers;
            for (auto& column : columns) pointers.push_back(&column);
            return GetFilters::getFilters(pointers);
        },
        [](GetFiltersUseCaseDelegate& delegate, const GetFilters::FiltersByColumn& filters) {
            delegate.filters(filters);
        });
}

}  // namespace tarvo
