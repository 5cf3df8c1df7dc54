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

/// Stores what a metadata answer says of a module, and creates the module's record tables. A section that failed is
/// left out, and so is a row that did; the log says how many. Rows take the place of those of the same key, and none is
/// deleted. Blocks until all is stored; from any thread.
class MetadataWriter {
public:
    struct Persistance {
        std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO;
        std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> layoutDAO;
        std::shared_ptr<LayoutMetadataPersistanceDelegate> layoutFieldsDAO;
        std::shared_ptr<PicklistMetadataPersistanceDelegate> picklistDAO;
        std::shared_ptr<SettingsPersistanceDelegate> settingDAO;
        std::shared_ptr<FieldMetadataPersistanceDelegate> fieldsDAO;
        /// Where the record tables are.
        std::shared_ptr<DatabaseAdapter> dbAdapter;
        /// Where the statements are kept: the store that outlives a change of persistence mode, so that the record
        /// tables can be created again elsewhere.
        std::shared_ptr<DatabaseAdapter> secondaryDbAdapter;
    };
    explicit MetadataWriter(Persistance persistance) : persistance_(std::move(persistance)) {}

    void store(const ParsedMetadataDetail& detail) const;

    /// Runs the statements and keeps them with the module, joined by "|". A statement that fails is logged by the
    /// adapter and kept all the same. Without a statement, those that are kept stay.
    void parsedTableCreationCommands(std::vector<std::string> statements, const std::string& module) const;

private:
    Persistance persistance_;
};

}  // namespace tarvo
