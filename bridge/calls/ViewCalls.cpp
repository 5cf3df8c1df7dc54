#include <functional>

#include "bridge/DelegateLines.h"
#include "bridge/calls/Calls.h"
#include "bridge/forms/RecordForms.h"
#include "tarvobase/get_metadata/GetFieldList.h"
#include "tarvobase/list_view/GetCustomViewsUseCase.h"
#include "tarvobase/list_view/GetFiltersUseCase.h"

namespace tarvo {

template <>
struct EnumCases<CustomViewColumnName> {
    using C = CustomViewColumnName;
    static constexpr EnumCase<C> cases[] = {{C::ViewID, "ViewID"},
                                            {C::ViewType, "ViewType"},
                                            {C::ViewName, "ViewName"},
                                            {C::ViewDisplayName, "ViewDisplayName"},
                                            {C::ModuleName, "ModuleName"},
                                            {C::IsOfflineSupported, "IsOfflineSupported"},
                                            {C::IsDefault, "IsDefault"},
                                            {C::OfflineQuery, "OfflineQuery"},
                                            {C::OfflineQueryReplaceInfo, "OfflineQueryReplaceInfo"},
                                            {C::LastModifiedTime, "LastModifiedTime"},
                                            {C::IsUserCustomView, "IsUserCustomView"},
                                            {C::ListFields, "ListFields"},
                                            {C::Mode, "Mode"},
                                            {C::SectionID, "SectionID"},
                                            {C::SelectedColumnsQuery, "SelectedColumnsQuery"},
                                            {C::ViewOrder, "ViewOrder"},
                                            {C::SectionDisplayName, "SectionDisplayName"},
                                            {C::SortBy, "SortBy"},
                                            {C::SortOrder, "SortOrder"}};
};

}  // namespace tarvo

