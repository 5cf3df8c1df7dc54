#pragma once

#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/usecase/DelegateUseCase.h"

namespace tarvo {

/// Hears the answers of `GetFiltersUseCase`, on the main queue.
class GetFiltersUseCaseDelegate : public virtual platform::Object {
public:
    /// The filters of one column, by its identifier; none for a field that cannot be filtered.
    virtual void filters(const GetFilters::Filters& filters, const std::string& column) {
        static_cast<void>(filters), static_cast<void>(column);
    }
    virtual void filters(const GetFilters::FiltersByColumn& filters) { static_cast<void>(filters); }
};

/// The filters that columns offer, told to a delegate. Answers always, once a question.
class GetFiltersUseCase final : public DelegateUseCase<GetFiltersUseCaseDelegate> {
public:
    void getFilters(const Metadata& column);
    void getFilters(const std::vector<Metadata>& columns);
};

}  // namespace tarvo
