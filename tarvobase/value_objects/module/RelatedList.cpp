#include "tarvobase/value_objects/module/RelatedList.h"

#include "tarvobase/storage/StoredForm.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

bool RelatedList::isInvitedEvents() const {
    return listName == "Invited Events" && (moduleName == "Leads" || moduleName == "Contacts");
}
bool RelatedList::isInvitees() const { return listName == "Invitees" && moduleName == "Events"; }
bool RelatedList::isContactRole() const { return listName == "Contact Roles" && moduleName == "Deals"; }
std::string RelatedList::_relatedModuleName() const { return isInvitedEvents() ? "Events" : relatedModuleName; }

SortField RelatedList::defaultSortFieldApi() const { return {"Modified_Time", false}; }
SortField RelatedList::defaultSortField() const {
    return {std::string(FieldIdentifierConstants().modifiedTime), false};
}

template struct StoredNames<ModuleRelatedListConstants, RelatedList>;

}  // namespace tarvo
