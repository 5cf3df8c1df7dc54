#include "tarvobase/value_objects/TagInDatabase.h"

namespace tarvo {

namespace {

const TagDBMapper tagMapper;
const TagRecordDBMapper tagRecordMapper;

Criteria equal(std::string_view column, const std::string& value) {
    return Criteria::equalTo(std::string(column), value);
}
Criteria in(std::string_view column, const std::vector<std::string>& values) {
    return Criteria::in(std::string(column), valueList(values));
}

/// All rows through the mapper; absent when one of them does not map.
template <class Mapper>
std::optional<std::vector<typename Mapper::MappedType>> mapped(const std::optional<Rows>& rows, const Mapper& mapper) {
    if (!rows) return std::nullopt;
    std::vector<typename Mapper::MappedType> values;
    values.reserve(rows->size());
    for (auto row : *rows) {
        auto value = mapper.getValue(row);
        if (!value) return std::nullopt;
        values.push_back(*std::move(value));
    }
    return values;
}

}  // namespace

TagPersistanceDelegate::Tags TagInDatabase::getTags(const std::string& moduleName) {
    return tagsWhere(equal(tagMapper.moduleName, moduleName));
}
void TagInDatabase::storeTags(const std::vector<Tag>& tags) { table().store(tagMapper.getDictionary(tags)); }
void TagInDatabase::removeTags(const std::string& tagId) { table().deleteObjects(equal(tagMapper.id, tagId)); }
TagPersistanceDelegate::Tags TagInDatabase::getTagsByTagIds(const std::vector<std::string>& tagIds) {
    return tagsWhere(in(tagMapper.id, tagIds));
}
void TagInDatabase::updateTag(const std::string& oldTagId, const std::string& newTagId) {
    table().update({{std::string(tagMapper.id), newTagId}}, equal(tagMapper.id, oldTagId));
}
TagPersistanceDelegate::Tags TagInDatabase::tagsWhere(const Criteria& criteria) const {
    return mapped(table().fetch(FetchQuery(table().tableName(), criteria)), tagMapper);
}

TagRecordsPersistanceDelegate::TagRecords TagRecordInDatabase::getTagRecordsByRecordId(const std::string& recordId) {
    return tagRecordsWhere(equal(tagRecordMapper.recordId, recordId));
}
TagRecordsPersistanceDelegate::TagRecords TagRecordInDatabase::getTagRecordsByTagId(const std::string& tagId) {
    return tagRecordsWhere(equal(tagRecordMapper.id, tagId));
}
void TagRecordInDatabase::storeTagRecords(const std::vector<Tag>& tags, const std::string& recordId) {
    std::vector<ValueMap> rows;
    for (auto& tag : tags) rows.push_back(tagRecordMapper.getDictionary(TagRecord{tag, recordId}));
    table().store(std::move(rows));
}
void TagRecordInDatabase::deleteTagRecords(const std::vector<std::string>& ids) {
    table().deleteObjects(in(tagRecordMapper.recordId, ids));
}
void TagRecordInDatabase::deleteTagRecordsByTagIds(const std::vector<std::string>& tagIds, const std::string& id) {
    table().deleteObjects(Criteria::and_({equal(tagRecordMapper.recordId, id), in(tagRecordMapper.id, tagIds)}));
}
void TagRecordInDatabase::updateTagRecord(const std::string& oldTagId, const std::string& newTagId,
                                          const std::string& id) {
    table().update({{std::string(tagRecordMapper.id), newTagId}},
                   Criteria::and_({equal(tagRecordMapper.recordId, id), equal(tagRecordMapper.id, oldTagId)}));
}
TagRecordsPersistanceDelegate::TagRecords TagRecordInDatabase::tagRecordsWhere(const Criteria& criteria) const {
    return mapped(table().fetch(FetchQuery(table().tableName(), criteria)), tagRecordMapper);
}

}  // namespace tarvo
