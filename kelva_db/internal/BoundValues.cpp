#include "kelva_db/internal/BoundValues.h"

#include <sqlite3.h>

#include <algorithm>

#include "kelva_db/internal/Sqlite.h"

namespace kelva {

using tarvo::ValueKind;

ValueView viewOf(const DatabaseValue& value) {
    if (auto text = value.asText()) return ValueView::text(*text);
    if (auto blob = value.asBlob()) return ValueView::bytes(blob->bytes);
    if (auto integer = value.asInteger()) return ValueView::integer(*integer);
    if (auto real = value.asReal()) return ValueView::real(*real);
    return {};
}

bool isBindable(const ValueView& value) {
    return value.kind() != ValueKind::object || allConvertible(std::span(value.nested(), 1));
}

void throwNotBindable(const ValueView& value) {
    throwError(FailureKind::misuse, "a value cannot be bound: " + std::string(value.nested()->asObject()->typeName()));
}

BoundValues::BoundValues(std::span<const Value> parameters) {
    views_.reserve(parameters.size());
    for (auto& parameter : parameters) {
        ValueView view(parameter);
        if (view.nested()) {
            auto stored = databaseValue(parameter);
            if (!stored) throwNotBindable(view);
            view = viewOf(stored_.emplace_back(std::move(*stored)));
        }
        views_.push_back(view);
    }
}

namespace {

// SQLite takes a null pointer for NULL, also when the length is zero.
const char* dataOf(std::string_view text) { return text.data() ? text.data() : ""; }

}  // namespace

int bind(sqlite3_stmt* statement, int position, const ValueView& value) {
    switch (value.kind()) {
        case ValueKind::boolean:
            return sqlite3_bind_int64(statement, position, *value.asBool());
        case ValueKind::integer:
            return sqlite3_bind_int64(statement, position, *value.asInteger());
        case ValueKind::real:
            return sqlite3_bind_double(statement, position, *value.asReal());
        case ValueKind::text: {
            auto text = *value.asText();
            return sqlite3_bind_text64(statement, position, dataOf(text), text.size(), SQLITE_STATIC, SQLITE_UTF8);
        }
        case ValueKind::bytes: {
            auto bytes = *value.asBytes();
            return sqlite3_bind_blob64(statement, position, dataOf(bytes), bytes.size(), SQLITE_STATIC);
        }
        default:
            return sqlite3_bind_null(statement, position);
    }
}

void answer(sqlite3_context* context, const ValueView& value, Lifetime lifetime) {
    auto destructor = lifetime == Lifetime::thisCall ? SQLITE_TRANSIENT : SQLITE_STATIC;
    switch (value.kind()) {
        case ValueKind::boolean:
            return sqlite3_result_int64(context, *value.asBool());
        case ValueKind::integer:
            return sqlite3_result_int64(context, *value.asInteger());
        case ValueKind::real:
            return sqlite3_result_double(context, *value.asReal());
        case ValueKind::text: {
            auto text = *value.asText();
            return sqlite3_result_text64(context, dataOf(text), text.size(), destructor, SQLITE_UTF8);
        }
        case ValueKind::bytes: {
            auto bytes = *value.asBytes();
            return sqlite3_result_blob64(context, dataOf(bytes), bytes.size(), destructor);
        }
        default:
            return sqlite3_result_null(context);
    }
}

}  // namespace kelva
