#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "platform/Value.h"

namespace tarvo {

/// One leaf of the criteria tree that the server sends for a view.
struct CustomViewCriteria {
    std::string fieldName;  ///< API name of the field
    Value value;
    std::string comparator;
    std::optional<std::string> moduleName;
};

/// A mandatory member of a leaf is missing or has the wrong type. The text says which one.
struct CustomViewOfflineParserError {
    std::string mandatoryColumnNotFoundOrNil;
};

/// A compiled view: a condition with numbered placeholders, and the texts that fill them.
struct CustomViewOfflineQuery {
    /// Separates the texts of the placeholders. A leaf that contains it cannot be run locally.
    static constexpr std::string_view replaceSeparator = "\xE0\xAE\x83\xE0\xAF\x80";

    std::string placeholder;
    std::string replaceInfo;
    std::optional<std::vector<std::string>> moduleList;  ///< the modules that the criteria name, if they name any
    /// False for criteria that only the server can evaluate: unknown comparators, ranges, parts that are not criteria,
    /// and trees beyond SQLite's limits.
    bool isRunnable = true;
};

/// Turns a leaf into alternating placeholder texts and SQL words.
struct CriteriaParser {
    /// Returns an empty list for an unknown comparator, which is logged.
    static std::vector<std::string> getPlaceholderAndReplaceInfo(const CustomViewCriteria& criteria);
    /// Returns the items of a list as texts. Any other value is split at its commas, and empty pieces are left out. The
    /// result is one empty text if nothing is left.
    static std::vector<std::string> getValuesAsArray(const Value& value);
};

/// Compiles a tree of criteria into a template. A leaf is a map with "field", "comparator", "value" and an optional
/// "module"; a list holds nodes and, between them, the words that connect them. Use one parser per tree, on one thread.
///
/// Columns are filled in when a query is made, so that a stored view follows the naming in force.
class CustomViewOfflineQueryParser {
public:
    std::string offlineQueryPlaceholder;
    std::string offlineQueryReplaceInfo;
    int placeholderCount = 0;
    std::set<std::string> modulesMap;

    /// Compiles the whole tree of a view. Returns nullopt if a leaf lacks its field, value or comparator. Null criteria
    /// give the empty query, which selects all records.
    static std::optional<CustomViewOfflineQuery> compile(const Value& criteria);

    /// Appends a node. Returns false if a leaf lacks its field, value or comparator.
    bool formOfflineQuery(const Value& node);

    /// Reads a leaf from a map.
    static Result<CustomViewCriteria, CustomViewOfflineParserError> getCriteria(const ValueMap& map);

private:
    /// The depth of a node: in parentheses, and in the expression tree that SQLite builds from the text.
    struct Depth {
        int parentheses = 0;
        int expression = 0;
    };
    bool appendNode(const Value& node, Depth depth);
    bool appendList(const ValueList& list, Depth depth);
    bool appendLeaf(const ValueMap& map, Depth depth);
    void updateOfflineQueryPlaceholder(const CustomViewCriteria& criteria, Depth depth);
    void appendPlaceholder(const std::string& text);
    void updateModuleList(const CustomViewCriteria& criteria);
    void require(bool holds) { isRunnable_ = isRunnable_ && holds; }

    bool isRunnable_ = true;
};

}  // namespace tarvo
