#pragma once

#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/value_objects/account/User.h"

namespace tarvo {

/// Reads the row of the signed-in user. The data are the row itself, or a list that contains only that row. Fails with
/// `lessNumberOfKeys` if the row has fewer than 16 columns, and with the type error if a column that is read is not a
/// text; a null counts as empty.
class CurrentUserParser final : public ParserProtocol<User, BaseResultInfo> {
public:
    Result<User, ParserError> parseResult(const ValueList& rows, const BaseResultInfo& info) override;
};

}  // namespace tarvo
