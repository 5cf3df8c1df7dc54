#include "tarvobase/records/sql/CustomViewQueryFormation.h"

#include <charconv>
#include <optional>
#include <vector>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/configuration/Variant.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/CustomViewComparator.h"
#include "tarvobase/records/sql/CustomViewOfflineQueryParser.h"
#include "tarvobase/records/sql/SqlConditions.h"
#include "tarvobase/utils/Util.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

namespace {

using Error = CustomViewQueryError;

// SQLite accepts statements of a million bytes. The rest is left for the statement around the condition.
constexpr std::size_t maxCondition = 900000;
constexpr std::string_view convertedColumn = "CONVERTED";

/// The field and the value that fill a pair of placeholders.
struct Pair {
    const FieldMetadata* field = nullptr;
    std::string column;
    std::string value;
};

std::string_view separatorOfPieces() {
    // The pieces of the server's own templates are joined with commas; those inside a piece are encoded.
    if (variant::hasServerCriteria()) return ",";
    return CustomViewOfflineQuery::replaceSeparator;
}

/// Returns names and values in turn. A value may be empty. A name may not, so an empty piece in its place is dropped.
std::vector<std::string> piecesOf(const std::string& replaceInfo) {
    std::vector<std::string> pieces;
    auto separator = separatorOfPieces();
    for (auto& piece : text::split(replaceInfo, separator))
        if (!piece.empty() || pieces.size() % 2 == 1)
            pieces.push_back(separator == "," ? withDecodedCommas(piece) : std::move(piece));
    return pieces;
}

std::string valueFor(const FieldMetadata& field, std::string value) {
    if (field.columnCRMName != convertedColumn) return value;
    return value == "0" ? "false" : value == "1" ? "true" : value;
}

Result<std::vector<Pair>, Error> pairsOf(const std::vector<std::string>& pieces, const FieldList& fieldList) {
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < pieces.size(); i += 2) {
        auto field = fieldList.getFieldByApiName(pieces[i]);
        if (!field) return Error::metadataNotFound(pieces[i]);
        auto value = i + 1 < pieces.size() ? pieces[i + 1] : "";
        pairs.push_back({field, kelva::quotedName(fieldList.identifierOf(*field)), valueFor(*field, value)});
    }
    return pairs;
}

bool isNumber(const std::string& text) { return text::toReal(text).has_value(); }

/// Returns whether a column holds numbers, possibly as texts. Dates count, because a date that the server left empty is
/// an empty text, which would compare greater than all seconds.
bool isNumberField(const FieldMetadata& field) {
    return isNumeric(field.fieldType) || field.fieldType == FieldDataType::bigInt || isDate(field.fieldType);
}

std::vector<std::string> itemsOfList(std::string_view text) {
    std::vector<std::string> items;
    for (auto& item : text::split(text, ",")) items.push_back(withDecodedCommas(item));
    return items;
}

std::string list(const std::vector<std::string>& items) {
    std::vector<std::string> literals;
    for (auto& item : items) literals.push_back(kelva::literal(item));
    return "(" + text::join(literals, ", ") + ")";
}

/// The moments that a date in criteria stands for: from the first one to before the end, in seconds since 1970.
struct Moments {
    std::int64_t first;
    std::int64_t end;
};

/// Returns the moments of the day "2024-06-25" in the zone in force, or those of the second "2024-06-25T10:00:00Z".
std::optional<Moments> momentsOf(const std::string& text) {
    constexpr std::int64_t dayAndAHalf = 36 * 60 * 60;  // ends within the next day, however long this one is
    auto& days = Util::DateFormatters::dateOnlyFormatter();
    if (auto second = Util::DateFormatters::iso8601DateFormatter().date(text)) return Moments{*second, *second + 1};
    auto first = days.date(text);
    auto nextDay = first ? days.string(*first + dayAndAHalf) : std::nullopt;
    auto end = nextDay ? days.date(*nextDay) : std::nullopt;
    return end ? std::optional(Moments{*first, *end}) : std::nullopt;
}

