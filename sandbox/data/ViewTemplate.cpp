#include "sandbox/data/ViewTemplate.h"

#include <string_view>

#include "platform/Text.h"

namespace tarvo::sandbox {
namespace {

struct Operator {
    std::string_view comparator;
    std::string_view sql;
    /// The text before and after the value.
    std::string_view before = "", after = "";
    std::string_view connector = " or ";
};

// Clients join the pieces by ",", so a list is written as one comparison per value.
constexpr Operator operators[] = {
    {"equal", "="},
    {"not_equal", "!="},
    {"greater_equal", ">="},
    {"greater_than", ">"},
    {"less_equal", "<="},
    {"less_than", "<"},
    {"in", "="},
    {"not_in", "!=", "", "", " and "},
    {"like", "like", "%", "%"},
    {"contains", "like", "%", "%"},
    {"not_like", "not like", "%", "%"},
    {"not_contains", "not like", "%", "%"},
    {"starts_with", "like", "", "%"},
    {"ends_with", "like", "%", ""},
};

Operator operatorOf(const std::string& comparator) {
    for (const auto& row : operators)
        if (row.comparator == comparator) return row;
    return {comparator, comparator};
}

std::vector<std::string> templateValues(const Value& value) {
    std::vector<std::string> values;
    if (const auto* list = value.asList())
        for (const auto& item : *list) values.push_back(item.textOr(""));
    else
        values = text::split(value.textOr(""), ",");
    return values;
}

class Writer {
public:
    void node(const Value& node) {
        if (const auto* map = node.asMap()) return leaf(*map);
        if (!node.asList()) return;
        for (const auto& item : *node.asList()) {
            if (const auto* word = item.asText()) {
                made.text += " " + *word + " ";
                continue;
            }
            made.text += "(";
            this->node(item);
            made.text += ")";
        }
    }

    ViewTemplate made;

private:
    void leaf(const ValueMap& map) {
        auto comparator = map.valueOf("comparator").textOr("");
        auto op = operatorOf(comparator);
        bool isFirst = true;
        for (const auto& value : templateValues(map.valueOf("value"))) {
            if (!isFirst) made.text += op.connector;
            isFirst = false;
            made.text += hole(map.valueOf("field").textOr(""));
            made.text += " " + std::string(op.sql) + " '";
            made.text += valueHole(std::string(op.before) + value + std::string(op.after)) + "'";
        }
    }

    std::string hole(std::string piece) {
        made.pieces.push_back(std::move(piece));
        return "{" + std::to_string(made.pieces.size() - 1) + "}";
    }

    // A value with a comma would come apart among the pieces, so it stands in the text itself, and its placeholder
    // stays empty.
    std::string valueHole(const std::string& value) {
        if (value.find(',') == std::string::npos) return hole(value);
        hole("");
        return text::join(text::split(value, "'"), "''");
    }
};

}  // namespace

ViewTemplate viewTemplate(const Value& criteria) {
    if (criteria.isNull()) return {};
    Writer writer;
    writer.made.text = "(";
    writer.node(criteria);
    writer.made.text += ")";
    return std::move(writer.made);
}

}  // namespace tarvo::sandbox
