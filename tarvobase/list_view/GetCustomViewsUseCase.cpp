#include "tarvobase/list_view/GetCustomViewsUseCase.h"

#include "platform/Result.h"

namespace tarvo {

namespace {

using ViewsDelegate = GetCustomViewsUseCaseDelegate;
using View = std::optional<CustomView>;
using Views = std::optional<ViewsDelegate::CustomViews>;

}  // namespace

void GetCustomViewsUseCase::getCustomViews(const std::string& moduleName) {
    answer([views = dataManager, moduleName] { return views->getCustomViews(moduleName); },
           [moduleName](ViewsDelegate& delegate, const Views& views) { delegate.customViews(views, moduleName); });
}

void GetCustomViewsUseCase::getCustomViews(const std::string& moduleName,
                                           const std::vector<CustomViewColumnName>& sortBy) {
    answer([views = dataManager, moduleName, sortBy] { return views->getCustomViews(moduleName, sortBy); },
           [moduleName](ViewsDelegate& delegate, const Views& views) { delegate.customViews(views, moduleName); });
}

void GetCustomViewsUseCase::getCustomView(const std::string& id, const std::string& moduleName) {
    answer([views = dataManager, id, moduleName] { return views->getCustomView(id, moduleName); },
           [id, moduleName](ViewsDelegate& delegate, const View& view) { delegate.customView(view, id, moduleName); });
}

void GetCustomViewsUseCase::getDefaultCustomView(const std::string& moduleName) {
    answer([views = dataManager, moduleName] { return views->getDefaultCustomView(moduleName); },
           [moduleName](ViewsDelegate& delegate, const View& view) { delegate.defaultCustomView(view, moduleName); });
}

void GetCustomViewsUseCase::getAllViewCustomView(const std::string& moduleName) {
    answer([views = dataManager, moduleName] { return views->getAllViewCustomView(moduleName); },
           [moduleName](ViewsDelegate& delegate, const View& view) { delegate.allViewCustomView(view, moduleName); });
}

void GetCustomViewsUseCase::setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) {
    answer(
        [views = dataManager, cvId, moduleName] {
            views->setAsDefaultCustomView(cvId, moduleName);
            return Nothing();
        },
        [cvId, moduleName](ViewsDelegate& delegate, Nothing) { delegate.defaultFieldUpdated(cvId, moduleName); });
}

void GetCustomViewsUseCase::updateSortField(const SortField& sortField, const std::string& cvId,
                                            const std::string& moduleName) {
    answer(
        [views = dataManager, sortField, cvId, moduleName] {
            views->updateSortfield(sortField, cvId, moduleName);
            return Nothing();
        },
        [cvId, moduleName](ViewsDelegate& delegate, Nothing) { delegate.sortFieldUpdated(cvId, moduleName); });
}

}  // namespace tarvo
