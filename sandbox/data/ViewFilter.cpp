#include "sandbox/data/ViewFilter.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "platform/Text.h"
#include "platform/dates/WireDates.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/Records.h"

namespace tarvo::sandbox {
namespace {

constexpr std::int64_t secondsOfDay = 24 * 3600;

enum class Comparator {
    equal,
    notEqual,
    like,
    notLike,
    greaterEqual,
    greaterThan,
    lessEqual,
    lessThan,
    in,
    notIn,
    startsWith,
    endsWith,
    contains,
    notContains,
    between,
    notBetween,
    // Only the server has these.
    isEmpty,
    isNotEmpty,
};

constexpr std::pair<std::string_view, Comparator> comparators[] = {
    {"equal", Comparator::equal},
    {"not_equal", Comparator::notEqual},
    {"like", Comparator::like},
    {"not_like", Comparator::notLike},
    {"greater_equal", Comparator::greaterEqual},
    {"greater_than", Comparator::greaterThan},
    {"less_equal", Comparator::lessEqual},
    {"less_than", Comparator::lessThan},
    {"in", Comparator::in},
    {"not_in", Comparator::notIn},
    {"starts_with", Comparator::startsWith},
    {"ends_with", Comparator::endsWith},
    {"contains", Comparator::contains},
    {"not_contains", Comparator::notContains},
    {"between", Comparator::between},
    {"not_between", Comparator::notBetween},
    {"is_empty", Comparator::isEmpty},
    {"is_not_empty", Comparator::isNotEmpty},
};

std::optional<Comparator> comparatorNamed(std::string_view name) {
    for (const auto& [text, comparator] : comparators)
        if (text == name) return comparator;
    return std::nullopt;
}

/// Says as what the values of a field are compared.
enum class ComparedAs { text, number, moment };

ComparedAs kindOf(const FieldData* field) {
    if (!field) return ComparedAs::text;
    if (field->type == "date" || field->type == "datetime") return ComparedAs::moment;
    for (std::string_view type : {"integer", "bigint", "double", "decimal", "currency"})
        if (field->type == type) return ComparedAs::number;
    return ComparedAs::text;
}

/// Holds one side of a comparison. Numbers of nineteen digits can differ although their nearest doubles do not.
struct Operand {
    std::string text;
    std::optional<std::int64_t> whole;
    std::optional<double> real;
};

// Reads "2024-02-29", "2024-02-29T10:00:00+05:30" or seconds since 1970. Days begin in UTC.
std::optional<std::int64_t> momentOf(std::string_view text) {
    if (auto seconds = text::toInteger(text)) return seconds;
    bool isDay = text.find('T') == std::string_view::npos;
    return platform::wire::readDateTime(isDay ? std::string(text) + "T00:00:00Z" : std::string(text));
}

Operand operandOf(ComparedAs kind, std::string_view text) {
    Operand operand{text::asciiLowercase(text), std::nullopt, std::nullopt};
    if (kind == ComparedAs::moment) operand.whole = momentOf(text);
    if (kind == ComparedAs::number) operand.whole = text::toInteger(text);
    if (kind == ComparedAs::number) operand.real = text::toReal(text);
    return operand;
}

/// Returns a number below, at or above zero; nullopt when one side is neither a number nor a moment.
std::optional<int> order(ComparedAs kind, const Operand& a, const Operand& b) {
    auto compare = [](const auto& x, const auto& y) { return x < y ? -1 : y < x ? 1 : 0; };
    if (kind == ComparedAs::text) return compare(a.text, b.text);
    if (a.whole && b.whole) return compare(*a.whole, *b.whole);
    if (a.real && b.real) return compare(*a.real, *b.real);
    return std::nullopt;
}

bool compares(Comparator comparator, ComparedAs kind, const Operand& actual, const Operand& value) {
    const auto &text = actual.text, &part = value.text;
    switch (comparator) {
        case Comparator::startsWith:
            return text.starts_with(part);
        case Comparator::endsWith:
            return text.ends_with(part);
        case Comparator::like:
        case Comparator::contains:
            return text.find(part) != std::string::npos;
        case Comparator::notLike:
        case Comparator::notContains:
            return text.find(part) == std::string::npos;
        default:
            break;
    }
    auto order = sandbox::order(kind, actual, value);
    if (!order) return false;
    switch (comparator) {
        case Comparator::equal:
            return *order == 0;
        case Comparator::notEqual:
            return *order != 0;
        case Comparator::greaterEqual:
            return *order >= 0;
        case Comparator::greaterThan:
            return *order > 0;
        case Comparator::lessEqual:
            return *order <= 0;
        case Comparator::lessThan:
            return *order < 0;
        default:
            return false;
    }
}

bool isListed(ComparedAs kind, const Operand& actual, const std::vector<Operand>& values) {
    return std::any_of(values.begin(), values.end(), [&](const Operand& value) {
        return kind == ComparedAs::moment ? order(kind, actual, value) == 0 : actual.text == value.text;
    });
}

/// Returns nullopt when the range is invalid, or when the value is not of its kind.
std::optional<bool> isInRange(ComparedAs kind, const Operand& actual, const std::vector<Operand>& range) {
    if (range.size() != 2) return std::nullopt;
    auto low = order(kind, actual, range[0]), high = order(kind, actual, range[1]);
    if (!low || !high) return std::nullopt;
    return *low >= 0 && *high <= 0;
}

// Reads "${TODAY}", the day of the server's clock, "${TODAY-30}" thirty days before.
std::string resolved(const std::string& value, std::int64_t now) {
    constexpr std::string_view today = "${TODAY";
    if (!value.starts_with(today) || !value.ends_with("}")) return value;
    auto shift = value.substr(today.size(), value.size() - today.size() - 1);
    auto days = shift.empty() ? 0 : text::toInteger(shift);
    if (!days) return value;
    return std::to_string((now / 1000 / secondsOfDay + *days) * secondsOfDay);
}

/// A comparison with "${EMPTY}" tests whether the field is empty.
std::optional<Comparator> comparatorOf(const ValueMap& leaf) {
    auto comparator = comparatorNamed(leaf.valueOf("comparator").textOr(""));
    if (!comparator || leaf.valueOf("value") != Value("${EMPTY}")) return comparator;
    bool isNegated = *comparator == Comparator::notEqual || *comparator == Comparator::notLike ||
                     *comparator == Comparator::notContains || *comparator == Comparator::notIn;
    return isNegated ? Comparator::isNotEmpty : Comparator::isEmpty;
}

std::vector<std::string> valuesOf(const Value& value) {
    std::vector<std::string> values;
    if (const auto* list = value.asList())
        for (const auto& item : *list) values.push_back(item.toText().value_or(""));
    else
        values = text::split(value.toText().value_or(""), ",");
    if (!value.asList()) std::erase(values, "");
    if (values.empty()) values.emplace_back();
    return values;
}

const FieldData* fieldNamed(const DataSet& data, const std::string& module, std::string_view apiName) {
    for (const auto& field : data.metadata.find(module)->second.fields)
        if (field.apiName == apiName) return &field;
    return nullptr;
}

/// Compares a field with values. It holds for no record when the comparator is unknown.
class Leaf {
public:
    Leaf(const DataSet& data, const std::string& module, const ValueMap& map, std::int64_t now)
        : field_(map.valueOf("field").textOr("")),
          comparator_(comparatorOf(map)),
          kind_(kindOf(fieldNamed(data, module, field_))) {
        for (const auto& value : valuesOf(map.valueOf("value")))
            values_.push_back(operandOf(kind_, resolved(value, now)));
    }

