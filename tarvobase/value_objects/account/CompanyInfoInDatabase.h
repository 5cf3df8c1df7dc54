#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/account/CompanyInfo.h"

namespace tarvo {

/// The store of the company's facts. Writes return whether they were stored. Any thread may use it.
class CompanyInfoPersistanceDelegate : public virtual platform::Object {
public:
    virtual bool storeCompanyInfo(const std::vector<CompanyInfo>& infos) = 0;
    /// Fails with `noData` when the table cannot be read. The list may be empty.
    virtual Result<std::vector<CompanyInfo>, ParserError> getCompanyInfo() = 0;
    virtual Result<CompanyInfo, ParserError> getCompanyInfo(const std::string& key) = 0;
};

/// The table of the company's facts.
class CompanyInfoInDatabase final : public DatabasePersistanceClass, public CompanyInfoPersistanceDelegate {
public:
    CompanyInfoInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                          CompanyInfoDatabaseConstants databaseConstants = {});

    bool storeCompanyInfo(const std::vector<CompanyInfo>& infos) override;
    Result<std::vector<CompanyInfo>, ParserError> getCompanyInfo() override;
    Result<CompanyInfo, ParserError> getCompanyInfo(const std::string& key) override;

private:
    std::optional<std::vector<CompanyInfo>> infosOf(const std::optional<Rows>& rows) const;

    CompanyInfoDatabaseConstants databaseConstants_;
};

}  // namespace tarvo
