#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

/// The topic for searches in a module whose results may have changed. Callbacks run on the main queue.
class SearchTokenChangedObserver : public virtual platform::Object {
public:
    virtual void searchTokenChanged(const std::string& moduleName) { static_cast<void>(moduleName); }
};

}  // namespace tarvo
