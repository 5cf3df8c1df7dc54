#include "sandbox/data/Views.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "platform/Text.h"
#include "platform/dates/WireDates.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {
namespace {

constexpr std::string_view currentUser = "${CURRENTUSER}";
constexpr std::string_view activities = "Activities";
constexpr std::string_view activityType = "Activity_Type";
constexpr std::string_view activityModules[] = {"Tasks", "Events", "Calls"};
// The data set ends with June 2026, so this covers the youngest seventh of it.
constexpr std::string_view recent = "2026-01-01";
constexpr std::size_t shownColumns = 5;

bool isActivity(std::string_view module) {
    return std::ranges::find(activityModules, module) != std::end(activityModules);
}

bool isOneOf(std::string_view words, const std::string& word) {
    auto all = text::split(words, " ");
    return std::ranges::find(all, word) != all.end();
}

Value leaf(std::string_view field, std::string_view comparator, Value value) {
    return ValueMap{{"field", field}, {"comparator", comparator}, {"value", std::move(value)}};
}

Value joined(std::string_view word, std::initializer_list<Value> nodes) {
    ValueList list;
    for (const auto& node : nodes) {
        if (!list.empty()) list.emplace_back(word);
        list.push_back(node);
    }
    return list;
}

Value allOf(std::initializer_list<Value> nodes) { return joined("and", nodes); }
Value anyOf(std::initializer_list<Value> nodes) { return joined("or", nodes); }

// Clients see from the module beside the field which module a view belongs to.
Value ofKinds(std::string_view comparator, Value kinds) {
    return ValueMap{
        {"field", activityType}, {"comparator", comparator}, {"value", std::move(kinds)}, {"module", activities}};
}

/// Lists the comparators that make sense for a field. Each gives one view.
struct Sample {
    std::string_view module;
    std::string_view field;
    /// Several values are separated by "|".
    std::string_view values;
    std::string_view comparators;
};

constexpr std::string_view ofText =
    "equal not_equal like not_like greater_equal greater_than less_equal less_than starts_with ends_with contains "
    "not_contains";
constexpr std::string_view ofAmounts = "equal not_equal greater_equal greater_than less_equal less_than";
// A day begins at another moment in each zone, so days are never compared for equality.
constexpr std::string_view ofDays = "greater_equal greater_than less_equal less_than";
constexpr std::string_view ofChoices = "in not_in";
constexpr std::string_view ofRanges = "between not_between";
constexpr std::string_view ofIds = "equal not_equal in not_in";
constexpr std::string_view ofEmptiness = "is_empty is_not_empty";

constexpr Sample samples[] = {
    {"Leads", "Last_Name", "Nagy", ofText},
    {"Leads", "Last_Name", "O'Neill|van den Berg|Weiß", ofChoices},
    {"Leads", "Status", "Contacted", "equal not_equal"},
    {"Leads", "Lead_Source", "Partner's Tip|Messe", ofChoices},
    {"Leads", "Languages", "Français", "like not_like contains not_contains"},
    {"Leads", "Email_Opt_Out", "true", "equal not_equal"},
    {"Leads", "External_Number", "900000000000050500", ofAmounts},
    {"Leads", "Discount", "9.5", ofAmounts},
    {"Leads", "Score", "75.00", ofAmounts},
    {"Leads", "Score", "25|75.5", ofRanges},
    {"Leads", "Birthday", "1985-07-01", ofDays},
    {"Leads", "Lead_Number", "N-1", "starts_with"},
    {"Leads", "Second_Owner", currentUser, "equal not_equal"},
    {"Leads", "Fax", "", ofEmptiness},
    {"Contacts", "Email", "mail.1", "like starts_with not_contains"},
    {"Contacts", "Email", ".org", "ends_with contains"},
    {"Contacts", "Phone", "+49 30", "starts_with not_like"},
    {"Contacts", "Account_Name", "", "equal not_equal"},
    {"Contacts", "Date_of_Birth", "1970-01-01", ofDays},
    {"Contacts", "Created_Time", "2024-07-01", ofAmounts},
    {"Deals", "Stage", "Won|Lost", ofChoices},
    {"Deals", "Amount", "500000", ofAmounts},
    {"Deals", "Amount", "1000|250000", ofRanges},
    {"Deals", "Probablity", "90", ofAmounts},
    {"Deals", "Closing_Date", "2025-02-28", ofDays},
    {"Deals", "Closing_Date", "2024-02-29|2025-02-28", ofRanges},
    {"CustomModule1", "Owner", currentUser, ofIds},
    {"CustomModule1", "Modified_Time", "2025-01-01", ofDays},
    {"CustomModule1", "Description", "offer", "contains not_contains"},
    {"CustomModule1", "Budget", "1000.50", ofAmounts},
    {"Tasks", "Due_Date", "2025-01-01", "greater_equal less_than"},
    {"Tasks", "Priority", "High|Normal", ofChoices},
    {"Events", "Start_Date_Time", "2025-01-01", ofAmounts},
    {"Events", "All_day", "true", "equal not_equal"},
    {"Calls", "Call_Type", "Missed", "equal not_equal"},
    {"Calls", "Call_Start_Time", "2025-01-01", "greater_equal less_than"},
};

/// Describes a view by hand. For tasks, events and calls the kind of activity is added to the criteria.
struct Named {
    std::string_view module;
    std::string_view name;
    Value criteria;
    std::string_view sortBy = "";
    bool isAscending = false;
};

std::vector<Named> namedViews() {
    return {
        // These values trip up quoting, escaping and splitting.
        {"Leads", "O'Brien and the East",
         anyOf({leaf("Company", "starts_with", "O'Brien"), leaf("Company", "contains", "\"East\"")}), "Company", true},
        {"Leads", "100% and 50%_off",
         anyOf({leaf("Company", "like", "100%"), leaf("Description", "contains", "50%_off"),
                leaf("Description", "contains", "C:\\temp")})},
        {"Leads", "Commas in a List",
         leaf("City", "in", ValueList{"Cork, Ireland", "São Paulo", "\"Quoted\" 'Co', Ltd.", "Kraków"})},
        {"Leads", "Several Cities", leaf("City", "equal", "Berlin,東京,Zürich"), "City", true},
        {"Leads", "Not a Hole", leaf("Skype", "contains", "{2} ${id} NULL")},
        // These criteria are trees.
        {"Leads", "Worth a Call",
         allOf({leaf("Email_Opt_Out", "equal", "false"),
                anyOf({leaf("Annual_Revenue", "greater_equal", "500000"),
                       allOf({leaf("No_of_Employees", "greater_than", "250"),
                              anyOf({leaf("Status", "in", ValueList{"New", "Contacted"}),
                                     leaf("Lead_Source", "equal", "Partner's Tip")})})})}),
         "Annual_Revenue", false},
        {"Leads", "Born in the Seventies",
         allOf({leaf("Birthday", "greater_equal", "1970-01-01"), leaf("Birthday", "less_than", "1980-01-01")}),
         "Birthday", true},
        {"Contacts", "People of Accounts",
         allOf({leaf("Account_Name", "not_equal", ""), leaf("Last_Name", "not_in", ValueList{"Silva", "D'Arcy"})}),
         "Last_Name", true},
        {"Deals", "Pipeline of the Year",
         allOf({leaf("Closing_Date", "greater_equal", "2025-01-01"), leaf("Closing_Date", "less_than", "2026-01-01"),
                leaf("Stage", "not_in", ValueList{"Won", "Lost"})}),
         "Closing_Date", true},
        {"Deals", "Large or Likely",
         anyOf({leaf("Amount", "greater_than", "750000"), leaf("Probablity", "greater_equal", "400")}), "Amount"},
        {"CustomModule1", "Projects of Leads", leaf("Lead", "not_equal", ""), "Start", true},
        {"Tasks", "Open Tasks", leaf("Status", "not_in", ValueList{"Completed", "Deferred"}), "Due_Date", true},
        {"Tasks", "Closed Tasks", leaf("Status", "equal", "Completed"), "Due_Date"},
        {"Events", "Meetings Somewhere", leaf("Venue", "not_equal", ""), "Start_Date_Time"},
        {"Calls", "Calls Still to Make",
         allOf({leaf("Call_Status", "equal", "Scheduled"), leaf("Call_Type", "not_equal", "Missed")}),
         "Call_Start_Time", true},
        {activities, "Tasks and Meetings", ofKinds("in", ValueList{"Tasks", "Events"})},
        {activities, "All but Calls", ofKinds("not_equal", "Calls"), "Created_Time"},
        // Only the server can judge these.
        {"Leads", "Unread Leads", leaf("$unread", "equal", "true")},
        {"Leads", "Without a Fax", leaf("Fax", "like", "${EMPTY}")},
        {"Contacts", "New in the Last 400 Days", leaf("Created_Time", "greater_equal", "${TODAY-400}"), "Created_Time"},
        {"Deals", "Overdue Deals",
         allOf({leaf("Closing_Date", "less_than", "${TODAY}"), leaf("Stage", "not_in", ValueList{"Won", "Lost"})}),
         "Closing_Date"},
        {"Tasks", "Overdue Tasks",
         allOf({leaf("Due_Date", "less_than", "${TODAY}"), leaf("Status", "not_equal", "Completed")}), "Due_Date"},
        {"CustomModule1", "Projects without a Budget", leaf("Budget", "is_empty", "")},
    };
}

/// Makes the views of one module's list from the tables above.
class ViewMaker {
public:
    ViewMaker(const DataSet& data, const ModuleData& module, IdSequence& ids)
        : module_(module), metadata_(data.metadata.find(module.name)->second), ids_(ids) {}