    bool holds(const RecordData& record, RecordValue& scratch) const {
        if (!comparator_) return false;
        auto text = textOf(record, scratch);
        if (!text) return *comparator_ == Comparator::isEmpty;
        auto actual = operandOf(kind_, *text);
        switch (*comparator_) {
            case Comparator::isEmpty:
                return text->empty();
            case Comparator::isNotEmpty:
                return !text->empty();
            case Comparator::in:
                return isListed(kind_, actual, values_);
            case Comparator::notIn:
                return !isListed(kind_, actual, values_);
            case Comparator::between:
                return isInRange(kind_, actual, values_).value_or(false);
            case Comparator::notBetween:
                return !isInRange(kind_, actual, values_).value_or(true);
            default:
                return std::any_of(values_.begin(), values_.end(),
                                   [&](const Operand& value) { return compares(*comparator_, kind_, actual, value); });
        }
    }

private:
    std::optional<std::string> textOf(const RecordData& record, RecordValue& scratch) const {
        // The record has not been changed since it was created.
        if (field_ == "$unread") return record.createdTime() == record.modifiedTime() ? "true" : "false";
        record.read(field_, scratch);
        switch (scratch.kind) {
            case RecordValue::Kind::absent:
                return std::nullopt;
            case RecordValue::Kind::text:
                return scratch.text;
            case RecordValue::Kind::texts:
                return text::join(scratch.texts, ",");
            case RecordValue::Kind::rows:
                return std::to_string(scratch.rows.size());
        }
        return std::nullopt;
    }

    std::string field_;
    std::optional<Comparator> comparator_;
    ComparedAs kind_;
    std::vector<Operand> values_;
};

}  // namespace

/// Holds a leaf, or nodes with connectors between them. "and" binds closer than "or".
struct ViewFilter::Node {
    std::optional<Leaf> leaf;
    /// The alternatives, each a list of nodes that must all hold.
    std::vector<std::vector<Node>> alternatives;

    static Node of(const DataSet& data, const std::string& module, const Value& criteria, std::int64_t now) {
        Node node;
        if (const auto* map = criteria.asMap()) {
            node.leaf.emplace(data, module, *map, now);
            return node;
        }
        node.alternatives.emplace_back();
        if (!criteria.asList()) return node;
        for (const auto& item : *criteria.asList()) {
            const auto* word = item.asText();
            if (!word)
                node.alternatives.back().push_back(of(data, module, item, now));
            else if (*word == "or")
                node.alternatives.emplace_back();
        }
        return node;
    }

    bool holds(const RecordData& record, RecordValue& scratch) const {
        if (leaf) return leaf->holds(record, scratch);
        return std::any_of(alternatives.begin(), alternatives.end(), [&](const std::vector<Node>& nodes) {
            return std::all_of(nodes.begin(), nodes.end(),
                               [&](const Node& node) { return node.holds(record, scratch); });
        });
    }
};

ViewFilter::ViewFilter(const DataSet& data, const ViewData& view, std::string_view account, std::int64_t now)
    : root_(std::make_unique<Node>(Node::of(data, view.module, criteriaFor(data, view, account), now))) {}

ViewFilter::~ViewFilter() = default;

bool ViewFilter::holds(const RecordData& record) const {
    RecordValue scratch;
    return root_->holds(record, scratch);
}

}  // namespace tarvo::sandbox
