#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/Result.h"
#include "tarvobase/network_layer/NetworkAnswer.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"

namespace tarvo {

/// What came of each record of an import, in their order, or of the import as a whole if it has no entry per record.
using ImportAnswer = Result<std::vector<ChangeAnswer>, ChangeAnswer>;

/// Reads answers to changes. It has no state and may be used from any thread.
///
/// A transport that failed, no token, and the statuses 401, 429 and 503 are no answer. A file that cannot be read is a
/// refusal. A refusal of the server is an error list of an entry or of the whole answer: a code and a message as two
/// texts, or objects that have both. An error list of another form is unreadable; an empty one has no meaning.
struct ChangeAnswerParser {
    /// Reads the answer to an add. The id is that of the full record, an entry of the id, `info.recordId`, or the first
    /// of three texts (id, time of creation, time of change). Without a server's id, or with two of them, the answer is
    /// unreadable.
    static ChangeAnswer ofAdd(const NetworkAnswer& answer);
    /// Does the same for an edit, whose answer must have the id of the edited record.
    static ChangeAnswer ofEdit(const NetworkAnswer& answer, const std::string& recordId);
    /// Reads the answer to an add of several records. An entry is accepted with the first text of its list "record", or
    /// in the way of `ofAdd`.
    static ImportAnswer ofImport(const NetworkAnswer& answer, std::size_t count);
    /// Reads the answers to notes, which are three texts: id, time of creation, time of change. The record of the
    /// outcome has the times alone, by the API names of their fields. Fewer texts, or texts that are not times, are
    /// unreadable. An answer in the form of `ofAdd` and `ofEdit` is read as well, and need not have the times.
    static ChangeAnswer ofAddedNote(const NetworkAnswer& answer);
    static ChangeAnswer ofEditedNote(const NetworkAnswer& answer, const std::string& recordId);
    /// Reads the answer to a delete. Every entry without an error is a success, unless it has another record's id.
    static ChangeAnswer ofDelete(const NetworkAnswer& answer, const std::string& recordId);
    /// Reads the answer to an upload. The id of the attachment is in the data of the first entry, else in the list
    /// "data" of the answer itself.
    static ChangeAnswer ofUpload(const NetworkAnswer& answer);
};

}  // namespace tarvo
