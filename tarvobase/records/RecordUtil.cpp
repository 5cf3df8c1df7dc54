#include "tarvobase/records/RecordUtil.h"

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

std::string withEncodedCommas(std::string_view text) { return text::join(text::split(text, ","), separatorString); }
std::string withDecodedCommas(std::string_view text) { return text::join(text::split(text, separatorString), ","); }

std::string RecordUtil::getTableName(std::string_view moduleName) {
    if (moduleName == rawText(ModuleIdentifier::Case::approvals)) return "APPROVAL_PROCESS_RECORDS";
    return std::string(moduleName) + "Records";
}

std::string RecordUtil::getSearchTableName(std::string_view moduleName) {
    return std::string(moduleName) + "RecordsSearch";
}

// Compares the raw name instead of making a `ModuleIdentifier` of it, which logs unknown names: names that are not a
// module are common here.
std::string_view RecordUtil::getIdentifierFieldName(std::string_view forModule, const FieldIdentifier& naming) {
    using M = ModuleIdentifier::Case;
    auto& names = *naming.constant;
    if (forModule == rawText(M::comments)) return names.Comments.id;
    if (forModule == rawText(M::notes)) return names.Notes.id;
    if (forModule == rawText(M::eventInvitees)) return names.EventInvitees.participant;
    return names.id;
}

std::string_view RecordUtil::getIdentifierFieldName(std::string_view forModule) {
    return getIdentifierFieldName(forModule, namingInForce());
}

std::string_view RecordUtil::getIdentifierFieldName(const ModuleIdentifier& forModule) {
    return getIdentifierFieldName(forModule.rawValue());
}

bool RecordUtil::isNewRecord(const Record& record) { return isNewRecord(record.recordId()); }

}  // namespace tarvo
