#include "tarvobase/records/wire/ModuleParser.h"

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/WireEntries.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

std::string_view suffixOf(wire::Part part) {
    switch (part) {
        case wire::Part::value:
            return {};
        case wire::Part::lookup:
            return lookupSuffix;
        case wire::Part::firstName:
            return firstNameSuffix;
        case wire::Part::lastName:
            return lastNameSuffix;
    }
    return {};
}

/// Writes the entries of one record into a wire dictionary.
template <class Node>
class WireDictionarySink {
public:
    WireDictionarySink(ValueMap& record, bool modifySystemProperties, bool withPersonNames)
        : record_(record), modifySystemProperties_(modifySystemProperties), withPersonNames_(withPersonNames) {}

    std::string key(std::string_view name) const { return ModuleParser::systemKey(name, modifySystemProperties_); }
    void remove(const std::string& key) { record_.remove(key); }
    void text(const std::string& key, wire::Part part, std::string_view text) { set(key, part, text); }
    void list(const std::string& key, wire::Part part, const std::vector<Node>& texts) {
        ValueList list;
        for (auto& text : texts) list.emplace_back(*text.asText());
        set(key, part, std::move(list));
    }
    void joined(const std::string& key, const std::vector<Node>& texts) {
        bool noRecords = texts.empty() && wire::isRecordList(key, modifySystemProperties_);
        record_.set(key, noRecords ? Value(ValueList()) : Value(wire::joined(texts)));
    }
    void nested(const std::string& key, const Node& records) {
        std::vector<Node> items;
        records.items(items);
        auto maps = wire::dictionaries(items, modifySystemProperties_, withPersonNames_);
        record_.set(key, ValueList(maps.begin(), maps.end()));
    }

private:
    void set(const std::string& key, wire::Part part, Value value) {
        part == wire::Part::value ? record_.set(key, std::move(value))
                                  : record_.set(key + std::string(suffixOf(part)), std::move(value));
    }
    ValueMap& record_;
    bool modifySystemProperties_, withPersonNames_;
};

std::optional<std::string> moduleOf(std::string_view text) {
    if (text.find("Lead") != std::string_view::npos) return "Leads";
    if (text.find("Account") != std::string_view::npos) return "Accounts";
    return std::nullopt;
}

}  // namespace

namespace wire {

template <class Node>
std::vector<ValueMap> dictionaries(const std::vector<Node>& records, bool modifySystemProperties,
                                   bool withPersonNames) {
    std::vector<ValueMap> maps;
    maps.reserve(records.size());
    RecordReader<Node> reader(withPersonNames);
    for (auto& record : records) {
        ValueMap map;
        WireDictionarySink<Node> sink(map, modifySystemProperties, withPersonNames);
        if (reader.read(record, sink)) maps.push_back(std::move(map));
    }
    return maps;
}
template std::vector<ValueMap> dictionaries(const std::vector<ValueNode>&, bool, bool);
template std::vector<ValueMap> dictionaries(const std::vector<json::Element>&, bool, bool);

std::array<std::string_view, 6> recordListNames() {
    auto& names = FieldAPIConstant;
    return {names.tag,      names.Events.participants, names.PriceBooks.pricingDetails,
            names.comments, names.productDetails,      names.Notes.attachments};
}

bool isRecordList(std::string_view key, bool modifySystemProperties) {
    auto names = recordListNames();
    return std::any_of(names.begin(), names.end(),
                       [&](auto name) { return key == ModuleParser::systemKey(name, modifySystemProperties); });
}

}  // namespace wire

std::optional<ParsedRecords> ModuleParser::parseRecord(const Value* data, std::string_view forModule) {
    auto list = data ? data->asList() : nullptr;
    return list ? std::optional(parseRecord(*list, forModule)) : std::nullopt;
}

ParsedRecords ModuleParser::parseRecord(const ValueList& data, std::string_view forModule) {
    std::vector<wire::ValueNode> records;
    records.reserve(data.size());
    for (auto& record : data) records.emplace_back(record);
    return {wire::dictionaries(records, variant::rewritesSystemProperties(),
                               variant::metadataVersion() == GetMetadataApiVersion::lumet),
            moduleOf(forModule)};
}

std::string ModuleParser::systemKey(std::string_view name) {
    return systemKey(name, variant::rewritesSystemProperties());
}

std::string ModuleParser::systemKey(std::string_view name, bool modifySystemProperties) {
    if (!modifySystemProperties || !name.starts_with('$')) return std::string(name);
    if (name.starts_with("$se")) return std::string(name.substr(1));
    return std::string("se_").append(name.substr(1));
}

}  // namespace tarvo
