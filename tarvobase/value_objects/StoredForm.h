#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/Result.h"
#include "platform/Rows.h"
#include "platform/Text.h"
#include "tarvobase/usecase/Describe.h"

/// How a value object becomes a map and comes back. Each value object has one list of its members; it serves the plain
/// form (in memory, on the wire: typed values under plain keys) and the table form (columns, with booleans and integers
/// as text), reading and writing. The names come from a constants object: a struct with plain keys, whose table twin is
/// the same type with other texts.
///
///     const auto moduleForm = form<Module, ModuleConstants>(
///         member(&Module::moduleName, &ModuleConstants::ModuleName), ...);
///
///     auto row = moduleForm.toMap(module, ModuleDatabaseConstants(), Form::table);
///     Module module = moduleForm.read(row, ModuleDatabaseConstants(), Form::table);
namespace tarvo {

enum class Form { plain, table };

/// Finds a member in a map or a row.
inline std::optional<ValueView> lookUp(const ValueMap& source, std::string_view name) {
    auto value = source.find(name);
    return value ? std::optional(ValueView(*value)) : std::nullopt;
}
inline std::optional<ValueView> lookUp(const Row& source, std::string_view name) { return source.find(name); }

/// One type of member: how it is written in a form, and how it is read back. Reading gives nothing for an absent, null
/// or mistyped value; the class of the value object decides what that means.
template <class T>
struct MemberCodec;

template <>
struct MemberCodec<std::string> {
    static Value write(const std::string& text, Form) { return text; }
    // The server owns the column types: a text that looks like a number may come back from a table as one.
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
    // In a table true is exactly the text "true".
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

/// An enumeration goes by its raw text; a text outside the list counts as mistyped.
template <Enumerated E>
struct MemberCodec<E> {
    static Value write(E value, Form) { return rawText(value); }
    static std::optional<E> read(const ValueView& view, Form) {
        auto text = view.asText();
        return text ? fromRawText<E>(*text) : std::nullopt;
    }
};

/// A map is itself in the plain form and its JSON text in a table.
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

/// The JSON text of a map for a table. A map that JSON cannot say is logged with its label, and the null keeps the
/// column out of the row.
inline Value jsonTextOrNull(const ValueMap& map, const std::string& label) {
    if (auto text = json::write(Value(map))) return *std::move(text);
    platform::log(label + ": it holds what JSON cannot say");
    return Value();
}

/// A list of texts is itself in the plain form and its JSON text in a table.
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

/// An optional member is left out of the map when it is absent.
template <class T>
struct MemberCodec<std::optional<T>> {
    static Value write(const std::optional<T>& value, Form form) {
        return value ? MemberCodec<T>::write(*value, form) : Value();
    }
    static std::optional<std::optional<T>> read(const ValueView& view, Form form) {
        return std::optional<std::optional<T>>(std::in_place, MemberCodec<T>::read(view, form));
    }
};

template <class T>
constexpr bool isOptionalMember = false;
template <class T>
constexpr bool isOptionalMember<std::optional<T>> = true;

/// When a member is written. Reading looks for it in every form.
enum class Written { always, tableOnly, plainOnly, never };

template <class Owner, class Member, class Constants, class Codec = MemberCodec<Member>>
struct FormMember {
    Member Owner::*pointer;
    std::string_view Constants::*name;
    Member fallback;
    Written written;
    bool isRequired = false;
};

/// A member with the name of its key. The fallback stands for an absent or mistyped value where reading is lenient.
template <class Owner, class Member, class Constants>
constexpr FormMember<Owner, Member, Constants> member(Member Owner::*pointer, std::string_view Constants::*name,
                                                      std::type_identity_t<Member> fallback = {},
                                                      Written written = Written::always) {
    return {pointer, name, std::move(fallback), written};
}

/// A member with a codec of its own in place of that of its type.
template <class Codec, class Owner, class Member, class Constants>
constexpr FormMember<Owner, Member, Constants, Codec> memberBy(Member Owner::*pointer,
                                                               std::string_view Constants::*name,
                                                               std::type_identity_t<Member> fallback = {},
                                                               Written written = Written::always) {
    return {pointer, name, std::move(fallback), written};
}

/// A member without which the value is none: `readRequired` fails for it.
template <class Owner, class Member, class Constants, class Codec>
constexpr FormMember<Owner, Member, Constants, Codec> required(FormMember<Owner, Member, Constants, Codec> member) {
    member.isRequired = true;
    return member;
}

/// How a value is read from a map or a row: leniently (`read`), strictly (`readStrictly`), or leniently but for the
/// members that are marked as required (`readRequired`). What a failed row costs, itself or the whole list, is told by
/// `TableAccess`.
template <class T, class Constants, class... Members>
class StoredForm {
public:
    constexpr explicit StoredForm(Members... members) : members_(std::move(members)...) {}

