#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"

namespace tarvo {

/// The server's id of a record that was added here under a temporary id.
struct RecordIdAlias {
    std::string temporaryId;
    std::string moduleName;
    std::string realId;

    friend bool operator==(const RecordIdAlias&, const RecordIdAlias&) = default;
};

/// The real ids of records that had a temporary one, in the order in which the server accepted them. A screen, a file
/// or a queued change may name the temporary id for days, so an entry stays; lists show the accepted records until the
/// server has had the chance to. It is a table of the library's own, written in the
/// same commits as the answers that bring the ids. Writes return whether they were stored, and join the transaction of
/// the database around them. Any thread may use it; each call blocks its caller.
class RecordIdAliases : public virtual platform::Object {
public:
    /// Fails with `noData` if the table cannot be read.
    using Found = Result<std::optional<std::string>, ParserError>;

    /// Stores an alias under the next number, in place of the one of the same module and temporary id.
    virtual bool store(const RecordIdAlias& alias) = 0;
    /// Returns the real id, or nullopt if the id has none.
    virtual Found realId(const std::string& moduleName, const std::string& temporaryId) = 0;
    /// Returns the aliases that these ids have in any module, for texts that do not say in which. Returns nullopt if
    /// the table cannot be read.
    virtual std::optional<std::vector<RecordIdAlias>> aliasesOf(const std::vector<std::string>& temporaryIds) = 0;
    /// Takes the temporary id off an alias; the real id stays as that of an accepted record. A new record calls it with
    /// its id: generated ids have nine digits, so that an id can come again after years, and its edits must not reach
    /// the former record.
    virtual bool forget(const std::string& moduleName, const std::string& temporaryId) = 0;
    /// Returns the number of the record that was accepted last, and 0 if there is none or the table cannot be read.
    virtual std::int64_t lastNumber() = 0;

    /// Returns the id by which a record is known now: the real one of a temporary id that has one, and any other id as
    /// it is. A temporary id also stays as it is if the table cannot be read.
    std::string currentId(const std::string& moduleName, const std::string& recordId);
};

}  // namespace tarvo
