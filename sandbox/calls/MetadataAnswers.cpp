#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/RecordTables.h"

namespace tarvo::sandbox::calls {
namespace {

Value number(std::size_t value) { return std::to_string(value); }

/// Writes the sections of one module. Rows are positional; numbers and flags in them are texts.
class ModuleSections {
public:
    ModuleSections(const ModuleData& module, const Call& call)
        : module_(module), metadata_(call.data.metadata.find(module.name)->second), call_(call) {}

    ValueList all() const {
        ValueList sections{relatedLists(), layouts(), layoutFields(),   picklists(),
                           cards(),        fields(),  dependentFields()};
        // Section 7 belongs to older clients. Modules whose rows lie under others are never sorted in a related list.
        sections.push_back(ValueList{});
        if (!isDependent()) sections.push_back(relatedSort());
        return sections;
    }

    ValueList tables() const {
        ValueList list;
        auto own = recordTables(module_.name, metadata_, call_.naming);
        list.push_back(ValueMap{{"module", module_.name},
                                {"query", own.records},
                                {"customViewTable", own.customViewMap},
                                {"relatedListTable", own.relatedListMap},
                                {"lookupRecordsTable", own.lookupMap}});
        for (const auto& name : metadata_.dependents) {
            auto below = recordTables(name, call_.data.metadata.find(name)->second, call_.naming);
            list.push_back(
                ValueMap{{"module", name}, {"query", below.records}, {"relatedListTable", below.relatedListMap}});
        }
        return list;
    }

private:
    bool isDependent() const { return !module_.hasOwnLists; }

    ValueList relatedLists() const {
        ValueList rows;
        for (const auto& list : metadata_.relatedLists)
            rows.push_back(ValueList{list.relatedModule, list.label, list.id, list.name, list.apiName,
                                     number(rows.size() + 1), flag(!list.relatedModule.starts_with("CustomModule"))});
        return rows;
    }

    ValueList layouts() const {
        ValueList rows;
        for (const auto& layout : metadata_.layouts)
            rows.push_back(
                ValueList{module_.name, layout.id, layout.name, flag(layout.isAccessible), flag(layout.isDefault)});
        return rows;
    }

    ValueList layoutFields() const {
        ValueList rows;
        for (const auto& layout : metadata_.layouts)
            for (std::size_t i = 0; i < layout.sections.size(); ++i)
                addSection(rows, layout, layout.sections[i], i + 1);
        return rows;
    }

    void addSection(ValueList& rows, const LayoutData& layout, const std::string& section, std::size_t sequence) const {
        std::size_t position = 0;
        for (const auto& field : metadata_.fields) {
            if (field.section != section) continue;
            rows.push_back(ValueList{layout.id, field.id, field.apiName, field.column, module_.name, section,
                                     section + " Information", number(sequence),
                                     flag(field.isMandatory && layout.isDefault), defaultValue(field),
                                     number(++position), flag(field.type == "subform"), additionalInfo(field)});
        }
    }

    static Value defaultValue(const FieldData& field) {
        if (field.type == "boolean") return "false";
        return field.isMandatory && !field.picklist.empty() ? field.picklist.front().value : "";
    }

    Value additionalInfo(const FieldData& field) const {
        if (field.type == "formula")
            return ValueMap{{"formula", ValueMap{{"expression", "Annual_Revenue*0.1"}, {"return_type", "double"}}}};
        if (field.type != "subform") return ValueMap{};
        const auto* target = subformOf(field);
        if (!target) return ValueMap{};
        const auto& below = call_.data.metadata.find(target->name)->second;
        return ValueMap{{"subform_layout_id", below.layouts.front().id}, {"maximum_rows", 25}, {"reorder_rows", true}};
    }

    const ModuleData* subformOf(const FieldData& field) const {
        auto pair = field.preferences.asMap() ? field.preferences.asMap()->valueOf("subform") : Value();
        const auto* names = pair.asList();
        return names && names->size() == 2 ? call_.data.module(names->at(1).textOr("")) : nullptr;
    }

    ValueList picklists() const {
        ValueList rows;
        for (const auto& layout : metadata_.layouts)
            for (const auto& field : metadata_.fields)
                for (std::size_t i = 0; i < field.picklist.size(); ++i) {
                    const auto& value = field.picklist[i];
                    rows.push_back(ValueList{value.value, value.label, field.id, field.apiName, field.column,
                                             module_.name, layout.id, value.map, number(i + 1)});
                }
        return rows;
    }

    // What a card of the module and a row of it in a related list show.
    ValueList cards() const {
        ValueList card, row;
        for (const auto& field : metadata_.fields) {
            if (field.section.empty() || field.type == "subform") continue;
            if (card.size() < 5) card.push_back(nameOf(field));
            if (row.size() < 4 && (field.isMandatory || field.isQuickCreate)) row.push_back(nameOf(field));
        }
        return {std::move(card), std::move(row)};
    }

    std::string nameOf(const FieldData& field) const {
        return call_.naming == Naming::column ? field.column : field.apiName;
    }

    ValueList fields() const {
        ValueList rows;
        for (const auto& field : metadata_.fields) rows.push_back(fieldRow(module_.name, field));
        return rows;
    }

    ValueList dependentFields() const {
        ValueList rows;
        for (const auto& name : metadata_.dependents)
            for (const auto& field : call_.data.metadata.find(name)->second.fields)
                rows.push_back(fieldRow(name, field));
        return rows;
    }

    static Value fieldRow(const std::string& module, const FieldData& field) {
        return ValueList{field.id,
                         field.apiName,
                         module,
                         field.column,
                         field.label,
                         field.type,
                         number(static_cast<std::size_t>(field.maxLength)),
                         flag(field.isReadOnly),
                         flag(field.isCustom),
                         flag(field.isUnique),
                         flag(field.isQuickCreate),
                         flag(field.isKey),
                         flag(field.isUnsorted),
                         field.target,
                         field.relatedListId,
                         flag(field.isVisible),
                         field.mode,
                         field.preferences};
    }

    // Solutions leave the order to the client.
    ValueList relatedSort() const {
        if (module_.name == "Solutions") return {};
        return {call_.naming == Naming::column ? "MODIFIEDTIME" : "Modified_Time", "desc"};
    }

    const ModuleData& module_;
    const ModuleMetadata& metadata_;
    const Call& call_;
};

}  // namespace

Reply metadata(const Call& call) {
    auto names = namesIn(call.request.parameter("module").value_or(""));
    if (names.empty()) names = namesIn(call.request.parameter("moduleAPI").value_or(""));
    ValueList entries;
    for (const auto& name : names) {
        const auto* module = call.data.module(name);
        if (!module) {
            entries.push_back(envelope::failedEntry(name, "INVALID_MODULE", "There is no such module.", call.now));
            continue;
        }
        ModuleSections sections(*module, call);
        entries.push_back(
            envelope::entry(module->name, sections.all(), call.now, ValueMap{{"tables", sections.tables()}}));
    }
    return Reply::of(envelope::answer(std::move(entries), call.now));
}

}  // namespace tarvo::sandbox::calls