    /// The value as a map. Optional members that are absent are left out.
    ValueMap toMap(const T& value, const Constants& names, Form form) const {
        ValueMap map;
        map.reserve(sizeof...(Members));
        forEachMember([&](auto& member) { write(map, value, member, names, form); });
        return map;
    }

    /// A lenient read: an absent or mistyped member takes its fallback.
    template <class Source>
    T read(const Source& source, const Constants& names, Form form) const {
        T value;
        forEachMember([&](auto& member) {
            value.*member.pointer = readMember(source, member, names, form).value_or(member.fallback);
        });
        return value;
    }

    /// A strict read: fails with the key of the first member that is absent or mistyped. Optional members may be
    /// absent.
    template <class Source>
    Result<T, std::string> readStrictly(const Source& source, const Constants& names, Form form) const {
        return readUnless(source, names, form, [](auto& member) {
            return !isOptionalMember<std::remove_cvref_t<decltype(member.fallback)>>;
        });
    }

    /// Fails with the key of the first required member that is absent or mistyped. Any other takes its fallback.
    template <class Source>
    Result<T, std::string> readRequired(const Source& source, const Constants& names, Form form) const {
        return readUnless(source, names, form, [](auto& member) { return member.isRequired; });
    }

    /// Calls `visit(member)` with the member of a key; false for a key that no member has.
    template <class Visit>
    bool visitMember(const T& value, std::string_view key, const Constants& names, Visit&& visit) const {
        bool found = false;
        forEachMember([&](auto& member) {
            if (found || names.*member.name != key) return;
            found = true;
            visit(value.*member.pointer);
        });
        return found;
    }

private:
    template <class F>
    void forEachMember(F&& visit) const {
        std::apply([&](auto&... member) { (visit(member), ...); }, members_);
    }
    template <class Owner, class Member, class C, class Codec>
    static Codec codec(const FormMember<Owner, Member, C, Codec>&) {
        return {};
    }
    template <class Source, class MustBeThere>
    Result<T, std::string> readUnless(const Source& source, const Constants& names, Form form,
                                      MustBeThere&& mustBeThere) const {
        T value;
        std::optional<std::string> failedPath;
        forEachMember([&](auto& member) {
            auto found = readMember(source, member, names, form);
            if (found)
                value.*member.pointer = *std::move(found);
            else if (!mustBeThere(member))
                value.*member.pointer = member.fallback;
            else if (!failedPath)
                failedPath = std::string(names.*member.name);
        });
        if (failedPath) return Result<T, std::string>::failure(*std::move(failedPath));
        return Result<T, std::string>::success(std::move(value));
    }
    template <class M>
    static void write(ValueMap& map, const T& value, const M& member, const Constants& names, Form form) {
        if (member.written == Written::never || (member.written == Written::tableOnly && form == Form::plain) ||
            (member.written == Written::plainOnly && form == Form::table))
            return;
        auto written = codec(member).write(value.*member.pointer, form);
        if (written.isNull()) return;
        map.set(names.*member.name, std::move(written));
    }
    template <class Source, class M>
    static auto readMember(const Source& source, const M& member, const Constants& names, Form form) {
        auto view = lookUp(source, names.*member.name);
        using Read = decltype(codec(member).read(*view, form));
        return view && !view->isNull() ? codec(member).read(*view, form) : Read();
    }

    std::tuple<Members...> members_;
};

template <class T, class Constants, class... Members>
constexpr auto form(Members... members) {
    return StoredForm<T, Constants, Members...>(std::move(members)...);
}

}  // namespace tarvo