    std::vector<ViewData> make() {
        bool isOfKind = isActivity(module_.name);
        // A list of one kind of activity has its name, by which clients know the default.
        auto plural = isOfKind ? module_.name : module_.plural;
        bool opensUnread = module_.name == "Cases";
        section_ = "All";
        add(module_.name == "Leads" ? "All Open Leads" : "All " + plural, Value());
        made_.back().displayName = "All " + plural;
        made_.back().isDefault = !isOfKind && !opensUnread;
        if (opensUnread) add("Unread Cases", leaf("$unread", "equal", "true"));
        if (opensUnread) made_.back().isDefault = true;
        add("My " + plural, leaf("Owner", "equal", currentUser));
        add("Recently Created " + plural, leaf("Created_Time", "greater_equal", recent));
        sort("Created_Time", false);
        section_ = "Shared";
        addNamed();
        section_ = "By Comparator";
        addSamples();
        return std::move(made_);
    }

private:
    void addNamed() {
        for (auto& named : namedViews()) {
            if (named.module != module_.name) continue;
            add(std::string(named.name), std::move(named.criteria));
            sort(named.sortBy, named.isAscending);
        }
    }

    void addSamples() {
        for (const auto& sample : samples) {
            if (sample.module != module_.name) continue;
            const auto* field = fieldNamed(sample.field);
            auto values = text::split(sample.values, "|");
            Value value = values.size() > 1 ? Value(values) : Value(sample.values);
            auto shownValues = sample.values == currentUser ? "me" : text::join(values, ", ");
            for (const auto& comparator : text::split(sample.comparators, " ")) {
                auto words = comparator;
                std::ranges::replace(words, '_', ' ');
                add(field->label + " " + words + (shownValues.empty() ? "" : " " + shownValues),
                    leaf(sample.field, comparator, value));
            }
        }
    }

