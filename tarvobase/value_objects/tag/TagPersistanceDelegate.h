#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

/// The store of tags. A read returns nullopt if the store or one of the stored tags cannot be read. Writes return
/// whether they were stored. Any thread may use it.
class TagPersistanceDelegate : public virtual platform::Object {
public:
    using Tags = std::optional<std::vector<Tag>>;

    virtual Tags getTags(const std::string& moduleName) = 0;
    /// Stores the tags. A tag replaces the stored one with the same id.
    virtual bool storeTags(const std::vector<Tag>& tags) = 0;
    virtual bool removeTags(const std::string& tagId) = 0;
    virtual Tags getTagsByTagIds(const std::vector<std::string>& tagIds) = 0;
    /// Replaces a tag's temporary id with the server's.
    virtual bool updateTag(const std::string& oldTagId, const std::string& newTagId) = 0;
};

/// The store that links records and tags. Reads behave as above.
class TagRecordsPersistanceDelegate : public virtual platform::Object {
public:
    using TagRecords = std::optional<std::vector<TagRecord>>;

    virtual TagRecords getTagRecordsByRecordId(const std::string& recordId) = 0;
    virtual TagRecords getTagRecordsByTagId(const std::string& tagId) = 0;
    virtual bool storeTagRecords(const std::vector<Tag>& tags, const std::string& recordId) = 0;
    /// Removes all tags of these records.
    virtual bool deleteTagRecords(const std::vector<std::string>& ids) = 0;
    /// Removes these tags of one record.
    virtual bool deleteTagRecordsByTagIds(const std::vector<std::string>& tagIds, const std::string& id) = 0;
    virtual bool updateTagRecord(const std::string& oldTagId, const std::string& newTagId, const std::string& id) = 0;
};

}  // namespace tarvo
