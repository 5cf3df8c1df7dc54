#pragma once

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

/// The database files below the host's folder, one per account. Naming one before `localDirectoryLocation` is set is a
/// programming error; the name is then empty, and a database of that name does not open.
class DatabaseConstants final : public BrenDatabaseConstants {
public:
    /// Returns "/Databases" below `CommonConfigration.localDirectoryLocation`. Creates the folder if it is missing; if
    /// that fails, opening the database fails.
    std::string databaseLocation() const;
    std::string databaseName() const override;
    std::string databaseName(const std::string& accountId) const override;
    std::string databaseFolder() const override { return databaseLocation(); }
};

}  // namespace tarvo
