#include "tarvobase/records/sql/CustomViewQueryFormation.h"

#include <charconv>
#include <optional>
#include <vector>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/CustomViewComparator.h"
#include "tarvobase/records/sql/CustomViewOfflineQueryParser.h"
#include "tarvobase/records/sql/SqlConditions.h"
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
    // The server joins the pieces of its own templates with commas.
    if (CommonConfigration::sharedInstance().serverCVCriteria.get()) return ",";
    return CustomViewOfflineQuery::replaceSeparator;
}

/// Returns names and values in turn. A value may be empty. A name may not, so an empty piece in its place is dropped.
std::vector<std::string> piecesOf(const std::string& replaceInfo) {
    std::vector<std::string> pieces;
    for (auto& piece : text::split(replaceInfo, separatorOfPieces()))
        if (!piece.empty() || pieces.size() % 2 == 1) pieces.push_back(std::move(piece));
    return pieces;
}

std::string valueFor(const FieldMetadata& field, std::string value) {
    if (field.columnCRMName != convertedColumn) return value;
    return value == "0" ? "false" : value == "1" ? "true" : value;
}

const FieldMetadata* fieldNamed(const FieldList& fieldList, const std::string& apiName) {
    if (auto field = fieldList.getFieldByApiName(apiName)) return field;
    for (auto& field : fieldList.fieldsOfSharedColumns())
        if (field.fieldAPIName == apiName) return &field;
    return nullptr;
}

Result<std::vector<Pair>, Error> pairsOf(const std::vector<std::string>& pieces, const FieldList& fieldList) {
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < pieces.size(); i += 2) {
        auto field = fieldNamed(fieldList, pieces[i]);
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

std::string list(std::string_view items) {
    std::vector<std::string> literals;
    for (auto& item : text::split(items, ","))
        literals.push_back(kelva::literal(text::join(text::split(item, separatorString), ",")));
    return "(" + text::join(literals, ", ") + ")";
}

std::string like(const Pair& pair, bool isNegated) {
    using Where = Criteria::StringCriteria;
    std::string_view value = pair.value;
    bool atStart = value.starts_with('%') && value.size() > 1, atEnd = value.ends_with('%');
    // A pattern without wildcards is a value that only the server knows. It matches itself.
    if (!atStart && !atEnd) return pair.column + (isNegated ? " not like " : " like ") + kelva::literal(value);
    if (atStart) value.remove_prefix(1);
    if (atEnd) value.remove_suffix(1);
    auto where = !atStart ? Where::startsWith : !atEnd ? Where::endsWith : Where::contains;
    return sql_conditions::like(pair.column, isNegated, where, value);
}

std::string comparison(const Pair& pair, std::string_view op) {
    if (isNumberField(*pair.field) && isNumber(pair.value))
        return sql_conditions::number(pair.column).append(" ").append(op).append(" ").append(pair.value);
    return std::string(pair.column).append(" ").append(op).append(" ").append(kelva::literal(pair.value));
}

bool isListText(std::string_view value) { return value.size() > 1 && value.front() == '[' && value.back() == ']'; }

std::string leaf(const Pair& pair, CustomViewComparator comparator) {
    auto op = getEquivalentSqlComparator(comparator);
    if (isInInQueryList(comparator)) {
        std::string_view items = pair.value;
        if (isListText(items)) items = items.substr(1, items.size() - 2);
        return std::string(pair.column).append(" ").append(op).append(" ").append(list(items));
    }
    if (isInLikeQueryList(comparator)) return like(pair, op.starts_with("not"));
    return comparison(pair, op);
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
            condition_ += list(std::string_view(pair.value).substr(1, pair.value.size() - 2));
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
