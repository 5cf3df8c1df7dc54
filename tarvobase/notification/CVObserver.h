#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

/// The topic for changes of the custom views of a module. Callbacks run on the background queue of the bus after a
/// change of the user, and on the main queue after a sync.
class CVObserver : public virtual platform::Object {
public:
    virtual void customViewsChanged(const std::string& moduleName) { static_cast<void>(moduleName); }
};

}  // namespace tarvo
