#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfo.h"

namespace tarvo {

/// A layout of a module with its fields in the shape `T`.
template <class T>
struct Layout {
    std::string moduleName;
    std::string layoutID;
    std::string layoutName;
    bool isDefault = false;
    bool isAccessible = false;  ///< whether the user's profile may use the layout
    T metadata;

    Layout(const ModuleLayoutInfo& moduleLayoutInfo, T metadata)
        : moduleName(moduleLayoutInfo.moduleName),
          layoutID(moduleLayoutInfo.layoutID),
          layoutName(moduleLayoutInfo.layoutName),
          isDefault(moduleLayoutInfo.isDefault),
          isAccessible(moduleLayoutInfo.isAccessible),
          metadata(std::move(metadata)) {}
};

/// The layouts of a module. A stored record may have a layout that the user's profile may not use, so that a layout is
/// found by its id in any case; but only those that the profile may use are offered. `L` is a `Layout`.
template <class L>
struct LayoutInfoContract {
    OrderedDictionary<std::string, L> orderedLayouts;  ///< all of them by id, in the order of the store

    /// Returns the first default layout that the profile may use, or null if there is none.
    const L* getDefaultLayout() const {
        for (auto [id, layout] : orderedLayouts)
            if (layout.isDefault && layout.isAccessible) return &layout;
        return nullptr;
    }
    /// Returns the layout with this id, or null.
    const L* getLayout(const std::string& layoutID) const { return orderedLayouts.find(layoutID); }
    /// Returns the layouts that the profile may use, in order.
    std::vector<L> getAllLayouts() const {
        std::vector<L> offered;
        for (auto [id, layout] : orderedLayouts)
            if (layout.isAccessible) offered.push_back(layout);
        return offered;
    }
};

template <class T>
struct LayoutInfo : LayoutInfoContract<Layout<T>> {};

}  // namespace tarvo
