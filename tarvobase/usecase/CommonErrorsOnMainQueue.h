#pragma once

#include <functional>
#include <string>

#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

/// The end of the error chain in a use case: each notice reaches the next responder, the use case's delegate, on the
/// main queue. It ends quietly when the use case or the delegate is gone by then.
class CommonErrorsOnMainQueue : public virtual CommonErrorProtocolWithChaining {
public:
    void parsingError() override { pass(&CommonErrorProtocol::parsingError); }
    void networkResponseError() override { pass(&CommonErrorProtocol::networkResponseError); }
    void networkParamsError() override { pass(&CommonErrorProtocol::networkParamsError); }
    void networkIdentifierError() override { pass(&CommonErrorProtocol::networkIdentifierError); }
    void noAuthtoken(const std::string& brenuid) override { pass(&CommonErrorProtocol::noAuthtoken, brenuid); }
    void unableToGetMetadata(const std::string& moduleName, const std::string& crmColumnName) override {
        pass(&CommonErrorProtocol::unableToGetMetadata, moduleName, crmColumnName);
    }

private:
    template <class Notice, class... Arguments>
    void pass(Notice notice, Arguments... arguments) {
        CommonUtils::performAsyncInMain([weak = platform::weakSelf(this), notice, arguments...] {
            auto self = weak.lock();
            auto next = self ? self->nextCommonErrorProtocolResponder() : nullptr;
            if (next) std::invoke(notice, *next, arguments...);
        });
    }
};

}  // namespace tarvo
