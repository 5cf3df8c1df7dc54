#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <type_traits>

namespace tarvo {

/// One described member of a value: its name as callers know it, and where it is. A kind of field that knows more, such
/// as a `StoredField`, derives from it.
template <class Owner, class Member>
struct Field {
    std::string_view name;
    Member Owner::*pointer;
    bool mayBeAbsent = false;
};

template <class Owner, class Member>
constexpr Field<Owner, Member> field(std::string_view name, Member Owner::*pointer) {
    return {name, pointer};
}

/// A member that a reader may find absent; it then keeps the value of a fresh object. (An `std::optional` member may
/// always be absent.)
template <class Owner, class Member>
constexpr Field<Owner, Member> optionalField(std::string_view name, Member Owner::*pointer) {
    return {name, pointer, true};
}

/// A list of fields. It keeps them in a closure, which compilers make far quicker than a tuple.
template <class Closure>
class DescribedFields {
public:
    constexpr explicit DescribedFields(Closure closure) : closure_(closure) {}

    /// What `visit` returns for all fields at once, in order: `visit(Field, Field, ...)`.
    template <class Visit>
    constexpr decltype(auto) apply(Visit&& visit) const {
        return closure_(visit);
    }

private:
    Closure closure_;
};

/// The list of a type's members, in the order in which they are shown. A type has one list:
///
///     static constexpr auto fields() { return describe(field("moduleNames", &Request::moduleNames)); }
///
/// Everything that walks members (the JSON bridge, messages of tests) goes by it. The list of a base, or of a type
/// whose members this one shows as its own, stands first: `describe(Base::fields(), field(...))`. Two lists can be
/// joined.
template <class... Fields>
constexpr auto describe(Fields... fields) {
    return DescribedFields([=](auto& visit) -> decltype(auto) { return visit(fields...); });
}

template <class Base, class... Fields>
constexpr auto describe(DescribedFields<Base> base, Fields... fields) {
    return DescribedFields([=](auto& visit) -> decltype(auto) {
        return base.apply([&](auto... ofBase) -> decltype(auto) { return visit(ofBase..., fields...); });
    });
}

template <class First, class Second>
constexpr auto describe(DescribedFields<First> first, DescribedFields<Second> second) {
    return DescribedFields([=](auto& visit) -> decltype(auto) {
        return first.apply([&](auto... before) -> decltype(auto) {
            return second.apply([&](auto... after) -> decltype(auto) { return visit(before..., after...); });
        });
    });
}

template <class T>
concept Described = requires {
    T::fields();
};

/// Calls `visit(name, member)` for each described member of a value, in order.
template <Described T, class Visit>
void forEachField(T& value, Visit&& visit) {
    std::remove_const_t<T>::fields().apply([&](auto... field) { (visit(field.name, value.*(field.pointer)), ...); });
}

/// One case of an enumeration: its name, and the raw text that the server or a store knows it by.
template <class E>
struct EnumCase {
    E value;
    std::string_view name;
    std::string_view rawText = name;
};

/// Specialised beside each enumeration with its one table:
///
///     template <> struct EnumCases<HTTPMethod> {
///         static constexpr EnumCase<HTTPMethod> cases[] = {{HTTPMethod::get, "get", "GET"}, ...};
///     };
template <class E>
struct EnumCases;

template <class E>
concept Enumerated = requires {
    EnumCases<E>::cases;
};

template <Enumerated E>
constexpr std::string_view caseName(E value) {
    for (auto& one : EnumCases<E>::cases)
        if (one.value == value) return one.name;
    return {};
}

template <Enumerated E>
constexpr std::string_view rawText(E value) {
    for (auto& one : EnumCases<E>::cases)
        if (one.value == value) return one.rawText;
    return {};
}

template <Enumerated E>
constexpr std::optional<E> fromRawText(std::string_view text) {
    for (auto& one : EnumCases<E>::cases)
        if (one.rawText == text) return one.value;
    return std::nullopt;
}

template <Enumerated E>
constexpr std::optional<E> fromCaseName(std::string_view name) {
    for (auto& one : EnumCases<E>::cases)
        if (one.name == name) return one.value;
    return std::nullopt;
}

/// An enumeration whose raw values are its integers: the case of a raw value, if there is one.
template <Enumerated E>
constexpr std::optional<E> fromRawInteger(long long raw) {
    for (auto& one : EnumCases<E>::cases)
        if (static_cast<long long>(one.value) == raw) return one.value;
    return std::nullopt;
}

}  // namespace tarvo
