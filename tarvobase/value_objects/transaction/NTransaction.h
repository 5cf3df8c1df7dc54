#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/storage/Mapper.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"
#include "tarvobase/value_objects/transaction/RecordDependency.h"

namespace tarvo {

struct NTransaction;
struct TransactionModuleCodec;
struct TransactionPayloadCodec;
struct TransactionErrorCodec;
struct TransactionStatusCodec;

struct TransactionMapper : StoredMapper<TransactionMapper, NTransaction> {
    std::string_view tableName = of("Transaction", "TRANSACTIONS_NEW");
    std::string_view id = of("id", "txn_id");
    std::string_view recordId = of("recordId", "record_id");
    std::string_view module = of("module", "module_name");
    std::string_view type = of("type", "txn_type");
    std::string_view payload = of("payload");
    std::string_view errorResponse = of("errorResponse", "error_response");
    std::string_view status = of("status");
    std::string_view mergeCount = of("mergecount", "merge_count");
    std::string_view syncAttempt = of("syncAttempt", "sync_attempt");
};
struct TransactionDBMapper : TableTwin<TransactionMapper> {};

/// A change that waits in the current queue, or is on its way to the server. One that the server has accepted is
/// deleted.
struct NTransaction {
    /// What is to be done. The raw values are stored. The functions below this struct say what each kind is.
    enum class Kind {
        addRecord = 0,
        editRecord,
        deleteRecord,
        uploadPhoto,
        deletePhoto,
        link,
        delink,
        addAttachment,
        deleteAttachment,
        addTextNote,
        addVoiceNote,
        deleteVoiceNote,
        editNote,
        addNoteAttachment,
        addCheckIn,
        deleteCheckIn,
        import,
        convertLead,
        addComment,
        markasread
    };

    /// Where a transaction is on its way. One with an error is `active`, and stays where it is until the error goes.
    struct Status {
        /// The raw values are stored.
        enum class Case {
            inactive = 0,  ///< held back
            active = 1,    ///< ready to be sent, or back from a failed send
            proxy = 2,     ///< never set by the library
            syncing = 3,   ///< a scheduler has started it
            completed = 4  ///< never set by the library
        };

        Case which = Case::active;
        double delay = 0;  ///< seconds for which an `inactive` one is held back; not stored, 0 when read back

        static constexpr Status inactive(double delay) { return {Case::inactive, delay}; }
        static constexpr Status active() { return {Case::active, 0}; }
        static constexpr Status syncing() { return {Case::syncing, 0}; }
        friend bool operator==(const Status&, const Status&) = default;
    };

    std::int64_t id = 0;   ///< strictly rising, and so the order of the queue
    std::string recordId;  ///< temporary until the server has given a real one
    ModuleIdentifier module = ModuleIdentifier::Case::leads;
    Kind kind = Kind::addRecord;
    /// What the server receives, keyed by the API names of fields in either naming. A table keeps it as JSON text.
    ValueMap payload;
    std::optional<ErrorResponse> errorResponse;  ///< why the last attempt failed
    Status status;
    std::int64_t mergeCount = 0;   ///< transactions that were merged into this one
    std::int64_t syncAttempt = 0;  ///< times that a scheduler has started it

    static constexpr auto fields() {
        using V = NTransaction;
        using Names = TransactionMapper;
        using Integer = IntegerCodec<std::int64_t>;
        return describe(fieldBy<Integer>("id", &V::id, &Names::id), field("recordId", &V::recordId, &Names::recordId),
                        fieldBy<TransactionModuleCodec>("module", &V::module, &Names::module),
                        fieldBy<IntegerCodec<Kind>>("kind", &V::kind, &Names::type),
                        fieldBy<TransactionPayloadCodec>("payload", &V::payload, &Names::payload),
                        fieldBy<TransactionErrorCodec>("errorResponse", &V::errorResponse, &Names::errorResponse),
                        fieldBy<TransactionStatusCodec>("status", &V::status, &Names::status),
                        fieldBy<Integer>("mergeCount", &V::mergeCount, &Names::mergeCount),
                        fieldBy<Integer>("syncAttempt", &V::syncAttempt, &Names::syncAttempt));
    }
    friend bool operator==(const NTransaction&, const NTransaction&) = default;
};

/// What is so of a kind of transaction.
struct TransactionKindCase : EnumCase<NTransaction::Kind> {
    bool isFileUpload, isCreateState;
    std::optional<RecordDependency::Kind> depndencyType;
};

/// All kinds in the order of their raw values.
template <>
struct EnumCases<NTransaction::Kind> {
    using K = NTransaction::Kind;
    using D = RecordDependency::Kind;
    static constexpr bool yes = true, no = false;
    static constexpr auto none = std::nullopt;
    // Kind, name, whether it uploads a file, whether it creates its record, how it depends on its record.
    static constexpr TransactionKindCase cases[] = {
        {{K::addRecord, "addRecord"}, no, yes, D::add},
        {{K::editRecord, "editRecord"}, no, no, D::edit},
        {{K::deleteRecord, "deleteRecord"}, no, no, D::delete_},
        {{K::uploadPhoto, "uploadPhoto"}, yes, no, none},
        {{K::deletePhoto, "deletePhoto"}, no, no, none},
        {{K::link, "link"}, no, no, D::read},
        {{K::delink, "delink"}, no, no, D::read},
        {{K::addAttachment, "addAttachment"}, yes, yes, D::add},
        {{K::deleteAttachment, "deleteAttachment"}, no, no, D::delete_},
        {{K::addTextNote, "addTextNote"}, no, no, none},
        {{K::addVoiceNote, "addVoiceNote"}, yes, yes, D::add},
        {{K::deleteVoiceNote, "deleteVoiceNote"}, no, no, D::delete_},
        {{K::editNote, "editNote"}, no, no, D::edit},
        {{K::addNoteAttachment, "addNoteAttachment"}, yes, yes, D::add},
        {{K::addCheckIn, "addCheckIn"}, no, yes, D::add},
        {{K::deleteCheckIn, "deleteCheckIn"}, no, no, D::delete_},
        {{K::import, "import"}, no, yes, none},
        {{K::convertLead, "convertLead"}, no, no, none},
        {{K::addComment, "addComment"}, no, no, none},
        {{K::markasread, "markasread"}, no, no, none},
    };
};

template <>
struct EnumCases<NTransaction::Status::Case> {
    using C = NTransaction::Status::Case;
    static constexpr EnumCase<C> cases[] = {{C::inactive, "inactive"},
                                            {C::active, "active"},
                                            {C::proxy, "proxy"},
                                            {C::syncing, "syncing"},
                                            {C::completed, "completed"}};
};

/// Returns whether the kind uploads a file, which the scheduler of attachments sends.
bool isFileUpload(NTransaction::Kind kind);
/// Returns whether the kind creates the record that its `recordId` names, so that others can depend on it.
bool isCreateState(NTransaction::Kind kind);
/// Returns whether others can name the record that the kind creates. Text notes count as well, although their kind is
/// not a create state: an edit must not leave before them.
bool createsRecord(NTransaction::Kind kind);
std::optional<RecordDependency::Kind> depndencyType(NTransaction::Kind kind);
/// Returns the kinds of which `has` is true, in the order of their raw values.
std::vector<NTransaction::Kind> kindsWhere(bool (*has)(NTransaction::Kind));

}  // namespace tarvo
