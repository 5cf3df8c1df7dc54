#pragma once

#include "bridge/forms/JsonForm.h"
#include "tarvobase/list_sync/SyncLFRecordCompletionStatus.h"

/// The JSON forms of syncs.
namespace tarvo::bridge {

/// `{"case":"syncCompleted","value":{"isPartiallySaved":..}}`, or the case alone.
template <>
struct JsonForm<SyncLFRecordCompletionStatus> {
    static Value write(const SyncLFRecordCompletionStatus& status) {
        ValueMap map{{"case", caseName(status.which)}};
        if (status.which == SyncLFRecordCompletionStatus::Case::syncCompleted)
            map.set("value", ValueMap{{"isPartiallySaved", status.isPartiallySaved}});
        return map;
    }
};

}  // namespace tarvo::bridge
