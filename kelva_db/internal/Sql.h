#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelva {

/// A piece of SQL text. `space` covers blanks and comments.
struct SqlToken {
    enum class Kind { space, word, quoted, string, number, placeholder, namedParameter, punctuation, end };
    Kind kind;
    std::string_view text;

    bool is(char punctuation) const { return kind == Kind::punctuation && text.front() == punctuation; }
};

/// Cuts SQL into tokens as SQLite does. Text that is not SQL still comes to an end.
class SqlScanner {
public:
    explicit SqlScanner(std::string_view sql) : sql_(sql) {}
    SqlToken next();
    /// The next token that is not a space.
    SqlToken nextSignificant();

private:
    std::size_t lengthOfSpace() const;
    std::size_t lengthOfQuoted(char end) const;
    std::size_t lengthWhile(std::size_t from, bool (*belongs)(unsigned char)) const;
    SqlToken take(SqlToken::Kind kind, std::size_t length);

    std::string_view sql_;
};

/// Whether nothing is left that SQLite would run.
bool isOnlySpaceAndSemicolons(std::string_view sql);

/// A statement whose lists of placeholders, "IN (?,?,...)", have become lookups in a table of values, so that it
/// stays below SQLite's limit of parameters.
struct LiftedLists {
    struct List {
        std::size_t firstParameter;
        std::size_t count;
    };
    std::string sql;
    std::vector<List> lists;
};

/// Lifts every list of plain placeholders. A text with numbered or named parameters stays as it is, since their order
/// is not the order of the values.
LiftedLists liftLists(std::string_view sql);

/// The name of the table of values that lifted statements read; see `ListTables`.
inline constexpr const char* valuesTableName = "kelva_values";

/// One component of a name: a plain identifier that is not a keyword as it is, any other in double quotes.
std::string quotedColumn(std::string_view name);

}  // namespace kelva
