#pragma once

#include <memory>
#include <string>

#include "platform/DispatchQueue.h"

namespace tarvo {

/// Trusts the certificates in a file in PEM form besides those of the system, for requests that are sent afterwards.
/// The empty text removes them. Returns false and changes nothing if no certificate can be read from the file.
[[nodiscard]] bool trustFurtherAuthority(const std::string& file);

/// Returns the serial queue on which the answers of all requests arrive, one at a time.
const std::shared_ptr<DispatchQueue>& networkQueue();

/// Returns the number of requests that the library has made in this process. It may be called from any thread.
int requestCount();

}  // namespace tarvo
