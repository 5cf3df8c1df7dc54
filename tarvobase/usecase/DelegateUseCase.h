#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/Object.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

/// Base of the use cases that answer a delegate. Their operations return at once. The work runs in the background, and
/// the delegate is notified on the main queue, unless the use case or the delegate no longer exists then. Both changes
/// of queue are here, so that no use case writes its own. Use cases are held by `shared_ptr`, and each belongs to the
/// `Scope` in which it was made.
template <class Delegate>
class DelegateUseCase : public virtual platform::Object {
public:
    /// Set it before the first call.
    std::weak_ptr<Delegate> delegate;

protected:
    /// Runs `work()` in the background. It does not keep the use case alive.
    template <class Work>
    void inBackground(Work work) {
        auto weak = platform::weakSelf(this);
        if (weak.expired())
            return platform::reportProgrammingError("a use case is called that no shared_ptr holds; it cannot answer");
        CommonUtils::performAsyncInBackground([weak = std::move(weak), work = std::move(work)]() mutable {
            if (!weak.expired()) work();
        });
    }
    /// Runs `notify(delegate)` on the main queue. The use case lives while `notify` runs.
    template <class Notify>
    void notifyDelegate(Notify notify) {
        notifyDelegateOf(platform::weakSelf(this), std::move(notify));
    }
    /// Runs `work()` in the background, then `notify(delegate, result)` on the main queue. Neither keeps the use case
    /// alive.
    template <class Work, class Notify>
    void answer(Work work, Notify notify) {
        inBackground([weak = platform::weakSelf(this), work = std::move(work), notify = std::move(notify)]() mutable {
            notifyDelegateOf(
                weak, [result = work(), notify = std::move(notify)](Delegate& delegate) { notify(delegate, result); });
        });
    }

private:
    template <class Notify>
    static void notifyDelegateOf(std::weak_ptr<DelegateUseCase> weak, Notify notify) {
        CommonUtils::performAsyncInMain([weak = std::move(weak), notify = std::move(notify)] {
            auto self = weak.lock();
            auto listener = self ? self->delegate.lock() : nullptr;
            if (listener) std::invoke(notify, *listener);
        });
    }
};

}  // namespace tarvo
