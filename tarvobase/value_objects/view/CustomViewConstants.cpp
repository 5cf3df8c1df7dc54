#include "tarvobase/value_objects/view/CustomViewConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/storage/StoredForm.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

template struct StoredNames<CustomViewConstants, CustomView>;

const CustomViewDatabaseConstants& customViewDBConstants(bool hasServerCriteria) {
    static constexpr CustomViewDatabaseConstants ownCriteria;
    static constexpr CustomViewWithOfflineQueryDatabaseConstants serversCriteria;
    if (hasServerCriteria) return serversCriteria;
    return ownCriteria;
}

const CustomViewDatabaseConstants& CommonConfigration::customViewDBConstants() const {
    return tarvo::customViewDBConstants(serverCVCriteria.get());
}

}  // namespace tarvo
