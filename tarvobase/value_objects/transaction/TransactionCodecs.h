#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/StoredForm.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

/// Codecs that several values of the queues share. Only their source files include this.
namespace tarvo {

// Every text can be written as a module, but only those that the library knows are read back.
struct TransactionModuleCodec {
    static Value write(const ModuleIdentifier& module, Form) { return module.rawValue(); }
    static std::optional<ModuleIdentifier> read(const ValueView& view, Form) {
        auto text = view.asText();
        return text ? ModuleIdentifier::fromRawValue(std::string(*text)) : std::nullopt;
    }
};

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

}  // namespace tarvo
