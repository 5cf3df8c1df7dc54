#include "tarvobase/value_objects/CustomViewConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

const CustomViewConstants& CommonConfigration::customViewDBConstants() const {
    static constexpr CustomViewDatabaseConstants ownCriteria;
    static constexpr CustomViewWithOfflineQueryDatabaseConstants serversCriteria;
    if (serverCVCriteria.get()) return serversCriteria;
    return ownCriteria;
}

}  // namespace tarvo
