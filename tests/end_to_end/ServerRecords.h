#pragma once

#include "tests/end_to_end/EndToEnd.h"
#include "tests/end_to_end/TableContents.h"

namespace tarvo::tests {

/// Says how many of the server's records the local tables must hold.
enum class Held { some, all };

/// Expects that the records of these modules, or of all, in the local tables are those of the server, field by field,
/// with their tags and the rows below them. Local rows below records that the server no longer sends may stay.
void expectServerRecords(const EndToEnd& world, EncryptedFile& file, Held held,
                         const std::vector<std::string>& modules = {});

}  // namespace tarvo::tests
