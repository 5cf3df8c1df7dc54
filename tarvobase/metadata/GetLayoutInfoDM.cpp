#include "tarvobase/metadata/GetLayoutInfoDM.h"

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

std::shared_ptr<GetLayoutInfoDM<OrderedLayoutFieldList>> GetLayoutInfoDMA::getOrderedLayoutInfoDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    return std::make_shared<GetLayoutInfoDM<OrderedLayoutFieldList>>(
        Stores::over(databaseAdapter).layouts(),
        GetOrderedLayoutFieldListDMA::getOrderedLayoutFieldListDM(databaseAdapter));
}

}  // namespace tarvo
