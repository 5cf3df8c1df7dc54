#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Data.h"
#include "platform/Result.h"
#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct Transaction;
struct TransactionDataCodec;
struct OptionalTransactionDataCodec;

/// What a change of the older queue does. The raw values are stored.
enum class TransactionType {
    addRecord = 0,
    editRecord = 1,
    deleteRecord = 2,
    addVoiceNote = 3,
    addCheckIn = 4,
    deleteCheckIn = 5,
    addComment = 6,
    addAttachment = 7,
    sendMail = 8
};

template <>
struct EnumCases<TransactionType> {
    using T = TransactionType;
    static constexpr EnumCase<T> cases[] = {
        {T::addRecord, "addRecord"},       {T::editRecord, "editRecord"},       {T::deleteRecord, "deleteRecord"},
        {T::addVoiceNote, "addVoiceNote"}, {T::addCheckIn, "addCheckIn"},       {T::deleteCheckIn, "deleteCheckIn"},
        {T::addComment, "addComment"},     {T::addAttachment, "addAttachment"}, {T::sendMail, "sendMail"}};
};

/// Reading fails with the name of the column that is absent or does not hold what it should.
struct TransactionConstants : StoredNames<TransactionConstants, Transaction, Result<Transaction, std::string>> {
    /// The table's name ends with the organisation; see `Scope::tableName`.
    std::string_view TableName = of("Transactions", "TRANSACTIONS");
    std::string_view TransactionID = of("transactionId", "transaction_id");
    std::string_view RecordID = of("recordId", "record_id");
    std::string_view ModuleName = of("moduleName", "module_name");
    std::string_view OperationType = of("operationType", "operation_type");
    std::string_view DataJSON = of("dataJson", "data_json");
    std::string_view UriData = of("uriData", "uri_data");
    std::string_view ErrorMessage = of("errorMessage", "error_message");
    std::string_view ParentRecordID = of("parentRecordId", "parent_record_id");
    std::string_view ParentRecordModule = of("parentRecordModule", "parent_record_module");
    std::string_view TransactionTime = of("transactionTime", "transaction_time");
    std::string_view ServerResponse = of("serverResponse", "server_response");
    std::string_view Extras = of("extras", "extras");
};
struct TransactionDatabaseConstants : TableTwin<TransactionConstants> {};

/// A change that waits in the older queue, or has been sent and waits for its answer.
struct Transaction {
    /// The texts of `extras`, which hold the state of a row. A row without a text is ready to be sent.
    struct State {
        static constexpr std::string_view inProgress = "InProgress";
        static constexpr std::string_view error = "error";
    };

    std::string transactionID;  ///< a UUID
    std::string recordID;
    std::string moduleName;
    TransactionType operationType = TransactionType::addRecord;
    std::optional<platform::Data> dataJSON;  ///< the body of the request
    platform::Data uriData;                  ///< its parameters as JSON; empty for a mail
    std::optional<std::string> errorMessage;
    std::optional<std::string> parentRecordID;
    std::optional<std::string> parentRecordModule;
    std::int64_t transactionTime = 0;  ///< milliseconds since 1970; the order of the queue
    std::optional<std::string> serverResponse;
    std::optional<std::string> extras;  ///< one of the texts of `State`

    static constexpr auto fields() {
        using V = Transaction;
        using Names = TransactionConstants;
        return describe(
            field("transactionID", &V::transactionID, &Names::TransactionID).required(),
            field("recordID", &V::recordID, &Names::RecordID).required(),
            field("moduleName", &V::moduleName, &Names::ModuleName).required(),
            fieldBy<IntegerCodec<TransactionType>>("operationType", &V::operationType, &Names::OperationType)
                .required(),
            fieldBy<OptionalTransactionDataCodec>("dataJSON", &V::dataJSON, &Names::DataJSON),
            fieldBy<TransactionDataCodec>("uriData", &V::uriData, &Names::UriData),
            field("errorMessage", &V::errorMessage, &Names::ErrorMessage),
            field("parentRecordID", &V::parentRecordID, &Names::ParentRecordID),
            field("parentRecordModule", &V::parentRecordModule, &Names::ParentRecordModule),
            fieldBy<IntegerCodec<std::int64_t>>("transactionTime", &V::transactionTime, &Names::TransactionTime)
                .required(),
            field("serverResponse", &V::serverResponse, &Names::ServerResponse),
            field("extras", &V::extras, &Names::Extras));
    }
    friend bool operator==(const Transaction&, const Transaction&) = default;
};

}  // namespace tarvo
