#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "platform/Value.h"

namespace tarvo {

/// One leaf of the tree of criteria that the server gives for a view.
struct CustomViewCriteria {
    std::string fieldName;  ///< API name of the field
    Value value;
    std::string comparator;
    std::optional<std::string> moduleName;
};

/// A leaf lacks what it cannot do without, or has it in another type; the text says which.
struct CustomViewOfflineParserError {
    std::string mandatoryColumnNotFoundOrNil;
};

/// A compiled view: a condition with numbered holes, and what fills them.
struct CustomViewOfflineQuery {
    /// Joins the texts of the holes. It occurs in no name and in no value; a leaf that has it cannot run here.
    static constexpr std::string_view replaceSeparator = "\xE0\xAE\x83\xE0\xAF\x80";

    std::string placeholder;
    std::string replaceInfo;
    std::optional<std::vector<std::string>> moduleList;  ///< the modules that the criteria name, if they name any
    /// False for criteria that only the server can judge: comparators that this version does not know, ranges, pieces
    /// that are no criteria, and trees beyond what SQLite takes.
    bool isRunnable = true;
};

/// Turns a leaf into the alternation of hole text, SQL word, hole text and so on.
struct CriteriaParser {
    /// Empty for a comparator that is not known, which is logged.
    static std::vector<std::string> getPlaceholderAndReplaceInfo(const CustomViewCriteria& criteria);
    /// The items of a list as texts; the pieces of any other value between commas, without empty ones. A value without
    /// any stands for the empty text.
    static std::vector<std::string> getValuesAsArray(const Value& value);
};

/// Turns a tree of criteria into a template. A leaf is a map with "field", "comparator", "value" and maybe "module"; a
/// list holds nodes and between them the words that connect them. For one tree, on one thread.
///
/// The columns are filled in at the time of a query, so that a stored view follows the naming in force.
class CustomViewOfflineQueryParser {
public:
    std::string offlineQueryPlaceholder;
    std::string offlineQueryReplaceInfo;
    int placeholderCount = 0;
    std::set<std::string> modulesMap;

    /// The whole tree of a view. Nothing when a leaf lacks its field, value or comparator; null criteria give the empty
    /// query, which is the view of all records.
    static std::optional<CustomViewOfflineQuery> compile(const Value& criteria);

    /// Appends a node. False when a leaf lacks its field, value or comparator.
    bool formOfflineQuery(const Value& node);

    /// The leaf in a map.
    static Result<CustomViewCriteria, CustomViewOfflineParserError> getCriteria(const ValueMap& map);

private:
    /// How far down a node stands: in parentheses, and in the tree of the expression that SQLite makes of the text.
    struct Depth {
        int parentheses = 0;
        int expression = 0;
    };
    bool appendNode(const Value& node, Depth depth);
    bool appendList(const ValueList& list, Depth depth);
    bool appendLeaf(const ValueMap& map, Depth depth);
    void updateOfflineQueryPlaceholder(const CustomViewCriteria& criteria, Depth depth);
    void appendHole(const std::string& text);
    void updateModuleList(const CustomViewCriteria& criteria);
    void require(bool holds) { isRunnable_ = isRunnable_ && holds; }

    bool isRunnable_ = true;
};

}  // namespace tarvo
