#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

/// The tags of a record as one of its values. No statement binds it, because the record's table stores only the number
/// of tags.
class TagList final : public ValueObject {
public:
    explicit TagList(std::vector<Tag> tags) : tags_(std::move(tags)) {}
    static Value value(std::vector<Tag> tags) {
        return std::shared_ptr<const ValueObject>(std::make_shared<const TagList>(std::move(tags)));
    }

    const std::vector<Tag>& tags() const { return tags_; }
    bool equals(const ValueObject& other) const override {
        auto list = dynamic_cast<const TagList*>(&other);
        return list && list->tags_ == tags_;
    }
    std::string_view typeName() const override { return "TagList"; }

private:
    std::vector<Tag> tags_;
};

}  // namespace tarvo
