#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

const std::shared_ptr<DispatchQueue>& UsecaseQueue::queue() {
    static const auto queue = DispatchQueue::concurrent("com.nimbra.TarvoBase");
    return queue;
}

}  // namespace tarvo
