#include "tarvobase/value_objects/CustomViewConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/CustomView.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<CustomViewConstants, CustomView>;

const CustomViewDatabaseConstants& CommonConfigration::customViewDBConstants() const {
    static constexpr CustomViewDatabaseConstants ownCriteria;
    static constexpr CustomViewWithOfflineQueryDatabaseConstants serversCriteria;
    if (serverCVCriteria.get()) return serversCriteria;
    return ownCriteria;
}

}  // namespace tarvo
