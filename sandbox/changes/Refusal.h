#pragma once

#include <string>
#include <string_view>

#include "platform/Value.h"

namespace tarvo::sandbox {

/// Says why a change is refused, in texts that hold no value of a record.
struct Refusal {
    std::string code;
    std::string message;
    ValueMap details = {};
};

inline Refusal invalidData(std::string_view message) { return {"INVALID_DATA", std::string(message)}; }

/// `message` follows the field's name and has no full stop.
inline Refusal invalidField(std::string_view field, std::string_view message) {
    return {"INVALID_DATA", "\"" + std::string(field) + "\" " + std::string(message) + ".",
            ValueMap{{"api_name", field}}};
}

}  // namespace tarvo::sandbox
