#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bridge/Call.h"
#include "bridge/forms/JsonForm.h"

namespace tarvo::bridge {

/// The calls by name. Each operation is registered in one line; request, response and error are described by
/// `fields()`.
class Registry {
public:
    /// Starts a call, on the main queue, or returns why its request cannot be read.
    using Start = std::function<Reading(const CallPtr& call)>;

    void add(std::string name, Start start) { calls_.insert_or_assign(std::move(name), std::move(start)); }
    const Start* find(std::string_view name) const;
    std::vector<std::string> names() const;

    /// Registers an operation over a described request: `start(request, call)`.
    template <Described Request, class F>
    void addOperation(std::string name, F start) {
        add(std::move(name), [start = std::move(start)](const CallPtr& call) -> Reading {
            Request request;
            if (auto misread = fromJson<Request>(call->request(), request)) return misread;
            start(std::move(request), call);
            return {};
        });
    }

    /// Registers a frame use case, whose `UC::Request` is described and default-constructible. Each call gets an object
    /// of its own, from `make`, and a line per callback.
    template <class UC>
    void addUsecase(
        std::string name, std::function<std::shared_ptr<UC>()> make = [] { return std::make_shared<UC>(); }) {
        addOperation<typename UC::Request>(std::move(name),
                                           [make = std::move(make)](typename UC::Request request, const CallPtr& call) {
                                               auto usecase = make();
                                               call->keepUntilEnd(usecase);
                                               usecase->execute(std::move(request), callbackOf<UC>(call));
                                           });
    }

    /// Makes callbacks of a use case that write lines of a call.
    template <class UC>
    static typename UC::Callback callbackOf(const CallPtr& call) {
        using Response = typename UC::Response;
        using Failure = typename UC::Failure;
        return {
            .onSuccess = [call](const Response& response) { call->event("onSuccess", "response", toJson(response)); },
            .onError = [call](const Failure& failure) { call->event("onError", "error", toJson(failure)); },
            .didComplete =
                [call](const Response* response, const Failure* failure) {
                    if (response)
                        call->event("didComplete", "response", toJson(*response));
                    else
                        call->event("didComplete", "error", toJson(*failure));
                }};
    }

private:
    std::map<std::string, Start, std::less<>> calls_;
};

}  // namespace tarvo::bridge
