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
    T metadata;

    Layout(const ModuleLayoutInfo& moduleLayoutInfo, T metadata)
        : moduleName(moduleLayoutInfo.moduleName),
          layoutID(moduleLayoutInfo.layoutID),
          layoutName(moduleLayoutInfo.layoutName),
          isDefault(moduleLayoutInfo.isDefault),
          metadata(std::move(metadata)) {}
};

/// The layouts of a module by id, in the order of the store.
template <class T>
struct LayoutInfo {
    OrderedDictionary<std::string, Layout<T>> orderedLayouts;

    /// Returns the first default layout, or null if there is none.
    const Layout<T>* getDefaultLayout() const {
        for (auto [id, layout] : orderedLayouts)
            if (layout.isDefault) return &layout;
        return nullptr;
    }
    const Layout<T>* getLayout(const std::string& layoutID) const { return orderedLayouts.find(layoutID); }
    std::vector<Layout<T>> getAllLayouts() const { return orderedLayouts.values(); }
};

}  // namespace tarvo
