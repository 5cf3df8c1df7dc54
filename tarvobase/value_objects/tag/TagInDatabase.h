#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/tag/TagPersistanceDelegate.h"

namespace tarvo {

/// The table of tags.
class TagInDatabase final : public StaticDatabasePersistanceClass<TagDBMapper>, public TagPersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    Tags getTags(const std::string& moduleName) override;
    bool storeTags(const std::vector<Tag>& tags) override;
    bool removeTags(const std::string& tagId) override;
    Tags getTagsByTagIds(const std::vector<std::string>& tagIds) override;
    bool updateTag(const std::string& oldTagId, const std::string& newTagId) override;

private:
    Tags tagsWhere(const Criteria& criteria) const;
};

/// The table of the records' tags.
class TagRecordInDatabase final : public StaticDatabasePersistanceClass<TagRecordDBMapper>,
                                  public TagRecordsPersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    TagRecords getTagRecordsByRecordId(const std::string& recordId) override;
    TagRecords getTagRecordsByTagId(const std::string& tagId) override;
    bool storeTagRecords(const std::vector<Tag>& tags, const std::string& recordId) override;
    bool deleteTagRecords(const std::vector<std::string>& ids) override;
    bool deleteTagRecordsByTagIds(const std::vector<std::string>& tagIds, const std::string& id) override;
    bool updateTagRecord(const std::string& oldTagId, const std::string& newTagId, const std::string& id) override;

private:
    TagRecords tagRecordsWhere(const Criteria& criteria) const;
};

}  // namespace tarvo