    void add(std::string name, Value criteria) {
        ViewData view;
        view.id = ids_.next();
        bool isOfKind = isActivity(module_.name);
        view.module = isOfKind ? activities : module_.name;
        view.name = std::move(name);
        view.displayName = view.name;
        view.section = section_;
        prepare(criteria);
        view.isOffline = isForEveryone(criteria);
        auto kind = isOfKind ? ofKinds("equal", module_.name) : Value();
        view.criteria = !isOfKind ? std::move(criteria) : criteria.isNull() ? kind : allOf({kind, criteria});
        for (const auto& field : metadata_.fields)
            if (!field.section.empty() && field.type != "subform" && view.columns.size() < shownColumns)
                view.columns.push_back(field.apiName);
        made_.push_back(std::move(view));
    }

    void sort(std::string_view column, bool isAscending) {
        made_.back().sortBy = column;
        made_.back().isAscending = isAscending;
    }

    const FieldData* fieldNamed(std::string_view apiName) const {
        auto found = std::ranges::find(metadata_.fields, apiName, &FieldData::apiName);
        return found == metadata_.fields.end() ? nullptr : &*found;
    }

    // Days become the seconds that clients keep. Their day begins at midnight in their own zone, so a bound lies half a
    // day before midnight UTC: after every day before and before the day itself, in all zones of the Americas, Europe,
    // Africa and Asia.
    void prepare(Value& node) const {
        if (auto* list = node.mutableList())
            for (auto& item : *list) prepare(item);
        auto* map = node.mutableMap();
        const auto* field = map ? fieldNamed(map->valueOf("field").textOr("")) : nullptr;
        bool isRange = map && isOneOf(ofRanges, map->valueOf("comparator").textOr(""));
        if (!field || isRange || (field->type != "date" && field->type != "datetime")) return;
        auto seconds = platform::wire::readDateTime(map->valueOf("value").textOr("") + "T00:00:00Z");
        if (seconds) map->set("value", std::to_string(*seconds - (field->type == "date" ? 12 * 3600 : 0)));
    }

