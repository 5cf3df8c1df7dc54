#include "tarvobase/value_objects/Tag.h"

namespace tarvo {

namespace {

// All members are texts, which both forms write alike. A map is read as the plain form, where a number is no text; a
// row as the table form, where the server's column type may have made a number of one.
const auto tagForm = form<Tag, TagMapper>(member(&Tag::id, &TagMapper::id), member(&Tag::name, &TagMapper::name),
                                          member(&Tag::moduleName, &TagMapper::moduleName));

struct RecordId {
    std::string recordId;
};
const auto recordIdForm = form<RecordId, TagRecordMapper>(member(&RecordId::recordId, &TagRecordMapper::recordId));

TagMapper tagMapperOf(const TagRecordMapper& mapper) {
    TagMapper tags;
    tags.id = mapper.id;
    tags.name = mapper.name;
    tags.moduleName = mapper.moduleName;
    return tags;
}

template <class Source>
Result<TagRecord, ParsingError> tagRecordOf(const Source& source, const TagRecordMapper& mapper) {
    auto tag = tagMapperOf(mapper).getValue(source);
    if (!tag) return tag.error();
    constexpr auto kind = std::is_same_v<Source, Row> ? Form::table : Form::plain;
    auto record = strictly(recordIdForm, source, mapper, kind);
    if (!record) return record.error();
    return TagRecord{*std::move(tag), record->recordId};
}

}  // namespace

Result<Tag, ParsingError> TagMapper::getValue(const ValueMap& map) const {
    return strictly(tagForm, map, *this, Form::plain);
}
Result<Tag, ParsingError> TagMapper::getValue(const Row& row) const {
    return strictly(tagForm, row, *this, Form::table);
}
ValueMap TagMapper::getDictionary(const Tag& tag) const { return tagForm.toMap(tag, *this, Form::plain); }

Result<TagRecord, ParsingError> TagRecordMapper::getValue(const ValueMap& map) const { return tagRecordOf(map, *this); }
Result<TagRecord, ParsingError> TagRecordMapper::getValue(const Row& row) const { return tagRecordOf(row, *this); }
ValueMap TagRecordMapper::getDictionary(const TagRecord& tagRecord) const {
    auto map = tagMapperOf(*this).getDictionary(tagRecord.tag);
    map.set(recordId, tagRecord.recordId);
    return map;
}

}  // namespace tarvo
