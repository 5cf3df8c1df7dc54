#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

/// Topic of the notice that the first download of an account is complete. On the main queue.
class InitialProcessComplete : public virtual platform::Object {
public:
    virtual void initialProcessComplete(const std::string& userId) { static_cast<void>(userId); }
};

}  // namespace tarvo
