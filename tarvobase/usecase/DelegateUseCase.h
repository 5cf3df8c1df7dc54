#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/Object.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

/// Base of the use cases that answer a delegate. A question returns at once; the data manager is asked in the
/// background, and the delegate hears the answer on the main queue, unless use case or delegate are gone by then. Both
/// hops are here, so that no use case writes its own. Held by `shared_ptr`.
template <class Delegate>
class DelegateUseCase : public virtual platform::Object {
public:
    /// Set before the first question.
    std::weak_ptr<Delegate> delegate;

protected:
    /// The hop in: `work()` in the background. It does not hold the use case.
    template <class Work>
    void inBackground(Work work) {
        auto weak = platform::weakSelf(this);
        if (weak.expired())
            return platform::reportProgrammingError("a use case is called that no shared_ptr holds; it cannot answer");
        CommonUtils::performAsyncInBackground([weak = std::move(weak), work = std::move(work)]() mutable {
            if (!weak.expired()) work();
        });
    }
    /// The hop out: `tell(delegate)` on the main queue. The use case lives while `tell` runs.
    template <class Tell>
    void tellDelegate(Tell tell) {
        tellDelegateOf(platform::weakSelf(this), std::move(tell));
    }
    /// `work()` in the background, then `tell(delegate, result)` on the main queue. Neither holds the use case.
    template <class Work, class Tell>
    void answer(Work work, Tell tell) {
        inBackground([weak = platform::weakSelf(this), work = std::move(work), tell = std::move(tell)]() mutable {
            tellDelegateOf(weak,
                           [result = work(), tell = std::move(tell)](Delegate& delegate) { tell(delegate, result); });
        });
    }

private:
    template <class Tell>
    static void tellDelegateOf(std::weak_ptr<DelegateUseCase> weak, Tell tell) {
        CommonUtils::performAsyncInMain([weak = std::move(weak), tell = std::move(tell)] {
            auto self = weak.lock();
            auto listener = self ? self->delegate.lock() : nullptr;
            if (listener) std::invoke(tell, *listener);
        });
    }
};

}  // namespace tarvo
