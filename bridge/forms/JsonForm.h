#pragma once

#include <chrono>
#include <concepts>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Describe.h"
#include "platform/Result.h"
#include "platform/Value.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/usecase/DataSource.h"

/// The JSON form of values: a described type is a map of its members by their names, an enumeration the name of its
/// case, an absent optional is left out, a time span counts whole seconds. A type with a form of its own specialises
/// `JsonForm` beside it.
namespace tarvo::bridge {

/// The place and the reason why JSON from outside could not be read: "moduleNames[1]" and "text is expected, not
/// integer". It names kinds, never the value, which may be a secret.
struct Misread {
    std::string path;
    std::string message;

    Misread below(std::string_view step) && {
        bool joined = path.empty() || path.front() == '[';
        return {std::string(step) + (joined ? "" : ".") + path, std::move(message)};
    }
    std::string text() const { return path.empty() ? message : path + ": " + message; }
};

/// The outcome of reading: nullopt if all went well.
using Reading = std::optional<Misread>;

Misread unexpected(std::string_view expected, const Value& found);

/// Returns a value that JSON can express: an object of the program becomes a map with the name of its type, a number
/// that is not finite becomes null, and a text that is not UTF-8 becomes its Base64 text.
Value writable(const Value& value);

template <class T>
struct JsonForm;

template <class T>
Value toJson(const T& value) {
    return JsonForm<T>::write(value);
}

/// Reads into a value; after a failure the value is valid but incomplete.
template <class T>
[[nodiscard]] Reading fromJson(const Value& json, T& into) {
    return JsonForm<T>::read(json, into);
}

template <>
struct JsonForm<Value> {
    static Value write(const Value& value) { return writable(value); }
    static Reading read(const Value& json, Value& into) {
        into = json;
        return {};
    }
};

template <>
struct JsonForm<ValueMap> {
    static Value write(const ValueMap& value) { return writable(value); }
    static Reading read(const Value& json, ValueMap& into) {
        if (!json.asMap()) return unexpected("a map", json);
        into = *json.asMap();
        return {};
    }
};

template <>
struct JsonForm<bool> {
    static Value write(bool value) { return value; }
    static Reading read(const Value& json, bool& into) {
        if (!json.asBool()) return unexpected("true or false", json);
        into = *json.asBool();
        return {};
    }
};

template <std::integral T>
struct JsonForm<T> {
    static Value write(T value) { return value; }
    static Reading read(const Value& json, T& into) {
        auto number = json.asInteger();
        if (!number) return unexpected("a whole number", json);
        if (!std::in_range<T>(*number)) return Misread{{}, "the number is out of range"};
        into = static_cast<T>(*number);
        return {};
    }
};

template <std::floating_point T>
struct JsonForm<T> {
    static Value write(T value) { return writable(value); }
    static Reading read(const Value& json, T& into) {
        auto number = json.toReal();
        if (!number) return unexpected("a number", json);
        into = static_cast<T>(*number);
        return {};
    }
};

template <>
struct JsonForm<std::string> {
    static Value write(const std::string& value) { return writable(value); }
    static Reading read(const Value& json, std::string& into) {
        if (!json.asText()) return unexpected("text", json);
        into = *json.asText();
        return {};
    }
};

template <class Rep, class Period>
struct JsonForm<std::chrono::duration<Rep, Period>> {
    using Span = std::chrono::duration<Rep, Period>;
    static Value write(Span value) { return std::chrono::duration_cast<std::chrono::seconds>(value).count(); }
    static Reading read(const Value& json, Span& into) {
        std::int32_t seconds = 0;
        auto misread = fromJson(json, seconds);
        into = std::chrono::seconds(seconds);
        return misread;
    }
};

template <Enumerated E>
struct JsonForm<E> {
    static Value write(E value) { return caseName(value); }
    static Reading read(const Value& json, E& into) {
        auto value = json.asText() ? fromCaseName<E>(*json.asText()) : std::nullopt;
        if (!value) return Misread{{}, "one of " + names() + " is expected"};
        into = *value;
        return {};
    }

private:
    static std::string names() {
        std::string all;
        for (auto& one : EnumCases<E>::cases) all.append(all.empty() ? "" : ", ").append(one.name);
        return all;
    }
};

template <class T>
struct JsonForm<std::optional<T>> {
    static Value write(const std::optional<T>& value) { return value ? toJson(*value) : Value(); }
    static Reading read(const Value& json, std::optional<T>& into) {
        if (json.isNull()) {
            into.reset();
            return {};
        }
        return fromJson(json, into.emplace());
    }
};

template <class T>
struct JsonForm<std::vector<T>> {
    static Value write(const std::vector<T>& values) {
        ValueList list;
        list.reserve(values.size());
        for (const T& value : values) list.push_back(toJson(value));
        return list;
    }
    static Reading read(const Value& json, std::vector<T>& into) {
        auto list = json.asList();
        if (!list) return unexpected("a list", json);
        into.clear();
        for (std::size_t i = 0; i < list->size(); ++i) {
            T value{};
            if (auto misread = fromJson((*list)[i], value))
                return std::move(*misread).below("[" + std::to_string(i) + "]");
            into.push_back(std::move(value));
        }
        return {};
    }
};

template <class T>
struct JsonForm<std::map<std::string, T>> {
    static Value write(const std::map<std::string, T>& values) {
        ValueMap map;
        for (auto& [name, value] : values) map.set(name, toJson(value));
        return map;
    }
    static Reading read(const Value& json, std::map<std::string, T>& into) {
        auto map = json.asMap();
        if (!map) return unexpected("a map", json);
        into.clear();
        for (auto& entry : *map)
            if (auto misread = fromJson(entry.value, into[entry.name])) return std::move(*misread).below(entry.name);
        return {};
    }
};

template <class T>
constexpr bool isOptional = false;
template <class T>
constexpr bool isOptional<std::optional<T>> = true;

/// A described type. A name that is not described is refused, since it is a spelling mistake. A response also has its
/// `source`, which distinguishes the two answers to one call.
template <Described T>
struct JsonForm<T> {
    static Value write(const T& value) {
        ValueMap map;
        forEachField(value, [&](std::string_view name, const auto& member) {
            auto json = toJson(member);
            if (!isOptional<std::remove_cvref_t<decltype(member)>> || !json.isNull()) map.set(name, std::move(json));
        });
        if constexpr (std::derived_from<T, BaseResponse>)
            if (!map.contains("source")) map.set("source", caseName(value.source()));
        return map;
    }

