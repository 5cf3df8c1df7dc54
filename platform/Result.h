#pragma once

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace tarvo::platform {

/// The success value of an operation that produces no value.
struct Nothing {
    friend bool operator==(const Nothing&, const Nothing&) = default;
};

/// A value or an error. The two types differ, so that `return value;` and `return error;` say which is meant.
/// Reading the side that is not held is a programming error (`std::bad_variant_access`); ask `ok()` first.
template <class Success, class Failure>
class [[nodiscard]] Result {
    static_assert(!std::is_same_v<Success, Failure>, "a value and an error of one type could not be told apart");

public:
    static Result success(Success value) { return Result(std::move(value)); }
    static Result failure(Failure error) { return Result(std::move(error)); }

    Result(Success value) : value_(std::move(value)), ok_(true) {}   // NOLINT: implicit, for `return value;`
    Result(Failure error) : error_(std::move(error)), ok_(false) {}  // NOLINT: implicit, for `return error;`

    Result(const Result& other) : ok_(other.ok_) { take(other); }
    Result(Result&& other) noexcept : ok_(other.ok_) { take(std::move(other)); }
    Result& operator=(const Result& other) { return *this = Result(other); }
    Result& operator=(Result&& other) noexcept {
        if (this == &other) return *this;
        drop();
        ok_ = other.ok_;
        take(std::move(other));
        return *this;
    }
    ~Result() { drop(); }

    bool ok() const { return ok_; }
    explicit operator bool() const { return ok(); }

    const Success& value() const& { return mustBe(true), value_; }
    Success& value() & { return mustBe(true), value_; }
    Success&& value() && { return mustBe(true), std::move(value_); }
    const Failure& error() const& { return mustBe(false), error_; }
    Failure&& error() && { return mustBe(false), std::move(error_); }

    const Success* operator->() const { return &value(); }
    const Success& operator*() const& { return value(); }
    Success&& operator*() && { return std::move(*this).value(); }

    /// The value; nullopt for an error.
    std::optional<Success> success() const { return ok() ? std::optional<Success>(value()) : std::nullopt; }
    /// The error; nullopt for a value.
    std::optional<Failure> failure() const { return ok() ? std::nullopt : std::optional<Failure>(error()); }

    /// The same failure, or `change(value)`.
    template <class F>
    auto map(F&& change) && -> Result<std::invoke_result_t<F, Success&&>, Failure> {
        using Mapped = Result<std::invoke_result_t<F, Success&&>, Failure>;
        return ok() ? Mapped::success(std::forward<F>(change)(std::move(*this).value()))
                    : Mapped::failure(std::move(*this).error());
    }

private:
    void mustBe(bool ok) const {
        if (ok_ != ok) throw std::bad_variant_access();
    }
    template <class Other>
    void take(Other&& other) {
        if (ok_)
            std::construct_at(&value_, std::forward<Other>(other).value_);
        else
            std::construct_at(&error_, std::forward<Other>(other).error_);
    }
    void drop() {
        if (ok_)
            std::destroy_at(&value_);
        else
            std::destroy_at(&error_);
    }

    // A std::variant would say the same, but every file has dozens of results, and its visits cost compilers seconds.
    union {
        Success value_;
        Failure error_;
    };
    bool ok_;
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::Nothing;
using platform::Result;
}  // namespace tarvo
