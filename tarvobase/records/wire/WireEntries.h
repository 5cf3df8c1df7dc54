#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

#include "platform/JsonDocument.h"
#include "platform/Rows.h"

/// Reads one record of the server, whatever holds it (a Value, a page that was just parsed) and whatever it is read
/// into (a dictionary, cells of a table). Both sides meet only here, so that every way gives the same values.
namespace tarvo::wire {

/// Gives a Value the interface of `json::Element`.
class ValueNode {
public:
    ValueNode() = default;
    explicit ValueNode(const Value& value) : value_(&value) {}
    ValueKind kind() const { return value_ ? value_->kind() : ValueKind::null; }
    std::optional<std::string_view> asText() const {
        auto text = value_ ? value_->asText() : nullptr;
        return text ? std::optional<std::string_view>(*text) : std::nullopt;
    }
    std::size_t leadingItems(std::span<ValueNode> into) const {
        auto list = value_ ? value_->asList() : nullptr;
        if (!list) return 0;
        for (std::size_t i = 0; i < std::min(list->size(), into.size()); ++i) into[i] = ValueNode((*list)[i]);
        return list->size();
    }
    bool items(std::vector<ValueNode>& into) const {
        into.clear();
        auto list = value_ ? value_->asList() : nullptr;
        if (list)
            for (auto& item : *list) into.emplace_back(item);
        return list != nullptr;
    }

private:
    const Value* value_ = nullptr;
};

/// One of the values of an entry: the main value under the key of its name, or a companion under that key with a
/// suffix.
enum class Part { value, lookup, firstName, lastName };

template <class Node>
bool areAll(ValueKind kind, const std::vector<Node>& items) {
    return std::all_of(items.begin(), items.end(), [&](auto& item) { return item.kind() == kind; });
}

/// Reads records one after another into sinks, and keeps its buffers between them. A sink has:
///
/// - `key(name)`, which returns the sink's own form of the name; the other calls receive it;
/// - `text(key, part, text)`, and `list(key, part, items)` for a list of texts that stays a list;
/// - `joined(key, items)` for texts that become one text, and `nested(key, node)` for a list of records;
/// - `remove(key)` for a value that cannot be read.
template <class Node>
class RecordReader {
public:
    /// With `withPersonNames`, the sink also receives first and last names.
    explicit RecordReader(bool withPersonNames) : withPersonNames_(withPersonNames) {}

    /// Returns false if the record is not a list of entries.
    template <class Sink>
    bool read(const Node& record, Sink& sink) {
        if (!record.items(entries_)) return false;
        for (auto& entry : entries_) readEntry(entry, sink);
        return true;
    }

private:
    template <class Sink>
    void readEntry(const Node& entry, Sink& sink) {
        std::array<Node, 3> items;
        auto count = entry.leadingItems(items);
        auto name = count >= 2 ? items[0].asText() : std::nullopt;
        if (!name) return;
        auto&& key = sink.key(*name);
        if (!readValue(items[1], key, sink)) return sink.remove(key);
        if (count > 2) readLookup(items[2], key, sink);
    }

    template <class Key, class Sink>
    bool readValue(const Node& value, Key& key, Sink& sink) {
        if (auto text = value.asText()) {
            sink.text(key, Part::value, *text);
            return true;
        }
        if (!value.items(pieces_)) return false;
        if (areAll(ValueKind::text, pieces_))
            sink.joined(key, pieces_);
        else if (areAll(ValueKind::list, pieces_))
            sink.nested(key, value);
        else
            return false;
        return true;
    }

    template <class Key, class Sink>
    void readLookup(const Node& lookup, Key& key, Sink& sink) {
        if (auto text = lookup.asText()) return sink.text(key, Part::lookup, *text);
        if (!lookup.items(pieces_) || !areAll(ValueKind::text, pieces_)) return;
        // The last name, the first name, and the display text.
        if (pieces_.size() != 3) return sink.list(key, Part::lookup, pieces_);
        sink.text(key, Part::lookup, *pieces_[2].asText());
        if (!withPersonNames_) return;
        sink.text(key, Part::firstName, *pieces_[1].asText());
        sink.text(key, Part::lastName, *pieces_[0].asText());
    }

    bool withPersonNames_;
    std::vector<Node> entries_, pieces_;
};

/// Joins the texts of a list with ",".
template <class Node>
std::string joined(const std::vector<Node>& texts) {
    std::string joined;
    for (auto& text : texts) {
        if (&text != &texts.front()) joined += ',';
        joined += *text.asText();
    }
    return joined;
}

/// Returns records as wire dictionaries and leaves out what is not a record.
template <class Node>
std::vector<ValueMap> dictionaries(const std::vector<Node>& records, bool modifySystemProperties, bool withPersonNames);

/// Returns the names whose lists are records of other tables in every module, whatever its fields say.
std::array<std::string_view, 6> recordListNames();
/// Returns whether a key of a dictionary is one of them. An empty list then means no records rather than no text.
bool isRecordList(std::string_view key, bool modifySystemProperties);

}  // namespace tarvo::wire
