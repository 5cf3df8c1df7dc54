#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tarvobase/configuration/Scope.h"

namespace tarvo {

class UserDefaultsProtocol;

/// Keeps the sync in order with records that come from the server outside it, such as a page of a list. An answer that
/// is stored after a round may be older than the round: it undoes what the round has stored, and the server would never
/// be asked for that again. The watermark therefore never lies after the time of such an answer. From any thread.
class AnswersBesideSync {
public:
    /// `userDefaults` are the settings of the scope.
    AnswersBesideSync(Scope scope, std::shared_ptr<UserDefaultsProtocol> userDefaults)
        : scope_(std::move(scope)), userDefaults_(std::move(userDefaults)) {}

    /// Call it once records of a module are stored that the server sent at `responseTime`, in milliseconds since 1970.
    void stored(const std::string& moduleName, std::optional<std::int64_t> responseTime) const;

private:
    Scope scope_;
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
