#include "tarvobase/value_objects/transaction/NTransaction.h"

#include "tarvobase/value_objects/transaction/TransactionCodecs.h"

namespace tarvo {

namespace {

const TransactionKindCase& transactionKindCase(NTransaction::Kind kind) {
    return EnumCases<NTransaction::Kind>::cases[static_cast<std::size_t>(kind)];
}

}  // namespace

bool isFileUpload(NTransaction::Kind kind) { return transactionKindCase(kind).isFileUpload; }
bool isCreateState(NTransaction::Kind kind) { return transactionKindCase(kind).isCreateState; }
std::optional<RecordDependency::Kind> depndencyType(NTransaction::Kind kind) {
    return transactionKindCase(kind).depndencyType;
}

std::vector<NTransaction::Kind> kindsWhere(bool (*has)(NTransaction::Kind)) {
    std::vector<NTransaction::Kind> kinds;
    for (auto& one : EnumCases<NTransaction::Kind>::cases)
        if (has(one.value)) kinds.push_back(one.value);
    return kinds;
}

// A payload that JSON cannot express is left out, which a reader of the row reports.
struct TransactionPayloadCodec {
    static Value write(const ValueMap& payload, Form form) {
        return form == Form::plain ? Value(payload) : Value(json::write(Value(payload)));
    }
    static std::optional<ValueMap> read(const ValueView& view, Form form) {
        return MemberCodec<ValueMap>::read(view, form);
    }
};

// In a table the empty text says, as null does, that there is no error.
struct TransactionErrorCodec {
    using Error = std::optional<ErrorResponse>;

    static Value write(const Error& error, Form form) {
        return error ? MemberCodec<ValueMap>::write(error->toJSON(), form) : Value();
    }
    static std::optional<Error> read(const ValueView& view, Form form) {
        if (form == Form::table && view.asText() == "") return Error();
        auto map = MemberCodec<ValueMap>::read(view, form);
        auto error = map ? ErrorResponse::fromJSON(*map) : Result<ErrorResponse, ParsingError>(ParsingError{});
        return error ? std::optional<Error>(std::in_place, std::move(error).value()) : std::nullopt;
    }
};

struct TransactionStatusCodec {
    using Raw = IntegerCodec<NTransaction::Status::Case>;

    static Value write(const NTransaction::Status& status, Form form) { return Raw::write(status.which, form); }
    static std::optional<NTransaction::Status> read(const ValueView& view, Form form) {
        auto which = Raw::read(view, form);
        return which ? std::optional(NTransaction::Status{.which = *which}) : std::nullopt;
    }
};

bool createsRecord(NTransaction::Kind kind) { return isCreateState(kind) || kind == NTransaction::Kind::addTextNote; }

template struct StoredMapper<TransactionMapper, NTransaction>;

}  // namespace tarvo
