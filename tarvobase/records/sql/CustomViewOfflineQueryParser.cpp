#include "tarvobase/records/sql/CustomViewOfflineQueryParser.h"

#include <algorithm>

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/CustomViewComparator.h"

namespace tarvo {

namespace {

// SQLite's parser holds a hundred open symbols, and each level of a condition takes three of them. Its expressions may
// be a thousand levels deep. The rest is left for the statement around the condition.
constexpr int maxParentheses = 20;
constexpr int maxExpression = 900;
// A chain of one connector is as deep as it is long. A long chain is cut into groups, which means the same and is flat.
constexpr std::size_t groupSize = 64;

/// Returns a length as a depth. A length beyond the limit stays just beyond it.
int bounded(std::size_t length) { return static_cast<int>(std::min<std::size_t>(length, maxExpression + 1)); }

std::string describe(const Value& value) { return value.toText().value_or(""); }

/// A value that the server fills in by itself, such as "${CURRENTUSER}".
bool isServerValue(const std::string& text) { return text.starts_with("${") && text.ends_with("}"); }

/// A pattern says by its outer percent signs how a value is compared. A value that begins or ends with one itself is
/// kept apart from those by a backslash, which `CustomViewQueryFormation` removes.
bool needsGuard(char outer) { return outer == '%' || outer == '\\'; }

std::string pattern(CustomViewComparator comparator, const std::string& value) {
    if (isServerValue(value)) return value;
    if (comparator == CustomViewComparator::startsWith)
        return (!value.empty() && needsGuard(value.front()) ? "\\" : "") + value + "%";
    if (comparator == CustomViewComparator::endsWith)
        return "%" + value + (!value.empty() && needsGuard(value.back()) ? "\\" : "");
    return "%" + value + "%";
}

/// Returns field, operator and value per value, with "or" between them.
template <class Write>
std::vector<std::string> eachValue(const CustomViewCriteria& criteria, std::string_view op, Write&& write) {
    std::vector<std::string> items;
    for (auto& value : CriteriaParser::getValuesAsArray(criteria.value)) {
        if (!items.empty()) items.emplace_back("or");
        items.insert(items.end(), {criteria.fieldName, std::string(op), write(value)});
    }
    return items;
}

std::vector<std::string> likeQuery(const CustomViewCriteria& criteria, CustomViewComparator comparator) {
    return eachValue(criteria, getEquivalentSqlComparator(comparator),
                     [&](const std::string& value) { return pattern(comparator, std::string(text::trimmed(value))); });
}

std::vector<std::string> otherQuery(const CustomViewCriteria& criteria, CustomViewComparator comparator) {
    return eachValue(criteria, getEquivalentSqlComparator(comparator), [](const std::string& value) { return value; });
}

std::string listText(const Value& value) {
    auto list = value.asList();
    if (!list) return describe(value);
    std::vector<std::string> items;
    for (auto& item : *list) items.push_back(withEncodedCommas(describe(item)));
    return text::join(items, ",");
}

std::vector<std::string> inQuery(const CustomViewCriteria& criteria, CustomViewComparator comparator) {
    return {criteria.fieldName, std::string(getEquivalentSqlComparator(comparator)),
            "[" + listText(criteria.value) + "]"};
}

bool isSingle(const Value& value) { return value.toText().has_value(); }

bool isValueOfLeaf(const Value& value) {
    auto list = value.asList();
    return list ? std::all_of(list->begin(), list->end(), isSingle) : isSingle(value);
}

/// Describes the words between the nodes of a list: whether nodes and words alternate and each word is "and" or "or",
/// and whether all words are the same.
struct Connectors {
    bool isWellFormed = true;
    bool areAllTheSame = true;

