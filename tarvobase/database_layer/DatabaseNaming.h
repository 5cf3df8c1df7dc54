#pragma once

#include "tarvobase/configuration/FieldIdentifier.h"

namespace tarvo {

class DatabaseAdapter;

/// The naming that a database is filled in, which decides the columns of its record tables. It is stored in the
/// database with the server's tables, so that a program with the other naming is refused instead of reading names as
/// absent. Blocks for the database; may be called from any thread.
struct DatabaseNaming {
    /// Stores the naming of a database that has none yet. Returns false if the database does not take it.
    static bool store(DatabaseAdapter& database, const FieldIdentifier& naming);
    /// Returns whether the database is filled in the other naming. False for a database that is not filled.
    static bool isOther(DatabaseAdapter& database, const FieldIdentifier& naming);
};

}  // namespace tarvo
