#pragma once

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace tarvo::platform {

/// The success value of an operation that has nothing to give.
struct Nothing {
    friend bool operator==(const Nothing&, const Nothing&) = default;
};

/// A value or an error. The two types differ, so that `return value;` and `return error;` say which is meant.
/// Reading the side that is not held is a programming error (`std::bad_variant_access`); ask `ok()` first.
template <class Success, class Failure>
class [[nodiscard]] Result {
    static_assert(!std::is_same_v<Success, Failure>, "a value and an error of one type could not be told apart");

public:
    static Result success(Success value) { return Result(std::in_place_index<0>, std::move(value)); }
    static Result failure(Failure error) { return Result(std::in_place_index<1>, std::move(error)); }

    Result(Success value)  // NOLINT: implicit, for `return value;`
        : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure error)  // NOLINT: implicit, for `return error;`
        : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return state_.index() == 0; }
    explicit operator bool() const { return ok(); }

    const Success& value() const& { return std::get<0>(state_); }
    Success& value() & { return std::get<0>(state_); }
    Success&& value() && { return std::get<0>(std::move(state_)); }
    const Failure& error() const& { return std::get<1>(state_); }
    Failure&& error() && { return std::get<1>(std::move(state_)); }

    const Success* operator->() const { return &value(); }
    const Success& operator*() const& { return value(); }
    Success&& operator*() && { return std::move(*this).value(); }

    /// The value, or nothing for an error.
    std::optional<Success> success() const { return ok() ? std::optional<Success>(value()) : std::nullopt; }
    /// The error, or nothing for a value.
    std::optional<Failure> failure() const { return ok() ? std::nullopt : std::optional<Failure>(error()); }

    /// The same failure, or `change(value)`.
    template <class F>
    auto map(F&& change) && -> Result<std::invoke_result_t<F, Success&&>, Failure> {
        using Mapped = Result<std::invoke_result_t<F, Success&&>, Failure>;
        return ok() ? Mapped::success(std::forward<F>(change)(std::move(*this).value()))
                    : Mapped::failure(std::move(*this).error());
    }

private:
    template <std::size_t I, class T>
    Result(std::in_place_index_t<I> index, T&& held) : state_(index, std::forward<T>(held)) {}

    std::variant<Success, Failure> state_;
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::Nothing;
using platform::Result;
}  // namespace tarvo
