#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/value_objects/field/PicklistMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/layout/LayoutFieldLists.h"
#include "tarvobase/value_objects/layout/LayoutMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// The stores from which layouts are read.
struct LayoutStores {
    std::shared_ptr<LayoutMetadataPersistanceDelegate> metadataDAO;
    std::shared_ptr<PicklistMetadataPersistanceDelegate> pickListDAO;
    std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
    std::shared_ptr<GetFieldListDM> metadataPersistance;

    /// Returns stores over the tables of an adapter, which may be null. The memory of the process serves modules first.
    static LayoutStores over(std::shared_ptr<DatabaseAdapter> databaseAdapter);
};

/// Reads the rows of the layouts of modules, before they are shaped. Blocks its caller; may be called from any thread.
/// The number of queries does not depend on the number of modules, layouts or fields.
class LayoutRowsDM : public platform::Object {
public:
    using Rows = std::vector<LayoutMetadata>;
    /// Keyed by layout id.
    using LayoutRows = std::map<std::string, Rows>;
    using LayoutRowsResult = Result<LayoutRows, MetadataError>;

    explicit LayoutRowsDM(LayoutStores stores)
        : metadataDAO(std::move(stores.metadataDAO)),
          pickListDAO(std::move(stores.pickListDAO)),
          modulePersistance(std::move(stores.modulePersistance)),
          metadataPersistance(std::move(stores.metadataPersistance)) {}

    const std::shared_ptr<LayoutMetadataPersistanceDelegate> metadataDAO;
    const std::shared_ptr<PicklistMetadataPersistanceDelegate> pickListDAO;
    const std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
    const std::shared_ptr<GetFieldListDM> metadataPersistance;

    /// Returns one entry per module of the map, `notFound` for a module without rows. The entry holds the rows that are
    /// shown in every requested mode, sorted by the sequence of their sections, their positions and their API names.
    /// Lookups have their modules and fields in `addData`. A layout that loses all its rows is logged and left out.
    std::map<std::string, LayoutRowsResult> getLayoutMetadata(const ModuleFieldsMap& moduleFieldsMap,
                                                              std::optional<DisplayMode> mode) const;

protected:
    using PicklistsByLayout = std::map<std::string, std::vector<PicklistMetadata>>;

    /// Returns the picklists of modules by module name and layout id.
    std::map<std::string, PicklistsByLayout> picklists(const ModuleFieldsMap& moduleFieldsMap) const;
    /// Returns the subform settings in the layouts of all modules, by module name, layout id and identifier.
    using SubformsByLayout = std::map<std::string, LayoutFieldList::SubformInfo>;
    std::map<std::string, SubformsByLayout> subforms(const std::map<std::string, LayoutRowsResult>& layouts,
                                                     const ModuleFieldsMap& moduleFieldsMap) const;

private:
    void fillLookups(std::map<std::string, LayoutRowsResult>& layouts) const;
};

/// Reads the layouts of modules in the shape `T`.
template <class T>
class GetLayoutFieldListDM : public LayoutRowsDM {
public:
    using Layouts = std::map<std::string, T>;
    using LayoutsResult = Result<Layouts, MetadataError>;

    using LayoutRowsDM::LayoutRowsDM;

    /// Returns the layouts by layout id, or `notFound` for a module without rows.
    LayoutsResult getLayoutList(const std::string& moduleName, const FieldList& fieldList,
                                std::optional<DisplayMode> mode) const {
        return std::move(getLayoutList({{moduleName, fieldList}}, mode).at(moduleName));
    }

    /// Returns one entry per module of the map.
    std::map<std::string, LayoutsResult> getLayoutList(const ModuleFieldsMap& moduleFieldsMap,
                                                       std::optional<DisplayMode> mode) const {
        auto rowsByModule = getLayoutMetadata(moduleFieldsMap, mode);
        auto picklistsByModule = picklists(moduleFieldsMap);
        auto subformsByModule = subforms(rowsByModule, moduleFieldsMap);
        std::map<std::string, LayoutsResult> lists;
        for (auto& [moduleName, rows] : rowsByModule) {
            auto& naming = moduleFieldsMap.at(moduleName).naming();
            auto shape = [&, &name = moduleName](LayoutRows&& layouts) {
                Layouts shaped;
                for (auto& [id, fields] : layouts) {
                    auto picklist = picklistsByIdentifier(std::move(picklistsByModule[name][id]), naming);
                    shaped.emplace(id, getLayoutList({name, id, std::move(picklist),
                                                      std::move(subformsByModule[name][id]), naming},
                                                     std::move(fields)));
                }
                return shaped;
            };
            lists.emplace(moduleName, std::move(rows).map(shape));
        }
        return lists;
    }

protected:
    /// The attributes of a layout beside its rows.
    struct Frame {
        std::string moduleName;
        std::string layoutId;
        PicklistsByIdentifier picklist;
        LayoutFieldList::SubformInfo subformMetadata;
        FieldIdentifier naming;
    };
    /// Builds one list from rows in display order.
    virtual T getLayoutList(Frame frame, Rows metadata) const {
        T list(std::move(frame.moduleName), std::move(frame.layoutId), std::move(frame.picklist),
               std::move(frame.subformMetadata), frame.naming);
        walkLayout(std::move(metadata), &LayoutMetadata::sectionName, list);
        return list;
    }
};

using GetLinearLayoutFieldListDM = GetLayoutFieldListDM<LinearLayoutFieldList>;
using GetGroupedLayoutFieldListDM = GetLayoutFieldListDM<GroupedLayoutFieldList>;
using GetOrderedLayoutFieldListDM = GetLayoutFieldListDM<OrderedLayoutFieldList>;

/// These build the data managers over the tables of an adapter.
struct GetLinearLayoutFieldListDMA {
    static std::shared_ptr<GetLinearLayoutFieldListDM> getLinearLayoutFieldListDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter);
};
struct GetGroupedLayoutFieldListDMA {
    static std::shared_ptr<GetGroupedLayoutFieldListDM> getGroupedLayoutFieldListDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter);
};
struct GetOrderedLayoutFieldListDMA {
    static std::shared_ptr<GetOrderedLayoutFieldListDM> getOrderedLayoutFieldListDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter);
};

}  // namespace tarvo
