#include "tarvobase/init_process/InitBlocks.h"

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

namespace {

std::string textAt(const ValueList& row, std::size_t index) { return readIndex<std::string>(row, index).value_or(""); }

Module moduleOf(const ValueList& row, bool isModuleIDSupported) {
    Module module;
    module.moduleName = textAt(row, 0);
    module.singularName = textAt(row, 1);
    module.pluralName = textAt(row, 2);
    module.apiName = textAt(row, 3);
    if (auto position = text::toInteger(textAt(row, 4)); position && std::in_range<int>(*position))
        module.position = static_cast<int>(*position);
    module.type = fromRawText<ModuleType>(textAt(row, 5)).value_or(ModuleType::none);
    module.id = isModuleIDSupported ? textAt(row, 6) : module.moduleName;
    return module;
}

UserDetails userDetailsOf(const ValueList& row) {
    UserDetails details;
    details.BrenUID = textAt(row, 0);
    details.timeZone = textAt(row, 1);
    auto locale = text::split(textAt(row, 3), "|");
    details.country = locale[0];
    if (locale.size() > 1) details.language = locale[1];
    auto emails = readIndex<ValueList>(row, 8).value_or(ValueList());
    details.email = textAt(emails, 0);
    // The last entry of a list of several is no second address: it takes three to have one.
    if (emails.size() >= 3) details.secondEmail = readIndex<std::string>(emails, 1);
    return details;
}

User userOf(const ValueList& row) {
    auto optionalText = [&](std::size_t index) { return readIndex<std::string>(row, index); };
    return {.id = textAt(row, 0),
            .firstName = textAt(row, 1),
            .lastName = textAt(row, 2),
            .name = textAt(row, 3),
            .BrenUID = textAt(row, 4),
            .email = textAt(row, 5),
            .status = textAt(row, 6),
            .role = textAt(row, 7),
            .confirm = textAt(row, 8) == "true",
            .profile = textAt(row, 9),
            .profileID = textAt(row, 10),
            .isLoggedInUser = readIndex<bool>(row, 11),
            .dateFormat = optionalText(12),
            .timeFormat = optionalText(13),
            .timeZone = optionalText(14),
            .nameFormat = optionalText(15)};
}

CompanyInfo companyInfoOf(const ValueList& row) { return {textAt(row, 0), textAt(row, 1)}; }

std::optional<Organisation> organisationOf(const Value& entry) {
    auto row = entry.asList();
    auto id = row ? readIndex<std::string>(*row, 0) : std::nullopt;
    auto name = row ? readIndex<std::string>(*row, 1) : std::nullopt;
    auto isDefault = row ? readIndex<bool>(*row, 2) : std::nullopt;
    if (!id || !name || !isDefault) return std::nullopt;
    return Organisation{*id, *name, *isDefault, *isDefault};
}

/// The rows of a block, each through `read`; those without the text `name` are left out.
template <class T, class Read>
std::optional<std::vector<T>> rowsOf(const ValueList& data, std::string T::*name, Read&& read) {
    std::vector<T> values;
    for (auto& entry : data) {
        auto row = entry.asList();
        if (!row) continue;
        T value = read(*row);
        if (!(value.*name).empty()) values.push_back(std::move(value));
    }
    if (values.empty() && !data.empty()) return std::nullopt;
    return values;
}

}  // namespace

std::optional<std::vector<std::string>> InitTablesParser::parse(const ValueList& data) {
    std::vector<std::string> queries;
    for (auto& entry : data) {
        if (!entry.asText()) return std::nullopt;
        queries.push_back(*entry.asText());
    }
    return queries;
}

std::optional<ParsedInitData::DateTimeFormat> InitDateTimeFormatParser::parse(const ValueList& data) {
    for (auto& entry : data)
        if (!entry.asText()) return std::nullopt;
    if (data.size() < 2) return std::nullopt;
    return ParsedInitData::DateTimeFormat{*data[0].asText(), *data[1].asText()};
}

std::optional<std::vector<Module>> InitModulesParser::parse(const ValueList& data) {
    bool isModuleIDSupported = CommonConfigration::sharedInstance().isModuleIDSupported.get();
    return rowsOf(data, &Module::moduleName, [&](const ValueList& row) { return moduleOf(row, isModuleIDSupported); });
}

std::optional<UserDetails> InitUserDetailsParser::parse(const ValueList& data) {
    auto& row = singleRow(data);
    return row.size() < 9 ? std::nullopt : std::optional(userDetailsOf(row));
}

std::optional<std::vector<User>> InitUsersParser::parse(const ValueList& data) {
    return rowsOf(data, &User::id, userOf);
}

std::optional<std::vector<CompanyInfo>> InitCompanyInfoParser::parse(const ValueList& data) {
    return rowsOf(data, &CompanyInfo::key, companyInfoOf);
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
