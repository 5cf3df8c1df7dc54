#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

/// Topic of the notices that the results of a search in a module may have changed. On the main queue.
class SearchTokenChangedObserver : public virtual platform::Object {
public:
    virtual void searchTokenChanged(const std::string& moduleName) { static_cast<void>(moduleName); }
};

}  // namespace tarvo
