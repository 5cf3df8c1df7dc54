#pragma once

#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct CompanyInfo;

struct CompanyInfoConstants : StoredNames<CompanyInfoConstants, CompanyInfo> {
    std::string_view TableName = of("CompanyInfo", "COMPANY_DETAILS");
    std::string_view Key = of("key");
    std::string_view Value = of("value");
};
struct CompanyInfoDatabaseConstants : TableTwin<CompanyInfoConstants> {};

/// One fact about the company: a key and a text.
struct CompanyInfo {
    std::string key;
    std::string value;

    using InMemoryKeys = CompanyInfoConstants;
    static constexpr auto fields() {
        using V = CompanyInfo;
        using Names = CompanyInfoConstants;
        return describe(field("key", &V::key, &Names::Key), field("value", &V::value, &Names::Value));
    }
    friend bool operator==(const CompanyInfo&, const CompanyInfo&) = default;
};

}  // namespace tarvo
