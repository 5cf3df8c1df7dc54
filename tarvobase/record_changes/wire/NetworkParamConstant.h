#pragma once

#include <string_view>

namespace tarvo {

/// The names of the parameters and headers of requests that change records. The parameters of a queued change are kept
/// under the same names.
struct NetworkParamConstant {
    struct AddEditRecord {
        static constexpr std::string_view module = "module";
        static constexpr std::string_view moduleAPI = "moduleAPI";
    };
    struct DeleteRecord {
        static constexpr std::string_view id = "id";
        static constexpr std::string_view module = "module";
        static constexpr std::string_view moduleAPI = "moduleAPI";
    };
    /// The header with the key of a payload. The server applies a payload once, however often it arrives.
    static constexpr std::string_view transactionIdHeader = "x-transaction-id";
};

}  // namespace tarvo
