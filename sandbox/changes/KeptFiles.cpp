#include "sandbox/changes/KeptFiles.h"

namespace tarvo::sandbox {

void KeptFiles::keep(const std::string& id, UploadedFile file) {
    bytes_ += file.content.size();
    ids_.push_back(id);
    files_.emplace(id, std::move(file));
    while (bytes_ > mostBytes && ids_.size() > 1) {
        auto oldest = files_.extract(ids_.front());
        bytes_ -= oldest.mapped().content.size();
        ids_.pop_front();
    }
}

const UploadedFile* KeptFiles::find(const std::string& id) const {
    auto found = files_.find(id);
    return found == files_.end() ? nullptr : &found->second;
}

ValueList KeptFiles::all() const {
    ValueList list;
    for (const auto& id : ids_) {
        const auto& file = files_.at(id);
        list.push_back(ValueMap{{"id", id}, {"name", file.name}, {"size", file.content.size()}});
    }
    return list;
}

}  // namespace tarvo::sandbox
