#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/GetLayoutFieldListDM.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

/// Reads the layouts of one module for a screen that edits. Owner and user fields have the users to choose from. Every
/// read returns nullopt for a module without layouts, or without a database. Blocks its caller; may be called from any
/// thread.
class GetLayoutMetadataDataManager final : public platform::Object {
public:
    using LayoutRows = LayoutRowsDM::LayoutRows;
    /// Keyed by layout id. A list holds the headers and fields of the sections in their sequence.
    using LinearLayouts = std::map<std::string, std::vector<LinearLayoutMetadataItemType>>;
    /// Keyed by layout id and section sequence.
    using SectionedLayouts = std::map<std::string, std::map<int, std::vector<LayoutMetadata>>>;

    GetLayoutMetadataDataManager(std::shared_ptr<GetOrderedLayoutFieldListDM> getLayoutFieldListDM,
                                 std::shared_ptr<UserPersistanceDelegate> usersPersistance)
        : getLayoutFieldListDM(std::move(getLayoutFieldListDM)), usersPersistance(std::move(usersPersistance)) {}
    /// Uses the database that is open at this moment.
    static std::shared_ptr<GetLayoutMetadataDataManager> make();

    const std::shared_ptr<GetOrderedLayoutFieldListDM> getLayoutFieldListDM;
    const std::shared_ptr<UserPersistanceDelegate> usersPersistance;

    /// Returns the rows by layout id, in display order.
    std::optional<LayoutRows> getLayoutMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                std::optional<DisplayMode> mode) const;
    std::optional<LinearLayouts> getLinearMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                   std::optional<DisplayMode> mode) const;
    std::optional<SectionedLayouts> getSectionedMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                         std::optional<DisplayMode> mode) const;

private:
    void fillUsers(LayoutRows& layouts) const;
};

}  // namespace tarvo
