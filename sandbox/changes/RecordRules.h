#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "sandbox/changes/Refusal.h"
#include "sandbox/data/RecordStore.h"

namespace tarvo::sandbox {

enum class ChangeKind { add, edit, remove, upload };

/// Returns "add", "edit", "delete" or "upload".
std::string_view changeKindName(ChangeKind kind);

/// Says in which form an accepted change is answered.
enum class AnswerForm {
    /// The whole record, and its id as "recordId" of the "info".
    record,
    /// A record that holds its id alone.
    id,
    /// "recordId" in the "info", without data.
    recordId,
    /// Three texts: id, time of creation, time of change.
    texts,
    /// A list "data" at the top of the answer, with the id in its first map.
    topLevel,
};

/// Says what the server refuses in the changes of one module, and how it answers them. Without rules everything that
/// can be stored is accepted.
struct RecordRules {
    /// API names of fields that must not be empty.
    std::vector<std::string> mandatory;
    /// API names of fields of which no two records have the same value. Empty values count for nothing, and the case of
    /// ASCII letters does not matter.
    std::vector<std::string> unique;
    /// The kinds of changes that nobody may make.
    std::vector<ChangeKind> refuse;
    /// Whether the key of a refused change is kept too, so that it is refused again without another look.
    bool keepKeys = false;
    /// Nullopt leaves the form to the module: three texts for notes, the whole record for all others.
    std::optional<AnswerForm> answer;
    /// Whether the errors of an entry are objects with code and message, not two texts.
    bool hasErrorObjects = false;
};

/// Reads rules from the JSON of a control call. A failure says what is wrong with them.
Result<RecordRules, std::string> parseRules(const ValueMap& json, const RecordShape& shape);

/// Returns why the rules refuse a change of this kind whatever it holds; nullopt when they do not.
std::optional<Refusal> refusalOfKind(const RecordRules& rules, ChangeKind kind);
/// Returns why the rules refuse a record, which need not be in the view yet; nullopt when they do not.
std::optional<Refusal> refusalOfRecord(const RecordRules& rules, const RecordView& view, const RecordData& record);

}  // namespace tarvo::sandbox
