#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"

namespace tarvo {

/// An organisation of the account.
struct Organisation {
    std::string orgID;
    std::string orgName;
    bool isAppDefault = false;
    bool isWebDefault = false;

    static constexpr auto fields() {
        return describe(field("orgID", &Organisation::orgID), field("orgName", &Organisation::orgName),
                        field("isAppDefault", &Organisation::isAppDefault), field("isWebDefault", &Organisation::isWebDefault));
    }
    friend bool operator==(const Organisation&, const Organisation&) = default;
};

}  // namespace tarvo