std::string comparisonWithMoments(const std::string& column, CustomViewComparator comparator, Moments moments) {
    using C = CustomViewComparator;
    auto seconds = sql_conditions::number(column);
    auto is = [&](const char* op, std::int64_t moment) { return seconds + op + std::to_string(moment); };
    switch (comparator) {
        case C::notEqual:
            return "(" + is(" < ", moments.first) + " or " + is(" >= ", moments.end) + ")";
        case C::greaterEqual:
            return is(" >= ", moments.first);
        case C::greaterThan:
            return is(" >= ", moments.end);
        case C::lessEqual:
            return is(" < ", moments.end);
        case C::lessThan:
            return is(" < ", moments.first);
        default:
            return "(" + is(" >= ", moments.first) + " and " + is(" < ", moments.end) + ")";
    }
}

std::string like(const Pair& pair, bool isNegated) {
    using Where = Criteria::StringCriteria;
    std::string_view value = pair.value;
    bool atStart = value.starts_with('%') && value.size() > 1, atEnd = value.ends_with('%');
    // A pattern without wildcards is a value that only the server knows. It matches itself.
    if (!atStart && !atEnd) return pair.column + (isNegated ? " not like " : " like ") + kelva::literal(value);
    if (atStart) value.remove_prefix(1);
    if (atEnd) value.remove_suffix(1);
    // The backslash before or after a value that has a percent sign or a backslash there itself.
    if (!atStart && value.starts_with('\\')) value.remove_prefix(1);
    if (!atEnd && value.ends_with('\\')) value.remove_suffix(1);
    auto where = !atStart ? Where::startsWith : !atEnd ? Where::endsWith : Where::contains;
    return sql_conditions::like(pair.column, isNegated, where, value);
}

std::string comparison(const Pair& pair, CustomViewComparator comparator) {
    auto op = getEquivalentSqlComparator(comparator);
    if (auto moments = isDate(pair.field->fieldType) ? momentsOf(pair.value) : std::nullopt)
        return comparisonWithMoments(pair.column, comparator, *moments);
    if (isNumberField(*pair.field) && isNumber(pair.value))
        return sql_conditions::number(pair.column).append(" ").append(op).append(" ").append(pair.value);
    return std::string(pair.column).append(" ").append(op).append(" ").append(kelva::literal(pair.value));
}

/// Numbers and dates of a list compare as such, and other items as texts: columns hold the server's texts, in which
/// "10.0" and "10" differ.
std::string membership(const Pair& pair, bool isNegated, std::string_view text) {
    std::vector<std::string> numbers, texts, conditions;
    for (auto& item : itemsOfList(text)) {
        if (auto moments = isDate(pair.field->fieldType) ? momentsOf(item) : std::nullopt)
            conditions.push_back(comparisonWithMoments(
                pair.column, isNegated ? CustomViewComparator::notEqual : CustomViewComparator::equal, *moments));
        else
            (isNumberField(*pair.field) && isNumber(item) ? numbers : texts).push_back(item);
    }
    auto op = isNegated ? " not in " : " in ";
    if (!numbers.empty())
        conditions.push_back(sql_conditions::number(pair.column) + op + "(" + text::join(numbers, ", ") + ")");
    if (!texts.empty()) conditions.push_back(pair.column + op + list(texts));
    if (conditions.size() == 1) return conditions.front();
    return "(" + text::join(conditions, isNegated ? " and " : " or ") + ")";
}

bool isListText(std::string_view value) { return value.size() > 1 && value.front() == '[' && value.back() == ']'; }

std::string leaf(const Pair& pair, CustomViewComparator comparator) {
    bool isNegated = getEquivalentSqlComparator(comparator).starts_with("not");
    if (isInInQueryList(comparator)) {
        std::string_view items = pair.value;
        if (isListText(items)) items = items.substr(1, items.size() - 2);
        return membership(pair, isNegated, items);
    }
    if (isInLikeQueryList(comparator)) return like(pair, isNegated);
    return comparison(pair, comparator);
}

