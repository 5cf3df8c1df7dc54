#pragma once

#include <functional>
#include <string>

#include "tarvobase/storage/Mapper.h"

namespace tarvo {

struct Tag;
struct TagRecord;

struct TagMapper : Mapper<TagMapper, Tag> {
    std::string_view tableName = of("Tags_Info");
    std::string_view id = of("id", "tag_id");
    std::string_view name = of("name", "tag_name");
    std::string_view moduleName = of("moduleName", "module_name");

    using Mapper::getDictionary;
    using Mapper::getValue;
    Result<Tag, ParsingError> getValue(const ValueMap& map) const;
    Result<Tag, ParsingError> getValue(const Row& row) const;
    ValueMap getDictionary(const Tag& tag) const;
};
struct TagDBMapper : TableTwin<TagMapper> {};

struct TagRecordMapper : Mapper<TagRecordMapper, TagRecord> {
    std::string_view tableName = of("Tags_Records");
    std::string_view id = of("id", "tag_id");
    std::string_view recordId = of("recordId", "record_id");
    std::string_view name = of("name", "tag_name");
    std::string_view moduleName = of("moduleName", "module_name");

    using Mapper::getDictionary;
    using Mapper::getValue;
    Result<TagRecord, ParsingError> getValue(const ValueMap& map) const;
    Result<TagRecord, ParsingError> getValue(const Row& row) const;
    ValueMap getDictionary(const TagRecord& tagRecord) const;
};
struct TagRecordDBMapper : TableTwin<TagRecordMapper> {};

/// A label of a module. `id` is the server's, or a temporary one until the server has given its own.
struct Tag {
    std::string id;
    std::string name;
    std::string moduleName;

    static constexpr auto fields() {
        return describe(field("id", &Tag::id, &TagMapper::id), field("name", &Tag::name, &TagMapper::name),
                        field("moduleName", &Tag::moduleName, &TagMapper::moduleName));
    }
    friend bool operator==(const Tag&, const Tag&) = default;
};

/// Says that a record has a tag.
struct TagRecord {
    Tag tag;
    std::string recordId;

    static constexpr auto fields() {
        return describe(field("tag", &TagRecord::tag),
                        field("recordId", &TagRecord::recordId, &TagRecordMapper::recordId));
    }
    friend bool operator==(const TagRecord&, const TagRecord&) = default;
};

static_assert(MapperType<TagMapper> && MapperType<TagRecordDBMapper>);

}  // namespace tarvo

template <>
struct std::hash<tarvo::Tag> {
    std::size_t operator()(const tarvo::Tag& tag) const noexcept {
        auto part = [](const std::string& text) { return std::hash<std::string>()(text); };
        return part(tag.id) * 31 * 31 + part(tag.name) * 31 + part(tag.moduleName);
    }
};
