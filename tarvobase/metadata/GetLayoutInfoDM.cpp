#include "tarvobase/metadata/GetLayoutInfoDM.h"

#include "tarvobase/value_objects/layout/ModuleLayoutInfoInDatabase.h"

namespace tarvo {

std::shared_ptr<GetLayoutInfoDM<OrderedLayoutFieldList>> GetLayoutInfoDMA::getOrderedLayoutInfoDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    std::string table(ModuleLayoutInfoDatabaseConstants().TableName);
    return std::make_shared<GetLayoutInfoDM<OrderedLayoutFieldList>>(
        std::make_shared<ModuleLayoutInfoInDatabase>(table, databaseAdapter),
        GetOrderedLayoutFieldListDMA::getOrderedLayoutFieldListDM(databaseAdapter));
}

}  // namespace tarvo
