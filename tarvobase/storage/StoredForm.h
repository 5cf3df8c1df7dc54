#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/Result.h"
#include "platform/Rows.h"
#include "platform/Text.h"
#include "tarvobase/storage/Mapper.h"
#include "tarvobase/storage/StoredNames.h"

/// How a value object becomes a map and comes back. The stored fields of its one list (`fields()`, StoredNames.h) serve
/// the plain form (in memory, on the wire: typed values under plain keys) and the table form (columns, with booleans
/// and integers as text), reading and writing:
///
///     auto row = StoredForm<Module>::toMap(module, ModuleDatabaseConstants());
///     auto module = StoredForm<Module>::read(row, ModuleDatabaseConstants());
namespace tarvo {

/// Returns the value under a name in a map or a row, or nullopt if there is none.
inline std::optional<ValueView> lookUp(const ValueMap& source, std::string_view name) {
    auto value = source.find(name);
    return value ? std::optional(ValueView(*value)) : std::nullopt;
}
inline std::optional<ValueView> lookUp(const Row& source, std::string_view name) { return source.find(name); }

/// Writes members of a type in a form and reads them back. Reading returns nullopt for a value that is absent, null or
/// mistyped; the class of the value object decides what that means.
template <class T>
struct MemberCodec;

template <>
struct MemberCodec<std::string> {
    static Value write(const std::string& text, Form) { return text; }
    // The server owns the column types, so a text that looks like a number may come back from a table as a number.
    static std::optional<std::string> read(const ValueView& view, Form form) {
        if (auto text = view.asText()) return std::string(*text);
        if (form == Form::plain) return std::nullopt;
        if (auto integer = view.asInteger()) return std::to_string(*integer);
        return view.asReal() ? view.copy().toText() : std::nullopt;
    }
};

template <>
struct MemberCodec<bool> {
    static Value write(bool value, Form form) {
        return form == Form::plain ? Value(value) : Value(value ? "true" : "false");
    }
    // In a table, exactly the text "true" is true.
    static std::optional<bool> read(const ValueView& view, Form form) {
        if (form == Form::plain) return view.asBool();
        return view.isNull() ? std::nullopt : std::optional(view.asText() == "true");
    }
};

template <class T>
requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) struct MemberCodec<T> {
    static Value write(T value, Form form) { return form == Form::plain ? Value(value) : Value(std::to_string(value)); }
    static std::optional<T> read(const ValueView& view, Form form) {
        auto integer = view.asInteger();
        if (!integer && form == Form::table && view.asText()) integer = text::toInteger(*view.asText());
        if (!integer || !std::in_range<T>(*integer)) return std::nullopt;
        return static_cast<T>(*integer);
    }
};

template <>
struct MemberCodec<double> {
    static Value write(double value, Form form) {
        return form == Form::plain ? Value(value) : Value(*Value(value).toText());
    }
    static std::optional<double> read(const ValueView& view, Form form) {
        if (auto real = view.asReal()) return real;
        if (auto integer = view.asInteger()) return static_cast<double>(*integer);
        return form == Form::table && view.asText() ? text::toReal(*view.asText()) : std::nullopt;
    }
};

/// An enumeration is stored as its raw text. An unknown text counts as mistyped.
template <Enumerated E>
struct MemberCodec<E> {
    static Value write(E value, Form) { return rawText(value); }
    static std::optional<E> read(const ValueView& view, Form) {
        auto text = view.asText();
        return text ? fromRawText<E>(*text) : std::nullopt;
    }
};

template <class T>
struct IntegerCodec {
    static Value write(T value, Form) { return static_cast<std::int64_t>(value); }
    static std::optional<T> read(const ValueView& view, Form form) {
        auto raw = MemberCodec<std::int64_t>::read(view, form);
        if constexpr (Enumerated<T>)
            return raw ? fromRawInteger<T>(*raw) : std::nullopt;
        else
            return raw && std::in_range<T>(*raw) ? std::optional(static_cast<T>(*raw)) : std::nullopt;
    }
};

