#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/field/PicklistMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/layout/LayoutMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

/// Stores a metadata answer about a module, and creates the module's record tables. Sections and rows that failed are
/// left out, and the log says how many. A row replaces the row of the same key, and no row is deleted. Blocks until all
/// is stored; may be called from any thread.
class MetadataWriter {
public:
    struct Persistance {
        std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO;
        std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> layoutDAO;
        std::shared_ptr<LayoutMetadataPersistanceDelegate> layoutFieldsDAO;
        std::shared_ptr<PicklistMetadataPersistanceDelegate> picklistDAO;
        std::shared_ptr<SettingsPersistanceDelegate> settingDAO;
        std::shared_ptr<FieldMetadataPersistanceDelegate> fieldsDAO;
        /// The database with the record tables.
        std::shared_ptr<DatabaseAdapter> dbAdapter;
        /// The database that keeps the statements. It outlives a change of persistence mode, so that the record tables
        /// can be created again elsewhere.
        std::shared_ptr<DatabaseAdapter> secondaryDbAdapter;
    };
    explicit MetadataWriter(Persistance persistance) : persistance_(std::move(persistance)) {}

    /// Stores the sections in one commit, after the record tables. Returns false if the database did not store all of
    /// it.
    bool store(const ParsedMetadataDetail& detail) const;

    /// Runs the statements and stores them with the module, joined by "|". A statement that SQLite rejects is logged by
    /// the adapter and stored nevertheless. An empty list leaves the stored statements as they are. Returns false if
    /// the database could not store a table or the statements.
    bool parsedTableCreationCommands(std::vector<std::string> statements, const std::string& module) const;

private:
    void storeSections(const ParsedMetadata& metadata, const std::string& module) const;

    Persistance persistance_;
};

}  // namespace tarvo
