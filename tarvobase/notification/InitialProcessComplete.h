#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

/// The topic for the completion of an account's first download. Callbacks run on the main queue.
class InitialProcessComplete : public virtual platform::Object {
public:
    virtual void initialProcessComplete(const std::string& userId) { static_cast<void>(userId); }
};

}  // namespace tarvo
