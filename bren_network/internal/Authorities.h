#pragma once

#include <memory>
#include <string>

#include "platform/ThreadSafety.h"

namespace bren {

/// The certificates that servers are judged by: the system's, and those of one further file. Safe from any thread.
class Authorities {
public:
    /// Trusts the certificates of a PEM file too; the empty path takes the former file back. Returns false, and
    /// changes nothing, if the file cannot be read or holds no certificate.
    bool setFurtherFile(const std::string& path);

    /// All certificates in one PEM text, or null if the system's alone count: the client then reads those by
    /// itself and keeps them parsed. Never changes once handed out.
    std::shared_ptr<const std::string> combined() const;

private:
    mutable tarvo::platform::Mutex mutex_;
    std::shared_ptr<const std::string> combined_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace bren
