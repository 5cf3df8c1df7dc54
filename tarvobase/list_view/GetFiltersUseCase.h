#pragma once

#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/usecase/DelegateUseCase.h"

namespace tarvo {

/// Receives the answers of `GetFiltersUseCase`, on the main queue.
class GetFiltersUseCaseDelegate : public virtual platform::Object {
public:
    /// Brings the filters of one column, which is named by its identifier. The list is empty for a field that cannot be
    /// filtered.
    virtual void filters(const GetFilters::Filters& filters, const std::string& column) {
        static_cast<void>(filters), static_cast<void>(column);
    }
    virtual void filters(const GetFilters::FiltersByColumn& filters) { static_cast<void>(filters); }
};

/// Reports the filters that columns offer to a delegate. Each call is answered once.
class GetFiltersUseCase final : public DelegateUseCase<GetFiltersUseCaseDelegate> {
public:
    void getFilters(const Metadata& column);
    void getFilters(const std::vector<Metadata>& columns);
};

}  // namespace tarvo