    explicit Connectors(const ValueList& list) : isWellFormed(list.size() % 2 == 1) {
        std::string first;
        for (std::size_t i = 0; i < list.size(); ++i) {
            auto word = list[i].asText();
            if ((i % 2 == 1) != (word != nullptr)) isWellFormed = false;
            if (!word) continue;
            auto plain = text::asciiLowercase(text::trimmed(*word));
            if (plain != "and" && plain != "or") isWellFormed = false;
            if (first.empty()) first = plain;
            if (plain != first) areAllTheSame = false;
        }
    }
};

}  // namespace

std::vector<std::string> CriteriaParser::getPlaceholderAndReplaceInfo(const CustomViewCriteria& criteria) {
    auto comparator = fromRawText<CustomViewComparator>(criteria.comparator);
    if (!comparator) {
        platform::log(platform::LogLevel::warning, "records",
                      "Comparator is new (not specified in enum CustomViewComparator)");
        return {};
    }
    if (isInLikeQueryList(*comparator)) return likeQuery(criteria, *comparator);
    if (isInInQueryList(*comparator)) return inQuery(criteria, *comparator);
    return otherQuery(criteria, *comparator);
}

std::vector<std::string> CriteriaParser::getValuesAsArray(const Value& value) {
    std::vector<std::string> values;
    if (auto list = value.asList()) {
        for (auto& item : *list) values.push_back(describe(item));
    } else {
        values = text::split(describe(value), ",");
        std::erase(values, "");
    }
    if (values.empty()) values.emplace_back();
    return values;
}

std::optional<CustomViewOfflineQuery> CustomViewOfflineQueryParser::compile(const Value& criteria) {
    if (criteria.isNull()) return CustomViewOfflineQuery();
    CustomViewOfflineQueryParser parser;
    parser.offlineQueryPlaceholder = "(";
    if (!parser.formOfflineQuery(criteria)) return std::nullopt;
    parser.offlineQueryPlaceholder += ")";
    CustomViewOfflineQuery query{std::move(parser.offlineQueryPlaceholder), std::move(parser.offlineQueryReplaceInfo)};
    if (!parser.modulesMap.empty()) query.moduleList.emplace(parser.modulesMap.begin(), parser.modulesMap.end());
    query.isRunnable = parser.isRunnable_;
    return query;
}

bool CustomViewOfflineQueryParser::formOfflineQuery(const Value& node) { return appendNode(node, {}); }

bool CustomViewOfflineQueryParser::appendNode(const Value& node, Depth depth) {
    if (auto list = node.asList()) return appendList(*list, depth);
    if (auto map = node.asMap()) return appendLeaf(*map, depth);
    require(false);
    return true;
}

bool CustomViewOfflineQueryParser::appendList(const ValueList& list, Depth depth) {
    Connectors connectors(list);
    bool isWithoutConditions = list.empty() && depth.parentheses == 0;
    require((connectors.isWellFormed || isWithoutConditions) && depth.parentheses < maxParentheses);
    if (depth.parentheses >= maxParentheses) return true;
    auto nodes = (list.size() + 1) / 2;
    bool isGrouped = nodes > groupSize && connectors.isWellFormed && connectors.areAllTheSame;
    auto chain = isGrouped ? groupSize + nodes / groupSize : nodes;
    Depth below{depth.parentheses + (isGrouped ? 2 : 1), depth.expression + bounded(chain)};
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (auto word = list[i].asText()) {
            offlineQueryPlaceholder += " " + *word + " ";
            continue;
        }
        auto node = i / 2;
        if (isGrouped && node % groupSize == 0) offlineQueryPlaceholder += "(";
        offlineQueryPlaceholder += "(";
        if (!appendNode(list[i], below)) return false;
        offlineQueryPlaceholder += ")";
        if (isGrouped && (node % groupSize == groupSize - 1 || node + 1 == nodes)) offlineQueryPlaceholder += ")";
    }
    return true;
}

bool CustomViewOfflineQueryParser::appendLeaf(const ValueMap& map, Depth depth) {
    auto criteria = getCriteria(map);
    if (!criteria) {
        platform::log(platform::LogLevel::warning, "records", criteria.error().mandatoryColumnNotFoundOrNil);
        return false;
    }
    updateOfflineQueryPlaceholder(*criteria, depth);
    updateModuleList(*criteria);
    return true;
}

Result<CustomViewCriteria, CustomViewOfflineParserError> CustomViewOfflineQueryParser::getCriteria(
    const ValueMap& map) {
    auto missing = [](std::string_view what) {
        return CustomViewOfflineParserError{"CustomViewOfflineQuery: CustomViewCriteria." + std::string(what) +
                                            " is nil"};
    };
    auto field = map.find("field"), value = map.find("value"), comparator = map.find("comparator");
    if (!field || !field->asText()) return missing("Field");
    if (!value || !isValueOfLeaf(*value)) return missing("value");
    if (!comparator || !comparator->asText()) return missing("comparator");
    auto module = map.find("module");
    return CustomViewCriteria{*field->asText(), *value, *comparator->asText(),
                              module && module->asText() ? std::optional(*module->asText()) : std::nullopt};
}

void CustomViewOfflineQueryParser::updateOfflineQueryPlaceholder(const CustomViewCriteria& criteria, Depth depth) {
    auto items = CriteriaParser::getPlaceholderAndReplaceInfo(criteria);
    auto comparator = fromRawText<CustomViewComparator>(criteria.comparator);
    require(comparator && !isRange(*comparator));
    require(depth.expression + bounded(items.size() / 4) <= maxExpression);
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i % 2 == 1)
            offlineQueryPlaceholder += " " + items[i] + " ";
        else
            appendPlaceholder(items[i]);
    }
}

void CustomViewOfflineQueryParser::appendPlaceholder(const std::string& text) {
    require(text.find(CustomViewOfflineQuery::replaceSeparator) == std::string::npos);
    auto placeholder = "{" + std::to_string(placeholderCount) + "}";
    offlineQueryPlaceholder += placeholderCount % 2 == 0 ? placeholder : "'" + placeholder + "'";
    if (placeholderCount > 0) offlineQueryReplaceInfo += CustomViewOfflineQuery::replaceSeparator;
    offlineQueryReplaceInfo += text;
    ++placeholderCount;
}

void CustomViewOfflineQueryParser::updateModuleList(const CustomViewCriteria& criteria) {
    if (criteria.moduleName != "Activities" || criteria.fieldName != "Activity_Type") return;
    std::set<std::string> named;
    if (auto list = criteria.value.asList())
        for (auto& item : *list) named.insert(describe(item));
    else
        named.insert(describe(criteria.value));
    if (criteria.comparator == rawText(CustomViewComparator::notEqual)) {
        static const std::set<std::string> all{"Calls", "Events", "Tasks"};
        std::set<std::string> others;
        std::set_symmetric_difference(named.begin(), named.end(), all.begin(), all.end(),
                                      std::inserter(others, others.end()));
        named = std::move(others);
    }
    modulesMap.merge(named);
}

}  // namespace tarvo
