#pragma once

#include <memory>
#include <string>

#include "platform/DispatchQueue.h"

namespace tarvo {

/// A file of certificates in PEM form that servers are judged by beside the system's; the empty text takes it back.
/// Counts for requests given afterwards. False, and nothing changes, when no certificate can be read from it.
[[nodiscard]] bool trustFurtherAuthority(const std::string& file);

/// The serial queue on which the answers of all requests arrive, one at a time.
const std::shared_ptr<DispatchQueue>& networkQueue();

/// How many requests the library has made in this process. From any thread.
int requestCount();

}  // namespace tarvo
