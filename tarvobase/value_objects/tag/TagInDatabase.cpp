#include "tarvobase/value_objects/tag/TagInDatabase.h"

namespace tarvo {

namespace {

const TagDBMapper tagMapper;
const TagRecordDBMapper tagRecordMapper;

}  // namespace

TagPersistanceDelegate::Tags TagInDatabase::getTags(const std::string& moduleName) {
    return tagsWhere(columnIs(tagMapper.moduleName, moduleName));
}
bool TagInDatabase::storeTags(const std::vector<Tag>& tags) { return table().store(tagMapper.getDictionary(tags)); }
bool TagInDatabase::removeTags(const std::string& tagId) {
    return table().deleteObjects(columnIs(tagMapper.id, tagId));
}
TagPersistanceDelegate::Tags TagInDatabase::getTagsByTagIds(const std::vector<std::string>& tagIds) {
    return tagsWhere(columnIn(tagMapper.id, tagIds));
}
bool TagInDatabase::updateTag(const std::string& oldTagId, const std::string& newTagId) {
    return table().update({{std::string(tagMapper.id), newTagId}}, columnIs(tagMapper.id, oldTagId));
}
TagPersistanceDelegate::Tags TagInDatabase::tagsWhere(const Criteria& criteria) const {
    return table().allOrNone(table().fetch(FetchQuery(table().tableName(), criteria)),
                             [](const Row& row) { return tagMapper.getValue(row); });
}

TagRecordsPersistanceDelegate::TagRecords TagRecordInDatabase::getTagRecordsByRecordId(const std::string& recordId) {
    return tagRecordsWhere(columnIs(tagRecordMapper.recordId, recordId));
}
TagRecordsPersistanceDelegate::TagRecords TagRecordInDatabase::getTagRecordsByTagId(const std::string& tagId) {
    return tagRecordsWhere(columnIs(tagRecordMapper.id, tagId));
}
bool TagRecordInDatabase::storeTagRecords(const std::vector<Tag>& tags, const std::string& recordId) {
    std::vector<ValueMap> rows;
    for (auto& tag : tags) rows.push_back(tagRecordMapper.getDictionary(TagRecord{tag, recordId}));
    return table().store(std::move(rows));
}
bool TagRecordInDatabase::deleteTagRecords(const std::vector<std::string>& ids) {
    return table().deleteObjects(columnIn(tagRecordMapper.recordId, ids));
}
bool TagRecordInDatabase::deleteTagRecordsByTagIds(const std::vector<std::string>& tagIds, const std::string& id) {
    return table().deleteObjects(
        Criteria::and_({columnIs(tagRecordMapper.recordId, id), columnIn(tagRecordMapper.id, tagIds)}));
}
bool TagRecordInDatabase::updateTagRecord(const std::string& oldTagId, const std::string& newTagId,
                                          const std::string& id) {
    return table().update(
        {{std::string(tagRecordMapper.id), newTagId}},
        Criteria::and_({columnIs(tagRecordMapper.recordId, id), columnIs(tagRecordMapper.id, oldTagId)}));
}
TagRecordsPersistanceDelegate::TagRecords TagRecordInDatabase::tagRecordsWhere(const Criteria& criteria) const {
    return table().allOrNone(table().fetch(FetchQuery(table().tableName(), criteria)),
                             [](const Row& row) { return tagRecordMapper.getValue(row); });
}

}  // namespace tarvo
