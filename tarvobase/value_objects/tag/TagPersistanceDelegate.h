#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

/// The store of tags. A read is absent when there is no answer, or when a stored tag cannot be read. From any thread.
class TagPersistanceDelegate : public virtual platform::Object {
public:
    using Tags = std::optional<std::vector<Tag>>;

    virtual Tags getTags(const std::string& moduleName) = 0;
    /// A tag with an id that is stored already replaces it.
    virtual void storeTags(const std::vector<Tag>& tags) = 0;
    virtual void removeTags(const std::string& tagId) = 0;
    virtual Tags getTagsByTagIds(const std::vector<std::string>& tagIds) = 0;
    /// When a temporary tag gets the server's id.
    virtual void updateTag(const std::string& oldTagId, const std::string& newTagId) = 0;
};

/// The store of which record carries which tags. Reads as above.
class TagRecordsPersistanceDelegate : public virtual platform::Object {
public:
    using TagRecords = std::optional<std::vector<TagRecord>>;

    virtual TagRecords getTagRecordsByRecordId(const std::string& recordId) = 0;
    virtual TagRecords getTagRecordsByTagId(const std::string& tagId) = 0;
    virtual void storeTagRecords(const std::vector<Tag>& tags, const std::string& recordId) = 0;
    /// All tags of these records.
    virtual void deleteTagRecords(const std::vector<std::string>& ids) = 0;
    /// These tags of one record.
    virtual void deleteTagRecordsByTagIds(const std::vector<std::string>& tagIds, const std::string& id) = 0;
    virtual void updateTagRecord(const std::string& oldTagId, const std::string& newTagId, const std::string& id) = 0;
};

}  // namespace tarvo
