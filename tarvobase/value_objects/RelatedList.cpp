#include "tarvobase/value_objects/RelatedList.h"

#include "tarvobase/value_objects/IdentifierConstants.h"

namespace tarvo {

namespace {

using R = RelatedList;
using RelatedListNames = ModuleRelatedListConstants;

const auto relatedListForm = form<R, RelatedListNames>(
    member(&R::moduleName, &RelatedListNames::ModuleName),
    member(&R::relatedModuleName, &RelatedListNames::RelatedModuleName),
    member(&R::dislayName, &RelatedListNames::DislayName), member(&R::listID, &RelatedListNames::ListID),
    member(&R::isDefault, &RelatedListNames::IsDefault), member(&R::relatedOrder, &RelatedListNames::RelatedOrder),
    member(&R::lookupColumn, &RelatedListNames::LookupColumn), member(&R::listName, &RelatedListNames::ListName),
    member(&R::relatedListAPIName, &RelatedListNames::RelatedListAPIName));

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
