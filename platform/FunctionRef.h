#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace tarvo::platform {

template <class Signature>
class FunctionRef;

/// A reference to something callable, for callbacks that are called before the callee returns and cannot be kept.
/// It owns nothing; whoever needs the callback later takes a `std::function`.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
public:
    template <class F>
    requires(!std::is_same_v<std::remove_cvref_t<F>, FunctionRef> && std::is_invocable_r_v<Result, F&, Arguments...>)
        FunctionRef(F&& f)  // NOLINT: implicit, so that a lambda can be passed as it is
        : target_(const_cast<void*>(static_cast<const void*>(std::addressof(f)))),
          call_([](void* target, Arguments... arguments) -> Result {
              return (*static_cast<std::remove_reference_t<F>*>(target))(std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const { return call_(target_, std::forward<Arguments>(arguments)...); }

private:
    void* target_;
    Result (*call_)(void*, Arguments...);
};

}  // namespace tarvo::platform
