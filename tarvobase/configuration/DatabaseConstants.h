#pragma once

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

/// The database files below the host's folder, one an account.
class DatabaseConstants final : public BrenDatabaseConstants {
public:
    /// "/Databases" below `CommonConfigration.localDirectoryLocation`. Creates the folder when it is missing; a failure
    /// to do so shows when the database is opened.
    std::string databaseLocation() const;
    std::string databaseName() const override;
    std::string databaseName(const std::string& accountId) const override;
    std::string databaseFolder() const override { return databaseLocation(); }
};

}  // namespace tarvo