/// A map is stored as it is in the plain form, and as JSON text in a table.
template <>
struct MemberCodec<ValueMap> {
    static Value write(const ValueMap& map, Form form) {
        return form == Form::plain ? Value(map) : Value(json::write(Value(map)).value_or("{}"));
    }
    static std::optional<ValueMap> read(const ValueView& view, Form form) {
        if (view.kind() == ValueKind::map) return *view.nested()->asMap();
        auto text = form == Form::table ? (view.asText() ? view.asText() : view.asBytes()) : std::nullopt;
        auto parsed = text ? json::parse(*text) : std::nullopt;
        return parsed && parsed->asMap() ? std::optional(*parsed->asMap()) : std::nullopt;
    }
};

/// Returns the JSON text of a map for a table. If JSON cannot express the map, logs its label and returns null, which
/// keeps the column out of the row.
inline Value jsonTextOrNull(const ValueMap& map, const std::string& label) {
    if (auto text = json::write(Value(map))) return *std::move(text);
    platform::log(platform::LogLevel::warning, "values", label + ": it holds values that JSON cannot express");
    return Value();
}

/// A list of texts is stored as it is in the plain form, and as JSON text in a table.
template <>
struct MemberCodec<std::vector<std::string>> {
    static Value write(const std::vector<std::string>& texts, Form form) {
        return form == Form::plain ? Value(texts) : Value(json::write(Value(texts)).value_or("[]"));
    }
    static std::optional<std::vector<std::string>> read(const ValueView& view, Form form) {
        auto parsed = form == Form::table && view.asText() ? json::parse(*view.asText()) : std::optional(view.copy());
        if (!parsed || !parsed->asList()) return std::nullopt;
        std::vector<std::string> texts;
        for (auto& item : *parsed->asList()) {
            if (!item.asText()) return std::nullopt;
            texts.push_back(*item.asText());
        }
        return texts;
    }
};

/// An optional member is left out of the map if it is absent.
template <class T>
struct MemberCodec<std::optional<T>> {
    static Value write(const std::optional<T>& value, Form form) {
        return value ? MemberCodec<T>::write(*value, form) : Value();
    }
    static std::optional<std::optional<T>> read(const ValueView& view, Form form) {
        return std::optional<std::optional<T>>(std::in_place, MemberCodec<T>::read(view, form));
    }
};

/// The codec of a stored field: its own, or the one of its type.
template <class Member, class Codec>
struct CodecOrDefault {
    using type = Codec;
};
template <class Member>
struct CodecOrDefault<Member, void> {
    using type = MemberCodec<Member>;
};

template <class T>
constexpr bool isOptionalMember = false;
template <class T>
constexpr bool isOptionalMember<std::optional<T>> = true;

/// Writes and reads a value by its stored fields. Reading is lenient (`read`), strict (`readStrictly`), or strict for
/// the fields that are marked as required (`readRequired`). `TableAccess` decides whether an unreadable row costs only
/// itself or the whole list. The form is the one of the names, unless a reader is given another.
template <Described T>
class StoredForm {
public:
    /// Returns the value as a map, in the order of its fields. Optional members that are absent are left out, and so
    /// are members without a column.
    template <class Names>
    static ValueMap toMap(const T& value, const Names& names) {
        ValueMap map;
        map.reserve(fieldCount());
        forEachStoredField([&](auto& field) { write(map, value, field, names); });
        return map;
    }

    /// Reads leniently: an absent or mistyped member keeps the value of a new object.
    template <class Source, class Names>
    static T read(const Source& source, const Names& names) {
        T value;
        forEachStoredField([&](auto& field) { readField(value, field, source, names.*field.key, names.form); });
        return value;
    }

