#include "kelva_db/TableDefinition.h"

#include <array>

#include "kelva_db/internal/Sql.h"
#include "platform/Text.h"

namespace kelva {

namespace {

constexpr std::array<std::string_view, 22> rawTexts = {
    "int",   "int8",   "int16",     "int32",  "int64", "uint", "uint8", "uint16",  "uint32", "uint64", "bool",
    "float", "double", "character", "string", "date",  "data", "url",   "integer", "real",   "text",   "blob"};

/// The type as the statement names it. SQLite knows no strings, links and data and would give such a column numeric
/// affinity, which turns the text "007" into the number 7.
std::string_view declaredType(TableDefinition::ColumnType type) {
    using Type = TableDefinition::ColumnType;
    switch (type) {
        case Type::string:
        case Type::url:
            return TableDefinition::rawText(Type::text);
        case Type::data:
            return TableDefinition::rawText(Type::blob);
        default:
            return TableDefinition::rawText(type);
    }
}

std::string keyPiece(std::string_view words, const std::vector<std::string>& columns, OnConflict onConflict) {
    std::vector<std::string> names;
    for (auto& column : columns) names.push_back(quotedColumn(column));
    auto piece = std::string(words) + " (" + tarvo::text::join(names, ", ") + ")";
    if (onConflict == OnConflict::replace) piece += " ON CONFLICT REPLACE";
    if (onConflict == OnConflict::ignore) piece += " ON CONFLICT IGNORE";
    return piece;
}

}  // namespace

std::string_view TableDefinition::rawText(ColumnType type) { return rawTexts[static_cast<std::size_t>(type)]; }

std::optional<TableDefinition::ColumnType> TableDefinition::fromRawText(std::string_view text) {
    for (std::size_t i = 0; i < rawTexts.size(); ++i)
        if (rawTexts[i] == text) return static_cast<ColumnType>(i);
    return std::nullopt;
}

void TableDefinition::column(std::string_view name, ColumnType type) {
    pieces_.push_back(quotedColumn(name) + " " + std::string(declaredType(type)));
}

void TableDefinition::primaryKey(std::vector<std::string> columns, OnConflict onConflict) {
    pieces_.push_back(keyPiece("PRIMARY KEY", columns, onConflict));
}

void TableDefinition::uniqueKey(std::vector<std::string> columns, OnConflict onConflict) {
    pieces_.push_back(keyPiece("UNIQUE", columns, onConflict));
}

}  // namespace kelva
