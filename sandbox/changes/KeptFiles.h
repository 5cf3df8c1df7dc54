#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <string>

#include "platform/Value.h"
#include "sandbox/Message.h"

namespace tarvo::sandbox {

/// Keeps the files that clients uploaded, by the id of the record that each made. They are lost when the server ends,
/// and the oldest are forgotten when all of them take more than 256 megabytes. A caller holds the server's lock.
class KeptFiles {
public:
    void keep(const std::string& id, UploadedFile file);
    /// Returns null for an unknown id. Valid until another file is kept.
    const UploadedFile* find(const std::string& id) const;
    /// Returns id, name and size of each file, in the order in which they came.
    ValueList all() const;

private:
    static constexpr std::size_t mostBytes = 256u << 20;

    std::map<std::string, UploadedFile> files_;
    std::deque<std::string> ids_;
    std::size_t bytes_ = 0;
};

}  // namespace tarvo::sandbox
