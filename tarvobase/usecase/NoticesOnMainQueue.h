#pragma once

#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

/// The end of an error chain in a use case, `Chaining` being one of the classes `...WithChaining`: each notice reaches
/// the next responder, the use case's delegate, on the main queue. It ends quietly when the use case or the delegate is
/// gone by then.
template <class Chaining>
class NoticesOnMainQueue : public virtual Chaining {
protected:
    void relay(const typename Chaining::Notice& notice) override {
        CommonUtils::performAsyncInMain([weak = platform::weakSelf(this), notice] {
            if (auto self = weak.lock()) self->Chaining::relay(notice);
        });
    }
};

using CommonErrorsOnMainQueue = NoticesOnMainQueue<CommonErrorProtocolWithChaining>;
using GetRecordsErrorsOnMainQueue = NoticesOnMainQueue<GetRecordsErrorProtocolWithChaining>;

}  // namespace tarvo
