#pragma once

#include <memory>
#include <utility>

#include "platform/Object.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

/// Base of the use cases that answer a delegate. A question returns at once; the data manager is asked in the
/// background, and the delegate hears the answer on the main queue, unless use case or delegate are gone by then.
/// Held by `shared_ptr`.
template <class Delegate>
class DelegateUseCase : public virtual platform::Object {
public:
    /// Set before the first question.
    std::weak_ptr<Delegate> delegate;

protected:
    /// `work()` in the background, then `tell(delegate, result)`. Neither holds the use case.
    template <class Work, class Tell>
    void answer(Work work, Tell tell) {
        CommonUtils::performAsyncInBackground(
            [weak = platform::weakSelf(this), work = std::move(work), tell = std::move(tell)]() mutable {
                if (weak.expired()) return;
                CommonUtils::performAsyncInMain([weak, result = work(), tell = std::move(tell)] {
                    auto self = weak.lock();
                    auto listener = self ? self->delegate.lock() : nullptr;
                    if (listener) tell(*listener, result);
                });
            });
    }
};

}  // namespace tarvo
