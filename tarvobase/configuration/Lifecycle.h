#pragma once

namespace tarvo {

/// Ends all work of the library: timers, network, queues and the thread pool, in this order. Requests under way
/// complete with a failure; queued changes stay in the database for the next start. It may be called twice, but not
/// from a work item of a queue, the main queue included.
void shutdown();

}  // namespace tarvo
