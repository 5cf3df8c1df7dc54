#include "tarvobase/value_objects/transaction/Transaction.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

// The columns of numbers are bound as integers, since the queue is sorted and compared by them. Other programs stored
// them as text, so both are read.

struct TransactionTypeCodec {
    static Value write(TransactionType type, Form) { return static_cast<std::int64_t>(type); }
    static std::optional<TransactionType> read(const ValueView& view, Form form) {
        auto raw = MemberCodec<std::int64_t>::read(view, form);
        return raw ? fromRawInteger<TransactionType>(*raw) : std::nullopt;
    }
};

struct TransactionTimeCodec {
    static Value write(std::int64_t time, Form) { return time; }
    static std::optional<std::int64_t> read(const ValueView& view, Form form) {
        return MemberCodec<std::int64_t>::read(view, form);
    }
};

struct TransactionDataCodec {
    static Value write(const platform::Data& data, Form) { return Bytes{data.text()}; }
    static std::optional<platform::Data> read(const ValueView& view, Form) {
        auto bytes = view.asBytes() ? view.asBytes() : view.asText();
        return bytes ? std::optional(platform::Data(std::string(*bytes))) : std::nullopt;
    }
};

struct OptionalTransactionDataCodec {
    static Value write(const std::optional<platform::Data>& data, Form form) {
        return data ? TransactionDataCodec::write(*data, form) : Value();
    }
    static std::optional<std::optional<platform::Data>> read(const ValueView& view, Form form) {
        return std::optional<std::optional<platform::Data>>(std::in_place, TransactionDataCodec::read(view, form));
    }
};

template struct StoredNames<TransactionConstants, Transaction, Result<Transaction, std::string>>;

}  // namespace tarvo
