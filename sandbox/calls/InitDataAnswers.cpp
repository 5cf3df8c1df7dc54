#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/ModuleSettings.h"
#include "sandbox/data/StaticTables.h"

namespace tarvo::sandbox::calls {
namespace {

constexpr std::string_view dateFormat = "dd/MM/yyyy";
constexpr std::string_view timeFormat = "HH:mm";

ValueList tableStatements(const Call& call) {
    auto statements = staticTables(call.naming, call.request.organisation);
    return ValueList(statements.begin(), statements.end());
}

// Makes rows of text: name, labels, API name, place, kind, and the id for clients that go by ids.
ValueList moduleRows(const DataSet& data) {
    ValueList rows;
    for (const auto& module : data.modules)
        rows.push_back(ValueList{module.name, module.singular, module.plural, module.apiName,
                                 std::to_string(module.position), module.type, module.id});
    return rows;
}

// Positions 2 and 4 to 7 belong to older clients.
ValueList userDetails(const UserData& user) {
    return {user.account,
            user.timeZone,
            "",
            "US|en",
            "",
            "",
            "",
            "",
            ValueList{user.email, "private." + user.email, "old." + user.email}};
}

ValueList userRows(const DataSet& data, std::string_view account) {
    ValueList rows;
    for (const auto& user : data.users)
        rows.push_back(ValueList{user.id, user.firstName, user.lastName, user.name(), user.account, user.email,
                                 user.status, user.role, user.confirmed ? "true" : "false", user.profile,
                                 user.profileId, user.account == account, dateFormat, timeFormat, user.timeZone,
                                 "First Name,Last Name"});
    return rows;
}

ValueList companyRows(const DataSet& data) {
    ValueList rows;
    for (const auto& [key, value] : data.companyInfo) rows.push_back(ValueList{key, value});
    return rows;
}

ValueList organisationRows(const DataSet& data) {
    ValueList rows;
    for (const auto& organisation : data.organisations)
        rows.push_back(ValueList{organisation.id, organisation.name, organisation.isDefault});
    return rows;
}

}  // namespace

Reply initData(const Call& call) {
    const auto& data = call.data;
    auto block = [&](std::string_view name, ValueList rows) {
        return envelope::entry(name, std::move(rows), call.now);
    };
    ValueList blocks;
    blocks.push_back(block("tables", tableStatements(call)));
    blocks.push_back(block("dateTimeFormat", {dateFormat, timeFormat}));
    blocks.push_back(block("activeModules", moduleRows(data)));
    blocks.push_back(block("userDetails", userDetails(data.userOf(call.account))));
    blocks.push_back(block("activeUsers", userRows(data, call.account)));
    blocks.push_back(block("settings", makeSettings(data, call.naming)));
    blocks.push_back(block("companyInfo", companyRows(data)));
    blocks.push_back(block("VestraOrgs", organisationRows(data)));
    return Reply::of(envelope::answer(std::move(blocks), call.now));
}

}  // namespace tarvo::sandbox::calls
