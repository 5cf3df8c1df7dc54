#pragma once

#include <vector>

#include "platform/Object.h"

namespace tarvo {

struct Module;

/// The topic for changes of modules. Callbacks run on the main queue or on the bus's background queue, as each notice
/// says. Every operation is empty unless overridden.
class ModuleChangedObserver : public virtual platform::Object {
public:
    /// Metadata of modules has arrived; the notice does not say of which modules. It comes twice per download: on the
    /// main queue and on the background queue.
    virtual void modulesAdded() {}
    virtual void modulesAdded(const std::vector<Module>& modules) { static_cast<void>(modules); }
    virtual void modulesEdited(const std::vector<Module>& modules) { static_cast<void>(modules); }
    virtual void modulesDeleted(const std::vector<Module>& modules) { static_cast<void>(modules); }
};

}  // namespace tarvo