namespace tarvo::bridge {

namespace {

struct ModuleRequest {
    std::string moduleName;
    static constexpr auto fields() { return describe(field("moduleName", &ModuleRequest::moduleName)); }
};
struct ViewsRequest {
    std::string moduleName;
    std::optional<std::vector<CustomViewColumnName>> sortBy;
    static constexpr auto fields() {
        return describe(field("moduleName", &ViewsRequest::moduleName), field("sortBy", &ViewsRequest::sortBy));
    }
};
struct ViewRequest {
    std::string cvId;
    std::string moduleName;
    static constexpr auto fields() {
        return describe(field("cvId", &ViewRequest::cvId), field("moduleName", &ViewRequest::moduleName));
    }
};
struct SortRequest {
    SortField sortField;
    std::string cvId;
    std::string moduleName;
    static constexpr auto fields() {
        return describe(field("sortField", &SortRequest::sortField), field("cvId", &SortRequest::cvId),
                        field("moduleName", &SortRequest::moduleName));
    }
};
/// Asks for one column or for several. The module's fields are read from the database.
struct FiltersRequest {
    std::string moduleName;
    std::optional<std::string> column;
    std::optional<std::vector<std::string>> columns;
    static constexpr auto fields() {
        return describe(field("moduleName", &FiltersRequest::moduleName), field("column", &FiltersRequest::column),
                        field("columns", &FiltersRequest::columns));
    }
};

class ViewsLines final : public virtual DelegateLines, public GetCustomViewsUseCaseDelegate {
public:
    void sortFieldUpdated(const std::string& cvId, const std::string& moduleName) override {
        report("sortFieldUpdated", {{"cvId", toJson(cvId)}, {"moduleName", toJson(moduleName)}});
    }
    void customViews(const std::optional<CustomViews>& customViews, const std::string& moduleName) override {
        report("customViews", {{"customViews", toJson(customViews)}, {"moduleName", toJson(moduleName)}});
    }
    void customView(const std::optional<CustomView>& customView, const std::string& cvId,
                    const std::string& moduleName) override {
        report("customView",
               {{"customView", toJson(customView)}, {"cvId", toJson(cvId)}, {"moduleName", toJson(moduleName)}});
    }
    void allViewCustomView(const std::optional<CustomView>& customView, const std::string& moduleName) override {
        report("allViewCustomView", {{"customView", toJson(customView)}, {"moduleName", toJson(moduleName)}});
    }
    void defaultFieldUpdated(const std::string& cvId, const std::string& moduleName) override {
        report("defaultFieldUpdated", {{"cvId", toJson(cvId)}, {"moduleName", toJson(moduleName)}});
    }
    void defaultCustomView(const std::optional<CustomView>& customView, const std::string& moduleName) override {
        report("defaultCustomView", {{"customView", toJson(customView)}, {"moduleName", toJson(moduleName)}});
    }
};

class FiltersLines final : public virtual DelegateLines, public GetFiltersUseCaseDelegate {
public:
    void filters(const GetFilters::Filters& filters, const std::string& column) override {
        report("filters", {{"filters", toJson(filters)}, {"column", toJson(column)}});
    }
    void filters(const GetFilters::FiltersByColumn& filters) override {
        report("filters", {{"filters", toJson(filters)}});
    }
};

std::shared_ptr<GetCustomViewsUseCase> viewsFor(const CallPtr& call) {
    return answeringOnce<ViewsLines>(std::make_shared<GetCustomViewsUseCase>(), call);
}

void getCustomViews(const ViewsRequest& request, const CallPtr& call) {
    if (request.sortBy)
        viewsFor(call)->getCustomViews(request.moduleName, *request.sortBy);
    else
        viewsFor(call)->getCustomViews(request.moduleName);
}

void getFiltersOf(const FieldList& fields, const FiltersRequest& request, const CallPtr& call) {
    std::vector<Metadata> columns;
    for (auto& name : request.column ? std::vector{*request.column} : *request.columns) {
        auto column = fields.getField(name);
        if (!column) return call->refuse(request.moduleName + " has no field \"" + name + "\"");
        columns.push_back(*column);
    }
    auto usecase = answeringOnce<FiltersLines>(std::make_shared<GetFiltersUseCase>(), call);
    if (request.column)
        usecase->getFilters(columns.front());
    else
        usecase->getFilters(columns);
}

void getFilters(const FiltersRequest& request, const CallPtr& call) {
    if (request.column.has_value() == request.columns.has_value())
        return call->refuse("request: either column or columns is needed");
    std::make_shared<GetFieldList>()->execute(
        GetFieldList::Request(request.moduleName),
        [request, call](const GetFieldList::Response* response, const GetFieldList::Failure*) {
            getFiltersOf(response ? response->fieldList : FieldList(), request, call);
        });
}

}  // namespace

void addViewCalls(Registry& registry) {
    registry.addOperation<ViewsRequest>("GetCustomViewsUseCase.getCustomViews", getCustomViews);
    registry.addOperation<ViewRequest>("GetCustomViewsUseCase.getCustomView",
                                       [](const ViewRequest& request, const CallPtr& call) {
                                           viewsFor(call)->getCustomView(request.cvId, request.moduleName);
                                       });
    registry.addOperation<ModuleRequest>("GetCustomViewsUseCase.getDefaultCustomView",
                                         [](const ModuleRequest& request, const CallPtr& call) {
                                             viewsFor(call)->getDefaultCustomView(request.moduleName);
                                         });
    registry.addOperation<ModuleRequest>("GetCustomViewsUseCase.getAllViewCustomView",
                                         [](const ModuleRequest& request, const CallPtr& call) {
                                             viewsFor(call)->getAllViewCustomView(request.moduleName);
                                         });
    registry.addOperation<ViewRequest>("GetCustomViewsUseCase.setAsDefaultCustomView",
                                       [](const ViewRequest& request, const CallPtr& call) {
                                           viewsFor(call)->setAsDefaultCustomView(request.cvId, request.moduleName);
                                       });
    registry.addOperation<SortRequest>(
        "GetCustomViewsUseCase.updateSortField", [](const SortRequest& request, const CallPtr& call) {
            viewsFor(call)->updateSortField(request.sortField, request.cvId, request.moduleName);
        });
    registry.addOperation<FiltersRequest>("GetFiltersUseCase.getFilters", getFilters);
}

}  // namespace tarvo::bridge
