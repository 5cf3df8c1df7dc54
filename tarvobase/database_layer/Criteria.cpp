#include "tarvobase/database_layer/Criteria.h"

namespace tarvo {

namespace {

std::string_view comparison(Criteria::Case which) {
    switch (which) {
        case Criteria::Case::equalTo:
            return " = ";
        case Criteria::Case::notEqualTo:
            return " != ";
        case Criteria::Case::greaterThan:
            return " > ";
        case Criteria::Case::lessThan:
            return " < ";
        case Criteria::Case::greaterThanOrEqualTo:
            return " >= ";
        default:
            return " <= ";
    }
}

std::string_view rawText(Criteria::Separator separator) {
    return separator == Criteria::Separator::and_ ? " AND " : " OR ";
}

}  // namespace

std::string placeholders(std::size_t count) {
    std::string text;
    text.reserve(count * 2);
    for (std::size_t i = 0; i < count; ++i) text += "?,";
    if (!text.empty()) text.pop_back();
    return text;
}

std::string joinedSql(std::span<const Criteria> criterias) {
    std::string text;
    for (auto& criteria : criterias) {
        if (&criteria != &criterias.front()) text += " AND ";
        text += criteria.sql();
    }
    return text;
}

void appendParameters(ValueList& parameters, std::span<const Criteria> criterias) {
    for (auto& criteria : criterias) {
        auto more = criteria.parameters();
        parameters.insert(parameters.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
}

Criteria Criteria::compare(Case which, std::string column, ColumnType right) {
    if (!right.isColumn()) return {which, std::move(column), {right.held()}};
    Criteria criteria(which, std::move(column), ValueList());
    criteria.rightColumn_ = *right.held().asText();
    return criteria;
}

std::string Criteria::likeText(std::string_view value, StringCriteria pattern) {
    std::string text;
    if (pattern != StringCriteria::startsWith) text += '%';
    text += value;
    if (pattern != StringCriteria::endsWith) text += '%';
    return text;
}

Criteria Criteria::equals(const ValueMap& columnValues) {
    std::vector<Criteria> entries;
    entries.reserve(columnValues.size());
    for (auto& [column, value] : columnValues)
        entries.push_back(value.asList() ? in(column, *value.asList()) : equalTo(column, value));
    return and_(std::move(entries));
}

std::string Criteria::sql() const {
    std::string text;
    appendSql(text);
    return text;
}

ValueList Criteria::parameters() const {
    ValueList list;
    appendParameters(list);
    return list;
}

void Criteria::appendSql(std::string& out) const {
    switch (case_) {
        case Case::equalTo:
        case Case::notEqualTo:
        case Case::greaterThan:
        case Case::lessThan:
        case Case::greaterThanOrEqualTo:
        case Case::lessThanOrEqualTo:
            out.append(text_).append(comparison(case_)).append(values_.empty() ? rightColumn_ : "?");
            break;
        case Case::isNull:
            out.append(text_).append(" IS NULL");
            break;
        case Case::isNotNull:
            out.append(text_).append(" IS NOT NULL");
            break;
        case Case::between:
            out.append(text_).append(" BETWEEN ? AND ?");
            break;
        case Case::notBetween:
            out.append(text_).append(" NOT BETWEEN ? AND ?");
            break;
        case Case::exists:
            out.append("EXISTS (").append(text_).append(")");
            break;
        case Case::notExists:
            out.append("NOT EXISTS (").append(text_).append(")");
            break;
        case Case::in:
            out.append(text_).append(" IN (").append(placeholders(values_.size())).append(")");
            break;
        case Case::notIn:
            out.append(text_).append(" NOT IN (").append(placeholders(values_.size())).append(")");
            break;
        case Case::like:
            out.append(text_).append(" LIKE ?");
            break;
        case Case::notLike:
            out.append(text_).append(" NOT LIKE ?");
            break;
        case Case::custom:
            out.append(text_);
            break;
        case Case::and_:
        case Case::or_: {
            auto separator = rawText(case_ == Case::and_ ? Separator::and_ : Separator::or_);
            out += '(';
            for (auto& entry : entries_) {
                if (&entry != &entries_.front()) out += separator;
                entry.appendSql(out);
            }
            out += ')';
        }
    }
}

void Criteria::appendParameters(ValueList& out) const {
    out.insert(out.end(), values_.begin(), values_.end());
    for (auto& entry : entries_) entry.appendParameters(out);
}

}  // namespace tarvo