/// Fills a template in one pass, so that a text that fills a placeholder is never taken for a placeholder.
class TemplateFiller {
public:
    TemplateFiller(std::string_view text, const std::vector<Pair>& pairs) : text_(text), pairs_(pairs) {}

    Result<std::string, Error> run() {
        while (at_ < text_.size() && !failed_)
            if (!takeLeaf() && !takePlaceholder()) takeCharacter();
        if (failed_ || condition_.size() > maxCondition) return Error::offlineNotSupported();
        return std::move(condition_);
    }

private:
    struct Placeholder {
        std::size_t number;
        std::size_t end;
    };
    std::optional<Placeholder> placeholderAt(std::size_t from) const {
        if (from >= text_.size() || text_[from] != '{') return std::nullopt;
        Placeholder placeholder{};
        auto first = text_.data() + from + 1, last = text_.data() + text_.size();
        auto [end, error] = std::from_chars(first, last, placeholder.number);
        if (error != std::errc() || end == first || end == last || *end != '}') return std::nullopt;
        placeholder.end = static_cast<std::size_t>(end - text_.data()) + 1;
        return placeholder;
    }

    /// Takes "{0} = '{1}'" as a whole, since the operator decides how the value is written.
    bool takeLeaf() {
        auto column = isInText_ ? std::nullopt : placeholderAt(at_);
        if (!column || column->number % 2 == 1 || column->number / 2 >= pairs_.size()) return false;
        for (auto& comparator : EnumCases<CustomViewComparator>::cases) {
            auto op = " " + std::string(getEquivalentSqlComparator(comparator.value)) + " '";
            if (text_.substr(column->end, op.size()) != op) continue;
            auto value = placeholderAt(column->end + op.size());
            if (!value || value->number != column->number + 1 || text_.substr(value->end, 1) != "'") return false;
            condition_ += leaf(pairs_[column->number / 2], comparator.value);
            at_ = value->end + 1;
            return true;
        }
        return false;
    }

    /// Takes a placeholder by itself, in a template that the server made.
    bool takePlaceholder() {
        auto placeholder = placeholderAt(at_);
        if (!placeholder) return false;
        at_ = placeholder->end;
        if (placeholder->number / 2 >= pairs_.size())
            failed_ = true;
        else
            fill(pairs_[placeholder->number / 2], placeholder->number % 2 == 0);
        return true;
    }

    void fill(const Pair& pair, bool isColumn) {
        if (isColumn)
            condition_ += pair.column;
        else if (isInText_)
            // The template has the quotes already.
            appendInText(pair.value);
        else if (isListText(pair.value))
            condition_ += list(itemsOfList(std::string_view(pair.value).substr(1, pair.value.size() - 2)));
        else
            condition_ += isNumber(pair.value) ? pair.value : kelva::literal(pair.value);
    }

    void appendInText(const std::string& value) {
        // A NUL would end the statement, and a quoted text cannot contain an escaped one.
        if (value.find('\0') != std::string::npos) failed_ = true;
        for (char c : value) condition_.append(c == '\'' ? 2 : 1, c);
    }

    void takeCharacter() {
        if (text_[at_] == '\'') isInText_ = !isInText_;
        condition_ += text_[at_++];
    }

    std::string_view text_;
    const std::vector<Pair>& pairs_;
    std::size_t at_ = 0;
    bool isInText_ = false;
    bool failed_ = false;
    std::string condition_;
};

}  // namespace

Result<std::string, CustomViewQueryError> CustomViewQueryFormation::getWhereCondition(const CustomView& customView,
                                                                                      const FieldList& fieldList) {
    using Condition = Result<std::string, Error>;
    if (!customView.isOfflineSupported) return Condition::failure(Error::offlineNotSupported());
    auto pieces = piecesOf(customView.offlineQueryReplaceInfo);
    if (pieces.size() < 2) return Condition::success("");
    auto pairs = pairsOf(pieces, fieldList);
    if (!pairs) return pairs.error();
    return TemplateFiller(customView.offlineQuery, *pairs).run();
}

}  // namespace tarvo
