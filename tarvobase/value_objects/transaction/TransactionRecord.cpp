#include "tarvobase/value_objects/transaction/TransactionRecord.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

// One value that JSON cannot express must not cost the others, since an edit is not saved without this row.
struct RecordDataCodec {
    static Value write(const ValueMap& data, Form form) {
        if (form == Form::plain) return data;
        if (auto text = json::write(Value(data))) return *std::move(text);
        ValueMap expressible;
        for (auto& entry : data)
            if (json::write(entry.value)) expressible.set(entry.name, entry.value);
        return jsonTextOrNull(expressible, "TransactionRecord");
    }
    static std::optional<ValueMap> read(const ValueView& view, Form form) {
        return MemberCodec<ValueMap>::read(view, form);
    }
};

template struct StoredNames<TransactionRecordConstants, TransactionRecord, Result<TransactionRecord, std::string>>;

}  // namespace tarvo
