#include "tarvobase/init_process/parsers/InitBlocks.h"

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/Variant.h"
#include "tarvobase/network_layer/PositionalRow.h"

namespace tarvo {

namespace {

Module moduleOf(PositionalRow& row, bool isModuleIDSupported) {
    Module module;
    module.moduleName = row.text(0);
    module.singularName = row.text(1);
    module.pluralName = row.text(2);
    module.apiName = row.text(3);
    module.position = row.number(4);
    module.type = fromRawText<ModuleType>(row.text(5)).value_or(ModuleType::none);
    module.id = isModuleIDSupported ? row.text(6) : module.moduleName;
    return module;
}

UserDetails userDetailsOf(PositionalRow row) {
    UserDetails details;
    details.BrenUID = row.text(0);
    details.timeZone = row.text(1);
    auto locale = text::split(row.text(3), "|");
    details.country = locale[0];
    if (locale.size() > 1) details.language = locale[1];
    auto list = row.read<ValueList>(8).value_or(ValueList());
    PositionalRow emails(list, PositionalRow::Mode::lenient);
    details.email = emails.text(0);
    // The last entry of the list is never the second address, so the list needs three entries to contain one.
    if (emails.size() >= 3) details.secondEmail = emails.read<std::string>(1);
    return details;
}

User userOf(PositionalRow& row) {
    return {.id = row.text(0),
            .firstName = row.text(1),
            .lastName = row.text(2),
            .name = row.text(3),
            .BrenUID = row.text(4),
            .email = row.text(5),
            .status = row.text(6),
            .role = row.text(7),
            .confirm = row.flag(8),
            .profile = row.text(9),
            .profileID = row.text(10),
            .isLoggedInUser = row.read<bool>(11),
            .dateFormat = row.read<std::string>(12),
            .timeFormat = row.read<std::string>(13),
            .timeZone = row.read<std::string>(14),
            .nameFormat = row.read<std::string>(15)};
}

CompanyInfo companyInfoOf(PositionalRow& row) { return {row.text(0), row.text(1)}; }

std::optional<Organisation> organisationOf(const Value& entry) {
    auto row = PositionalRow::open(entry, 3, PositionalRow::Mode::lenient);
    if (!row) return std::nullopt;
    auto id = row->read<std::string>(0);
    auto name = row->read<std::string>(1);
    auto isDefault = row->read<bool>(2);
    if (!id || !name || !isDefault) return std::nullopt;
    return Organisation{*id, *name, *isDefault, *isDefault};
}

/// Reads each row of a block with `read` and leaves out the rows whose member `name` is empty.
template <class T, class Read>
std::optional<std::vector<T>> rowsOf(std::string_view block, const ValueList& data, std::string T::*name, Read&& read) {
    auto values = readUsableRows(data, [&](PositionalRow& row) {
        T value = read(row);
        return (value.*name).empty() ? std::nullopt : std::optional(std::move(value));
    });
    if (values.empty() && !data.empty()) return std::nullopt;
    if (auto leftOut = data.size() - values.size(); leftOut > 0)
        platform::log(
            platform::LogLevel::warning, "init answer",
            std::to_string(leftOut) + " rows of block " + std::string(block) + " are left out: they have no name");
    return values;
}

}  // namespace

std::optional<std::vector<std::string>> InitTablesParser::parse(const ValueList& data) { return allTexts(data); }

std::optional<ParsedInitData::DateTimeFormat> InitDateTimeFormatParser::parse(const ValueList& data) {
    auto texts = allTexts(data);
    if (!texts || texts->size() < 2) return std::nullopt;
    return ParsedInitData::DateTimeFormat{texts->at(0), texts->at(1)};
}

std::optional<std::vector<Module>> InitModulesParser::parse(const ValueList& data) {
    bool isModuleIDSupported = variant::hasModuleIDs();
    return rowsOf("activeModules", data, &Module::moduleName,
                  [&](PositionalRow& row) { return moduleOf(row, isModuleIDSupported); });
}

std::optional<UserDetails> InitUserDetailsParser::parse(const ValueList& data) {
    auto& row = singleRow(data);
    return row.size() < 9 ? std::nullopt : std::optional(userDetailsOf({row, PositionalRow::Mode::lenient}));
}

std::optional<std::vector<User>> InitUsersParser::parse(const ValueList& data) {
    return rowsOf("activeUsers", data, &User::id, userOf);
}

std::optional<std::vector<CompanyInfo>> InitCompanyInfoParser::parse(const ValueList& data) {
    return rowsOf("companyInfo", data, &CompanyInfo::key, companyInfoOf);
}

std::optional<std::vector<Organisation>> InitOrganisationParser::parse(const ValueList& data) {
    std::vector<Organisation> organisations;
    for (auto& entry : data) {
        auto organisation = organisationOf(entry);
        if (!organisation) return std::nullopt;
        organisations.push_back(*std::move(organisation));
    }
    return organisations;
}

const ValueList& singleRow(const ValueList& data) {
    return data.size() == 1 && data[0].asList() ? *data[0].asList() : data;
}

}  // namespace tarvo
