#pragma once

#include <string>

#include "platform/Object.h"

namespace tarvo {

enum class ModuleType;

/// The topic for modules whose records are being brought up to date. Callbacks run on the background queue of the bus.
class SyncObserver : public virtual platform::Object {
public:
    /// A round of the module has begun.
    virtual void syncStarted(const std::string& moduleName) { static_cast<void>(moduleName); }
    /// A round has finished: its rows and its watermark are stored. A round that breaks off ends without this callback.
    virtual void syncFinished(const std::string& moduleName, ModuleType moduleType) {
        static_cast<void>(moduleName), static_cast<void>(moduleType);
    }
};

}  // namespace tarvo