    // Comparators and values beyond these are the server's own.
    bool isForEveryone(const Value& node) const {
        if (const auto* list = node.asList())
            return std::ranges::all_of(*list, [this](const Value& item) { return isForEveryone(item); });
        const auto* map = node.asMap();
        if (!map) return true;
        auto comparator = map->valueOf("comparator").textOr(""), value = map->valueOf("value").textOr("");
        bool isKnown = isOneOf(ofText, comparator) || isOneOf(ofChoices, comparator);
        bool isPlain = !(value.starts_with("${") && value.ends_with("}")) || value == currentUser;
        return isKnown && isPlain && fieldNamed(map->valueOf("field").textOr(""));
    }

    const ModuleData& module_;
    const ModuleMetadata& metadata_;
    IdSequence& ids_;
    std::string_view section_;
    std::vector<ViewData> made_;
};

// Returns the kinds of activities that the criteria let through; all of them when the criteria name none.
bool allowsKind(const Value& node, std::string_view kind) {
    if (const auto* list = node.asList())
        return std::ranges::all_of(*list, [&](const Value& item) { return allowsKind(item, kind); });
    const auto* map = node.asMap();
    if (!map || map->valueOf("field") != Value(activityType)) return true;
    auto value = map->valueOf("value");
    auto named = value.asList() ? *value.asList() : ValueList{value};
    bool isNamed = std::ranges::find(named, Value(kind)) != named.end();
    return isNamed != (map->valueOf("comparator") == Value("not_equal"));
}

bool namesKinds(const Value& node) {
    if (const auto* list = node.asList()) return std::ranges::any_of(*list, namesKinds);
    return node.asMap() && node.asMap()->valueOf("field") == Value(activityType);
}

}  // namespace

std::vector<ViewData> makeViews(const DataSet& data, IdSequence& ids) {
    std::vector<ViewData> views;
    auto add = [&](const ModuleData& module) {
        auto made = ViewMaker(data, module, ids).make();
        std::ranges::move(made, std::back_inserter(views));
    };
    for (const auto& module : data.modules) {
        if (!module.hasOwnLists || isActivity(module.name)) continue;
        add(module);
        if (module.name == activities)
            for (auto kind : activityModules) add(*data.module(kind));
    }
    return views;
}

bool isViewOf(const ViewData& view, std::string_view module) {
    if (!isActivity(module)) return view.module == module;
    return view.module == activities && namesKinds(view.criteria) && allowsKind(view.criteria, module);
}

Value criteriaFor(const DataSet& data, const ViewData& view, std::string_view account) {
    auto fill = [&](auto&& self, Value& node) -> void {
        if (node == Value(currentUser)) node = data.userOf(account).id;
        if (auto* list = node.mutableList())
            for (auto& item : *list) self(self, item);
        if (auto* map = node.mutableMap())
            if (const auto* value = map->find("value")) {
                auto filled = *value;
                self(self, filled);
                map->set("value", filled);
            }
    };
    auto criteria = view.criteria;
    fill(fill, criteria);
    return criteria;
}

}  // namespace tarvo::sandbox
