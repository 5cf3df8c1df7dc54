#pragma once

#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/value_objects/account/User.h"

namespace tarvo {

/// Reads the row of the user who is signed in; the data are the row itself, or a list with that row alone. A row of
/// fewer than 16 columns is `lessNumberOfKeys`; a column that is read and no text fails the row, a null counts as
/// empty.
class CurrentUserParser final : public ParserProtocol<User, BaseResultInfo> {
public:
    Result<User, ParserError> parseResult(const ValueList& rows, const BaseResultInfo& info) override;
};

}  // namespace tarvo
