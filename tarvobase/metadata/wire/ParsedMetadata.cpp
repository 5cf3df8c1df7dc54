#include "tarvobase/metadata/wire/ParsedMetadata.h"

namespace tarvo {

namespace {

/// Reads a required key. The whole value fails without it.
void require(InfoReader& reader, std::string_view key, std::string& into) {
    std::optional<std::string> text;
    reader.read(key, text);
    if (text)
        into = *std::move(text);
    else
        reader.fail();
}

template <class T, class Into>
void readOrKeep(InfoReader& reader, std::string_view key, Into& into) {
    std::optional<T> value;
    reader.read(key, value);
    if (value) into = *std::move(value);
}

}  // namespace

void InfoTable::readFrom(InfoReader& reader) {
    require(reader, "module", moduleName);
    require(reader, "query", table);
    reader.read("customViewTable", cvTable);
    reader.read("relatedListTable", rlTable);
    reader.read("lookupRecordsTable", lookupTable);
}

void ParsedPermissionInfo::readFrom(InfoReader& reader) {
    require(reader, "module", moduleName);
    readOrKeep<std::uint64_t>(reader, "servertime", serverTime);
    reader.read("responsetime", responseTime);
    reader.read("nodata", nodata);
}

void ParsedMetadataInfo::readFrom(InfoReader& reader) {
    require(reader, "module", moduleName);
    readOrKeep<std::uint64_t>(reader, "servertime", serverTime);
    readOrKeep<std::uint64_t>(reader, "responsetime", responseTime);
    readOrKeep<bool>(reader, "nodata", nodata);
    std::optional<ValueList> tables;
    reader.read("tables", tables);
    if (!tables) return;
    tableList.emplace();
    for (auto& entry : *tables) {
        auto map = entry.asMap();
        auto table = map ? decodeInfo<InfoTable>(*map) : ParserError(ParserError::Case::typeConversionFailed);
        if (!table) return reader.fail();
        tableList->push_back(*std::move(table));
    }
}

}  // namespace tarvo
