#include "kelva_db/internal/Sql.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "kelva_db/Database.h"
#include "platform/Text.h"

namespace kelva {

namespace {

bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool isWordStart(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80; }
bool isWordPart(unsigned char c) { return isWordStart(c) || isDigit(c) || c == '$'; }
bool isNumberPart(unsigned char c) { return isWordPart(c) || c == '.'; }
bool isBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

std::size_t SqlScanner::lengthWhile(std::size_t from, bool (*belongs)(unsigned char)) const {
    while (from < sql_.size() && belongs(static_cast<unsigned char>(sql_[from]))) ++from;
    return from;
}

std::size_t SqlScanner::lengthOfSpace() const {
    if (sql_.starts_with("--")) return std::min(sql_.find('\n'), sql_.size() - 1) + 1;
    if (sql_.starts_with("/*")) {
        auto end = sql_.find("*/", 2);
        return end == std::string_view::npos ? sql_.size() : end + 2;
    }
    return lengthWhile(0, isBlank);
}

std::size_t SqlScanner::lengthOfQuoted(char end) const {
    std::size_t at = 1;
    for (; at < sql_.size(); ++at) {
        if (sql_[at] != end) continue;
        bool doubled = end != ']' && at + 1 < sql_.size() && sql_[at + 1] == end;
        if (!doubled) return at + 1;
        ++at;
    }
    return sql_.size();
}

SqlToken SqlScanner::take(SqlToken::Kind kind, std::size_t length) {
    SqlToken token{kind, sql_.substr(0, length)};
    sql_.remove_prefix(length);
    return token;
}

SqlToken SqlScanner::next() {
    using Kind = SqlToken::Kind;
    if (sql_.empty()) return {Kind::end, {}};
    if (auto space = lengthOfSpace()) return take(Kind::space, space);
    auto first = static_cast<unsigned char>(sql_.front());
    switch (first) {
        case '\'':
            return take(Kind::string, lengthOfQuoted('\''));
        case '"':
        case '`':
            return take(Kind::quoted, lengthOfQuoted(sql_.front()));
        case '[':
            return take(Kind::quoted, lengthOfQuoted(']'));
        case '?': {
            auto length = lengthWhile(1, isDigit);
            return take(length == 1 ? Kind::placeholder : Kind::namedParameter, length);
        }
        case ':':
        case '@':
        case '$':
            return take(Kind::namedParameter, lengthWhile(1, isWordPart));
        default:
            break;
    }
    if (isDigit(first)) return take(Kind::number, lengthWhile(1, isNumberPart));
    if (isWordStart(first)) return take(Kind::word, lengthWhile(1, isWordPart));
    return take(Kind::punctuation, 1);
}

SqlToken SqlScanner::nextSignificant() {
    auto token = next();
    while (token.kind == SqlToken::Kind::space) token = next();
    return token;
}

bool isOnlySpaceAndSemicolons(std::string_view sql) {
    SqlScanner scanner(sql);
    auto token = scanner.nextSignificant();
    while (token.is(';')) token = scanner.nextSignificant();
    return token.kind == SqlToken::Kind::end;
}

namespace {

/// Number of placeholders of a list "(?, ?, ...)" that begins at the scanner, which is left after it; 0 when
/// there is none.
std::size_t placeholdersOfList(SqlScanner& scanner) {
    if (!scanner.nextSignificant().is('(')) return 0;
    for (std::size_t count = 1;; ++count) {
        if (scanner.nextSignificant().kind != SqlToken::Kind::placeholder) return 0;
        auto separator = scanner.nextSignificant();
        if (separator.is(')')) return count;
        if (!separator.is(',')) return 0;
    }
}

}  // namespace

LiftedLists liftLists(std::string_view sql) {
    LiftedLists lifted;
    SqlScanner scanner(sql);
    std::size_t parameters = 0;
    for (auto token = scanner.next(); token.kind != SqlToken::Kind::end; token = scanner.next()) {
        lifted.sql += token.text;
        if (token.kind == SqlToken::Kind::namedParameter) return {std::string(sql), {}};
        if (token.kind == SqlToken::Kind::placeholder) ++parameters;
        if (token.kind != SqlToken::Kind::word || !tarvo::text::equalsIgnoringAsciiCase(token.text, "in")) continue;
        auto ahead = scanner;
        auto count = placeholdersOfList(ahead);
        if (count == 0) continue;
        // The plus takes the affinity from the table's column: as in a list, that of the left side alone counts.
        lifted.sql +=
            " (SELECT +value FROM " + std::string(valuesTableName) + "(" + std::to_string(lifted.lists.size()) + "))";
        lifted.lists.push_back({parameters, count});
        parameters += count;
        scanner = ahead;
    }
    return lifted;
}

namespace {

// Words that SQLite does not take as a name.
constexpr std::array<std::string_view, 66> reservedWords = {
    "add",      "all",     "alter",  "and",         "as",         "autoincrement", "between",    "case",
    "check",    "collate", "commit", "constraint",  "create",     "default",       "deferrable", "delete",
    "distinct", "drop",    "else",   "escape",      "except",     "exists",        "foreign",    "from",
    "group",    "having",  "if",     "in",          "index",      "insert",        "intersect",  "into",
    "is",       "isnull",  "join",   "limit",       "not",        "nothing",       "notnull",    "null",
    "on",       "or",      "order",  "primary",     "references", "returning",     "select",     "set",
    "table",    "then",    "to",     "transaction", "union",      "unique",        "update",     "using",
    "values",   "when",    "where",  "left",        "right",      "inner",         "outer",      "cross",
    "natural",  "full"};

bool isPlainIdentifier(std::string_view name) {
    if (name.empty() || !isWordStart(static_cast<unsigned char>(name.front()))) return false;
    auto part = [](unsigned char c) { return isWordStart(c) || isDigit(c); };
    if (!std::all_of(name.begin(), name.end(), part)) return false;
    auto lower = tarvo::text::asciiLowercase(name);
    return std::find(reservedWords.begin(), reservedWords.end(), lower) == reservedWords.end();
}

std::string enclosed(std::string_view text, char quote) {
    std::string out(1, quote);
    for (char c : text) {
        if (c == quote) out += c;
        out += c;
    }
    return out += quote;
}

std::string realLiteral(double value) {
    // SQLite has no word for infinity, and stores what is not a number as NULL.
    if (std::isnan(value)) return "NULL";
    if (std::isinf(value)) return value > 0 ? "9e999" : "-9e999";
    char buffer[32];
    std::string text(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string textLiteral(const std::string& value) {
    if (value.find('\0') == std::string::npos) return enclosed(value, '\'');
    return "CAST(x'" + tarvo::text::hex(value) + "' AS TEXT)";
}

}  // namespace

std::string quotedColumn(std::string_view name) {
    return isPlainIdentifier(name) ? std::string(name) : enclosed(name, '"');
}

std::string quotedName(std::string_view name) {
    auto dot = name.find('.');
    if (dot == std::string_view::npos || !isPlainIdentifier(name.substr(0, dot))) return quotedColumn(name);
    return std::string(name.substr(0, dot + 1)) + quotedColumn(name.substr(dot + 1));
}

std::string literal(const Value& value) {
    auto stored = databaseValue(value);
    if (!stored) throw DatabaseError(FailureKind::misuse, 0, "a value has no form that a statement can hold");
    if (auto integer = stored->asInteger()) {
        // The smallest integer cannot be written as a sign and a number.
        if (*integer == std::numeric_limits<std::int64_t>::min()) return "(-9223372036854775807 - 1)";
        return std::to_string(*integer);
    }
    if (auto real = stored->asReal()) return realLiteral(*real);
    if (auto text = stored->asText()) return textLiteral(*text);
    if (auto blob = stored->asBlob()) return "x'" + tarvo::text::hex(blob->bytes) + "'";
    return "NULL";
}

}  // namespace kelva
