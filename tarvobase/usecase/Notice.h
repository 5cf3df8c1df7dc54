#pragma once

#include <functional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/Value.h"

namespace tarvo {

/// A call of an operation of `Protocol` as a value, which can be carried to another queue, repeated on another object
/// and printed. `Kind` enumerates the operations under their names.
template <class Protocol_, class Kind_>
struct Notice {
    using Protocol = Protocol_;
    using Kind = Kind_;

    Kind kind;
    /// The arguments by the names of the operation's parameters, in their order.
    ValueMap arguments;
    std::function<void(Protocol&)> repeatOn;
};

/// Base of the classes that treat all operations of an interface alike. The relay of an interface lists its operations
/// once and turns each call into a notice; subclasses decide in `relay` what happens to the notices.
template <class Notice_>
class NoticeRelay : public virtual Notice_::Protocol {
public:
    using Notice = Notice_;

protected:
    /// Called on the thread of the notice.
    virtual void relay(const Notice& notice) = 0;

    template <class T>
    struct Argument {
        std::string_view name;
        T value;
    };
    template <class T>
    static Argument<T> argument(std::string_view name, T value) {
        return {name, std::move(value)};
    }

    template <class Operation, class... T>
    void relayCall(typename Notice::Kind kind, Operation operation, Argument<T>... arguments) {
        ValueMap shown;
        (shown.set(arguments.name, arguments.value), ...);
        relay({kind, std::move(shown), [operation, arguments...](typename Notice::Protocol& responder) {
                   std::invoke(operation, responder, arguments.value...);
               }});
    }
};

}  // namespace tarvo
