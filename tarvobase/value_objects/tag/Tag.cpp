#include "tarvobase/value_objects/tag/Tag.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

namespace {

// All members are texts, which both forms write alike. A map is read as the plain form, where a number is not a text. A
// row is read as the table form, since the server's column type may have turned a text into a number.
Form formOf(const ValueMap&) { return Form::plain; }
Form formOf(const Row&) { return Form::table; }

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
    auto record = strictly<TagRecord>(source, mapper, formOf(source));
    if (!record) return record.error();
    return TagRecord{*std::move(tag), record->recordId};
}

}  // namespace

Result<Tag, ParsingError> TagMapper::getValue(const ValueMap& map) const {
    return strictly<Tag>(map, *this, formOf(map));
}
Result<Tag, ParsingError> TagMapper::getValue(const Row& row) const { return strictly<Tag>(row, *this, formOf(row)); }
ValueMap TagMapper::getDictionary(const Tag& tag) const { return StoredForm<Tag>::toMap(tag, *this); }

Result<TagRecord, ParsingError> TagRecordMapper::getValue(const ValueMap& map) const { return tagRecordOf(map, *this); }
Result<TagRecord, ParsingError> TagRecordMapper::getValue(const Row& row) const { return tagRecordOf(row, *this); }
ValueMap TagRecordMapper::getDictionary(const TagRecord& tagRecord) const {
    auto map = tagMapperOf(*this).getDictionary(tagRecord.tag);
    map.set(recordId, tagRecord.recordId);
    return map;
}

}  // namespace tarvo
