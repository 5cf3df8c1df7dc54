#include <algorithm>

#include "platform/Json.h"
#include "sandbox/Control.h"
#include "sandbox/Sandbox.h"

namespace tarvo::sandbox {
namespace {

/// Sets the members of a view that a map names. Returns what is wrong with the map, or nullopt.
std::optional<std::string> applyTo(ViewData& view, const ValueMap& map) {
    for (const auto& entry : map) {
        const auto& name = entry.name;
        const auto& value = entry.value;
        auto takeText = [&](std::string& into) {
            if (value.asText()) into = *value.asText();
            return value.asText() != nullptr;
        };
        auto takeFlag = [&](bool& into) {
            into = value.asBool().value_or(into);
            return value.asBool().has_value();
        };
        bool isTaken = false;
        if (name == "id") {
            isTaken = value.asText() != nullptr;
        } else if (name == "name") {
            isTaken = takeText(view.name);
        } else if (name == "displayName") {
            isTaken = takeText(view.displayName);
        } else if (name == "section") {
            isTaken = takeText(view.section);
        } else if (name == "sortBy") {
            isTaken = takeText(view.sortBy);
        } else if (name == "isDefault") {
            isTaken = takeFlag(view.isDefault);
        } else if (name == "isOffline") {
            isTaken = takeFlag(view.isOffline);
        } else if (name == "isAscending") {
            isTaken = takeFlag(view.isAscending);
        } else if (name == "criteria") {
            view.criteria = value;
            isTaken = value.isNull() || value.asMap() || value.asList();
        } else if (name == "columns" && value.asList()) {
            view.columns.clear();
            for (const auto& column : *value.asList()) view.columns.push_back(column.textOr(""));
            isTaken = true;
        }
        if (!isTaken) return "\"" + name + "\" is no member of a view, or its value has another type.";
    }
    return std::nullopt;
}

}  // namespace

// {"module":"Leads","add":[view,...],"edit":[view with "id",...],"delete":[id,...]} changes all or nothing.
Reply Control::changeViews(const Request& request) {
    auto body = json::parse(request.body).value_or(Value());
    const auto map = body.asMap() ? *body.asMap() : ValueMap();
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto& data = sandbox_.data_;
    const auto* module = data.module(map.valueOf("module").textOr(""));
    if (!module) return refusedControl(400, "\"module\" names a module.");
    auto views = data.views;
    auto find = [&](const std::string& id) {
        return std::find_if(views.begin(), views.end(), [&](const ViewData& view) { return view.id == id; });
    };
    ValueList added;
    for (const auto* kind : {"add", "edit", "delete"}) {
        auto list = map.valueOf(kind);
        if (list.isNull()) continue;
        if (!list.asList()) return refusedControl(400, "\"add\", \"edit\" and \"delete\" are lists.");
        for (const auto& item : *list.asList()) {
            const bool isAdded = kind == std::string_view("add");
            auto id = item.asMap() ? item.asMap()->valueOf("id").textOr("") : item.textOr("");
            if (isAdded) {
                views.push_back({.id = data.ids.next(), .module = module->name, .section = "Mine"});
                id = views.back().id;
                added.emplace_back(id);
            }
            auto view = find(id);
            if (view == views.end()) return refusedControl(400, "There is no view \"" + id + "\".");
            if (kind == std::string_view("delete")) {
                views.erase(view);
                continue;
            }
            if (!item.asMap()) return refusedControl(400, "A view is a map.");
            if (auto wrong = applyTo(*view, *item.asMap())) return refusedControl(400, *wrong);
        }
    }
    data.views = std::move(views);
    return Reply::of(ValueMap{{"added", std::move(added)}});
}

}  // namespace tarvo::sandbox
