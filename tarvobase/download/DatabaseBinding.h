#pragma once

#include <memory>

namespace tarvo {

struct Scope;
class UserDefaultsProtocol;

/// Ties the settings of an account to its database file. Settings say which steps and modules are done, where the lists
/// stand, how far the records are in step, and that the first download is complete. They outlive a database that is
/// removed or replaced, and beside another file they would hide that its content is missing.
struct DatabaseBinding {
    /// Forgets these settings if they were written beside another file. Called after each opening of a database, before
    /// anything reads them; blocks its caller. Settings of a version without this tie stay if the file has content.
    /// Does nothing if the database cannot be asked.
    static void bind(const Scope& scope, const std::shared_ptr<UserDefaultsProtocol>& userDefaults);
};

}  // namespace tarvo
