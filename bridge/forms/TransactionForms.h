#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bridge/forms/JsonForm.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/TransactionDependency.h"

/// The JSON forms of the current queue of changes.
namespace tarvo::bridge {

/// What a transaction waits for.
struct JsonDependency {
    std::int64_t dependentTransaction = 0;
    TransactionDependency::Kind kind = TransactionDependency::Kind::lookupRecord;
    static constexpr auto fields() {
        return describe(field("dependentTransaction", &JsonDependency::dependentTransaction),
                        field("kind", &JsonDependency::kind));
    }
};

/// `value` is the delay in seconds of an inactive transaction.
struct JsonTransactionStatus {
    NTransaction::Status::Case which = NTransaction::Status::Case::active;
    std::optional<double> value;
    static constexpr auto fields() {
        return describe(field("case", &JsonTransactionStatus::which), field("value", &JsonTransactionStatus::value));
    }
};

/// A transaction with the name of its module. A new one needs no id and no status.
struct JsonTransaction {
    std::optional<std::int64_t> id;
    std::string recordId;
    std::string module;
    NTransaction::Kind kind = NTransaction::Kind::addRecord;
    ValueMap payload;
    std::optional<ErrorResponse> errorResponse;
    std::optional<JsonTransactionStatus> status;
    std::optional<std::int64_t> mergeCount, syncAttempt;
    std::optional<std::vector<JsonDependency>> dependencies;

    static constexpr auto fields() {
        using T = JsonTransaction;
        return describe(field("id", &T::id), field("recordId", &T::recordId), field("module", &T::module),
                        field("kind", &T::kind), field("payload", &T::payload),
                        field("errorResponse", &T::errorResponse), field("status", &T::status),
                        field("mergeCount", &T::mergeCount), field("syncAttempt", &T::syncAttempt),
                        field("dependencies", &T::dependencies));
    }

    static JsonTransaction of(const NTransaction& transaction) {
        bool isInactive = transaction.status.which == NTransaction::Status::Case::inactive;
        return {.id = transaction.id,
                .recordId = transaction.recordId,
                .module = transaction.module.rawValue(),
                .kind = transaction.kind,
                .payload = transaction.payload,
                .errorResponse = transaction.errorResponse,
                .status = JsonTransactionStatus{transaction.status.which,
                                                isInactive ? std::optional(transaction.status.delay) : std::nullopt},
                .mergeCount = transaction.mergeCount,
                .syncAttempt = transaction.syncAttempt,
                .dependencies = std::nullopt};
    }
    NTransaction transaction(std::int64_t idOfNew) const {
        NTransaction::Status made;
        if (status) made = {status->which, status->value.value_or(0)};
        return {.id = id.value_or(idOfNew),
                .recordId = recordId,
                .module = ModuleIdentifier::fromModuleName(module),
                .kind = kind,
                .payload = payload,
                .errorResponse = errorResponse,
                .status = made,
                .mergeCount = mergeCount.value_or(0),
                .syncAttempt = syncAttempt.value_or(0)};
    }
};

template <>
struct JsonForm<NTransaction> {
    static Value write(const NTransaction& transaction) { return toJson(JsonTransaction::of(transaction)); }
};

}  // namespace tarvo::bridge
