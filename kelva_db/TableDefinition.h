#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelva {

/// What happens to a row whose key is in the table already.
enum class OnConflict { none, replace, ignore };

/// The columns and keys of a table that is being created.
class TableDefinition {
public:
    /// The raw text becomes the declared type, except that `string` and `url` are declared as text and `data` as blob:
    /// under their own names SQLite would take them for numbers and turn the text "007" into 7.
    enum class ColumnType {
        int_,
        int8,
        int16,
        int32,
        int64,
        uint,
        uint8,
        uint16,
        uint32,
        uint64,
        bool_,
        float_,
        double_,
        character,
        string,
        date,
        data,
        url,
        integer,
        real,
        text,
        blob
    };
    static std::string_view rawText(ColumnType type);
    static std::optional<ColumnType> fromRawText(std::string_view text);

    void column(std::string_view name, ColumnType type);
    void primaryKey(std::vector<std::string> columns, OnConflict onConflict = OnConflict::none);
    void uniqueKey(std::vector<std::string> columns, OnConflict onConflict = OnConflict::none);

private:
    friend class Database;
    std::vector<std::string> pieces_;
};

}  // namespace kelva