    /// Reads strictly: fails with the key of the first member that is absent or mistyped. Optional members may be
    /// absent. One whose codec refuses what is there fails the value too.
    template <class Source, class Names>
    static Result<T, std::string> readStrictly(const Source& source, const Names& names, Form form) {
        return readUnless(source, names, form, [&](auto& field, const auto& member) {
            auto view = lookUp(source, names.*field.key);
            return !isOptionalMember<std::remove_cvref_t<decltype(member)>> || (view && !view->isNull());
        });
    }

    /// Fails with the key of the first required member that is absent or mistyped. Any other keeps the value of a new
    /// object.
    template <class Source, class Names>
    static Result<T, std::string> readRequired(const Source& source, const Names& names) {
        return readUnless(source, names, names.form, [](auto& field, auto&) { return field.isRequired; });
    }

private:
    static constexpr std::size_t fieldCount() {
        return T::fields().apply([](auto&... fields) { return sizeof...(fields); });
    }
    template <class Visit>
    static void forEachStoredField(Visit&& visit) {
        auto visitOne = [&](auto& field) {
            if constexpr (IsStoredField<decltype(field)>) visit(field);
        };
        T::fields().apply([&](auto&... fields) { (visitOne(fields), ...); });
    }
    template <class Source, class Names, class MustBeThere>
    static Result<T, std::string> readUnless(const Source& source, const Names& names, Form form,
                                             MustBeThere&& mustBeThere) {
        T value;
        std::optional<std::string> failedPath;
        forEachStoredField([&](auto& field) {
            auto key = names.*field.key;
            bool found = readField(value, field, source, key, form);
            if (!found && !failedPath && mustBeThere(field, value.*field.pointer)) failedPath = std::string(key);
        });
        if (failedPath) return Result<T, std::string>::failure(*std::move(failedPath));
        return Result<T, std::string>::success(std::move(value));
    }
    template <class Owner, class Member, class Names, class Codec>
    static typename CodecOrDefault<Member, Codec>::type codec(const StoredField<Owner, Member, Names, Codec>&) {
        return {};
    }
    template <class Field, class Names>
    static void write(ValueMap& map, const T& value, const Field& field, const Names& names) {
        auto key = names.*field.key;
        if (key.empty() || (field.isTableOnly && names.form == Form::plain)) return;
        auto written = codec(field).write(value.*field.pointer, names.form);
        if (!written.isNull()) map.set(key, std::move(written));
    }
    /// Returns false if the member is absent or mistyped; the value then keeps its own.
    template <class Field, class Source>
    static bool readField(T& value, const Field& field, const Source& source, std::string_view key, Form form) {
        auto view = lookUp(source, key);
        if (!view || view->isNull()) return false;
        auto member = codec(field).read(*view, form);
        if (!member) return false;
        value.*field.pointer = *std::move(member);
        return true;
    }
};

template <class Names, class T, class Read>
ValueMap StoredNames<Names, T, Read>::getDictionary(const T& value) const {
    return StoredForm<T>::toMap(value, names());
}

template <class Names, class T, class Read>
Read StoredNames<Names, T, Read>::getValue(const ValueMap& map) const {
    return valueOf(map);
}

template <class Names, class T, class Read>
Read StoredNames<Names, T, Read>::getValue(const Row& row) const {
    return valueOf(row);
}

template <class Names, class T, class Read>
template <class Source>
Read StoredNames<Names, T, Read>::valueOf(const Source& source) const {
    if constexpr (std::is_same_v<Read, T>)
        return StoredForm<T>::read(source, names());
    else
        return StoredForm<T>::readRequired(source, names());
}

template <class Names, class T>
ValueMap StoredMapper<Names, T>::getDictionary(const T& value) const {
    return StoredForm<T>::toMap(value, names());
}

template <class Names, class T>
Result<T, ParsingError> StoredMapper<Names, T>::getValue(const ValueMap& map) const {
    return strictly<T>(map, names(), names().form);
}

template <class Names, class T>
Result<T, ParsingError> StoredMapper<Names, T>::getValue(const Row& row) const {
    return strictly<T>(row, names(), names().form);
}

}  // namespace tarvo
