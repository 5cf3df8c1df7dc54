#include "tarvobase/value_objects/RelatedList.h"

#include "tarvobase/value_objects/IdentifierConstants.h"

namespace tarvo {

namespace {

using R = RelatedList;
using Names = ModuleRelatedListConstants;

const auto relatedListForm =
    form<R, Names>(member(&R::moduleName, &Names::ModuleName), member(&R::relatedModuleName, &Names::RelatedModuleName),
                   member(&R::dislayName, &Names::DislayName), member(&R::listID, &Names::ListID),
                   member(&R::isDefault, &Names::IsDefault), member(&R::relatedOrder, &Names::RelatedOrder),
                   member(&R::lookupColumn, &Names::LookupColumn), member(&R::listName, &Names::ListName),
                   member(&R::relatedListAPIName, &Names::RelatedListAPIName));

}  // namespace

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

ValueMap ModuleRelatedListConstants::getDictionary(const RelatedList& list) const {
    return relatedListForm.toMap(list, *this, Form::plain);
}
RelatedList ModuleRelatedListConstants::getValue(const ValueMap& map) const {
    return relatedListForm.read(map, *this, Form::plain);
}
ValueMap ModuleRelatedListDatabaseConstants::getDictionary(const RelatedList& list) const {
    return relatedListForm.toMap(list, *this, Form::table);
}
RelatedList ModuleRelatedListDatabaseConstants::getValue(const Row& row) const {
    return relatedListForm.read(row, *this, Form::table);
}

}  // namespace tarvo
