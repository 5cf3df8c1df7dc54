#pragma once

#include <memory>

#include "platform/Value.h"

namespace tarvo {

/// Returns an object that has no JSON form and that no statement can bind.
inline Value opaqueValue() {
    struct Opaque final : ValueObject {
        std::string_view typeName() const override { return "Opaque"; }
    };
    return std::shared_ptr<const ValueObject>(std::make_shared<Opaque>());
}

}  // namespace tarvo
