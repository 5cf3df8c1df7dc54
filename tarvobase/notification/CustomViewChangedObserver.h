#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"

namespace tarvo {

/// The topic for views of a module that were stored. Callbacks run on the background queue of the bus.
class CustomViewChangedObserver : public virtual platform::Object {
public:
    virtual void customViewChanged(const std::vector<std::string>& viewIDs, const std::string& moduleName) {
        static_cast<void>(viewIDs), static_cast<void>(moduleName);
    }
};

}  // namespace tarvo
