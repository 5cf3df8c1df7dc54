#include "tarvobase/records/wire/RecordPlan.h"

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/records/wire/WireEntries.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

RecordPlan::RecordPlan(const FieldList& metadata) : moduleName_(metadata.moduleName()), naming_(metadata.naming()) {
    isNotesModule_ = moduleName_ == rawText(ModuleIdentifier::Case::notes);
    modifySystemProperties_ = variant::rewritesSystemProperties();
    withPersonNames_ = variant::metadataVersion() == GetMetadataApiVersion::lumet;
    checkInSlot_ = slot(ModuleParser::systemKey(FieldAPIConstant.Notes.isCheckIn, modifySystemProperties_));
    checkInParentSlot_ = slot(getLookupColumn(FieldAPIConstant.Notes.seid));
    for (auto name : wire::recordListNames()) slot(ModuleParser::systemKey(name, modifySystemProperties_));
    for (auto field : metadata.allFields()) add(*field);
    for (auto& field : metadata.fieldsOfSharedColumns()) add(field);
    auto identifier = columnPlaces_.find(std::string(RecordUtil::getIdentifierFieldName(moduleName_, naming_)));
    if (identifier != columnPlaces_.end()) identifierColumn_ = identifier->second;
}

void RecordPlan::add(const FieldMetadata& field) {
    auto& identifier = field.fieldIdentifier(naming_);
    auto key = ModuleParser::systemKey(field.fieldAPIName, modifySystemProperties_);
    Field planned{field.fieldType, ruleOf(field, identifier), slot(key), none, column(identifier), none};
    if (hasDisplayText(field, identifier)) {
        planned.lookupSlot = slot(getLookupColumn(key));
        planned.lookupColumn = column(getLookupColumn(identifier));
    }
    fields_.push_back(planned);
}

RecordPlan::Rule RecordPlan::ruleOf(const FieldMetadata& field, const std::string& identifier) const {
    auto& names = *naming_.constant;
    auto key = [&](std::string_view name) { return ModuleParser::systemKey(name, modifySystemProperties_); };
    if (key(identifier) == key(names.attachments)) return Rule::attachments;
    if (identifier == names.tag) return Rule::tags;
    if (identifier == names.Notes.noteTitle) return Rule::noteTitle;
    if (isSubform(field.fieldType) || field.fieldType == FieldDataType::eventParticipant ||
        wire::isRecordList(key(field.fieldAPIName), modifySystemProperties_))
        return Rule::dependentRows;
    return Rule::plain;
}

bool RecordPlan::hasDisplayText(const FieldMetadata& field, const std::string& identifier) const {
    return field.isLookUpField() || identifier == naming_.constant->layout;
}

std::size_t RecordPlan::slot(const std::string& key) {
    auto [found, added] = slots_.try_emplace(key, keys_.size());
    if (added) keys_.push_back(key);
    return found->second;
}

std::size_t RecordPlan::column(const std::string& name) {
    auto [found, added] = columnPlaces_.try_emplace(name, columns_.size());
    if (added) columns_.push_back(name);
    return found->second;
}

}  // namespace tarvo
