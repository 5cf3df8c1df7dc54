#pragma once

#include <string>

#include "tarvobase/value_objects/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// One fact of the company, as a key and a text.
struct CompanyInfo {
    std::string key;
    std::string value;

    static constexpr auto fields() {
        return describe(field("key", &CompanyInfo::key), field("value", &CompanyInfo::value));
    }
    friend bool operator==(const CompanyInfo&, const CompanyInfo&) = default;
};

struct CompanyInfoConstants {
    std::string_view TableName = "CompanyInfo";
    std::string_view Key = "key";
    std::string_view Value = "value";

    ValueMap getDictionary(const CompanyInfo& info) const;
    CompanyInfo getCompanyInfo(const ValueMap& map) const;
};

struct CompanyInfoDatabaseConstants : CompanyInfoConstants {
    constexpr CompanyInfoDatabaseConstants() { TableName = "COMPANY_DETAILS"; }
    ValueMap getDictionary(const CompanyInfo& info) const;
    CompanyInfo getCompanyInfo(const Row& row) const;
};

/// A member by its plain key, for filters in memory.
InMemoryPropertyValue propertyForKey(const CompanyInfo& info, std::string_view key);

}  // namespace tarvo
