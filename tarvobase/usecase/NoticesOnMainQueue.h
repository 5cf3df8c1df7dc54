#pragma once

#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

/// The end of an error chain in a use case. `Chaining` is one of the classes `...WithChaining`. Each notice reaches the
/// next responder, which is the use case's delegate, on the main queue. It is dropped if the use case or the delegate
/// no longer exists then.
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
using DownloadRecordsErrorsOnMainQueue = NoticesOnMainQueue<DownloadRecordsErrorProtocolWithChaining>;
using GetRecordsErrorsOnMainQueue = NoticesOnMainQueue<GetRecordsErrorProtocolWithChaining>;

}  // namespace tarvo