    static Reading read(const Value& json, T& into) {
        auto map = json.asMap();
        if (!map) return unexpected("a map", json);
        for (auto& entry : *map)
            if (!isMember(entry.name)) return Misread{entry.name, "there is no member of this name"};
        Reading misread;
        T::fields().apply(
            [&](auto... field) { static_cast<void>((... || (misread = readMember(*map, field, into)).has_value())); });
        return misread;
    }

private:
    static bool isMember(std::string_view name) {
        return T::fields().apply([&](auto... field) { return (... || (field.name == name)); });
    }
    template <class Owner, class Member>
    static Reading readMember(const ValueMap& map, const Field<Owner, Member>& field, T& into) {
        auto json = map.find(field.name);
        if (!json) {
            if (isOptional<Member> || field.mayBeAbsent) return {};
            return Misread{std::string(field.name), "this member is missing"};
        }
        auto misread = fromJson(*json, into.*(field.pointer));
        return misread ? std::move(*misread).below(field.name) : Reading();
    }
};

/// `{"success":..}` or `{"failure":..}`.
template <class Success, class Failure>
struct JsonForm<Result<Success, Failure>> {
    static Value write(const Result<Success, Failure>& result) {
        return result ? ValueMap{{"success", toJson(result.value())}} : ValueMap{{"failure", toJson(result.error())}};
    }
};

template <class DomainError>
struct JsonForm<AppError<DomainError>> {
    static Value write(const AppError<DomainError>& error) {
        ValueMap map{{"case", caseName(error.which())}};
        if (auto domainError = error.getDomainError()) map.set("value", toJson(*domainError));
        if (auto reason = error.reason()) map.set("reason", caseName(*reason));
        if (!error.cause().empty()) map.set("cause", error.cause());
        return map;
    }
};

template <class DomainError>
struct JsonForm<ErrorObject<DomainError>> {
    static Value write(const ErrorObject<DomainError>& error) {
        ValueMap map{{"appError", toJson(error.appError)}, {"errorCode", toJson(error.errorCode)}};
        if (error.errorMsg) map.set("errorMsg", toJson(*error.errorMsg));
        if (error.details) map.set("details", toJson(*error.details));
        return map;
    }
};

}  // namespace tarvo::bridge
