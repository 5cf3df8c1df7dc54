#include "tarvobase/value_objects/view/CustomViewConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/storage/StoredForm.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

template struct StoredNames<CustomViewConstants, CustomView>;

const CustomViewDatabaseConstants& CommonConfigration::customViewDBConstants() const {
    static constexpr CustomViewDatabaseConstants ownCriteria;
    static constexpr CustomViewWithOfflineQueryDatabaseConstants serversCriteria;
    if (serverCVCriteria.get()) return serversCriteria;
    return ownCriteria;
}

}  // namespace tarvo
