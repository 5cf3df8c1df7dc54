#include "tarvobase/init_process/parsers/CurrentUserParser.h"

#include "tarvobase/init_process/parsers/InitBlocks.h"
#include "tarvobase/network_layer/PositionalRow.h"

namespace tarvo {

namespace {
constexpr std::size_t columnCount = 16;
}

// Columns 3 to 7 are for older clients.
Result<User, ParserError> CurrentUserParser::parseResult(const ValueList& rows, const BaseResultInfo&) {
    auto& columns = singleRow(rows);
    if (columns.size() < columnCount) return ParserError(ParserError::Case::lessNumberOfKeys);
    PositionalRow row(columns, PositionalRow::Mode::strict);
    User user;
    user.BrenUID = row.text(0);
    user.name = row.text(1);
    user.email = row.text(2);
    user.firstName = row.text(8);
    user.lastName = row.text(9);
    user.id = row.text(10);
    user.status = row.text(11);
    user.confirm = row.flag(12);
    user.role = row.text(13);
    user.profile = row.text(14);
    user.profileID = row.text(15);
    if (row.error()) return *row.error();
    return user;
}

}  // namespace tarvo
