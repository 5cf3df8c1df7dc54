#include "tarvobase/value_objects/transaction/Transaction.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

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
