#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

/// Topic of the notices that the custom views of a module changed. On the background queue of the bus.
class CVObserver : public virtual platform::Object {
public:
    virtual void customViewsChanged(const std::string& moduleName) { static_cast<void>(moduleName); }
};

}  // namespace tarvo
