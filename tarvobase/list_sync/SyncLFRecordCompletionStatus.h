#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// How the sync of a list ended.
struct SyncLFRecordCompletionStatus {
    enum class Case {
        syncCompleted,  ///< changes are stored
        syncUptoDate,   ///< nothing has changed
        syncFailed,     ///< the list is as it was, or it was emptied and has to be loaded again
    };

    Case which = Case::syncFailed;
    /// Of `syncCompleted`: whether the server has more records of the list than are stored. Changed records among them
    /// were left to the pages of the list.
    bool isPartiallySaved = false;

    friend bool operator==(const SyncLFRecordCompletionStatus&, const SyncLFRecordCompletionStatus&) = default;
};

template <>
struct EnumCases<SyncLFRecordCompletionStatus::Case> {
    using C = SyncLFRecordCompletionStatus::Case;
    static constexpr EnumCase<C> cases[] = {
        {C::syncCompleted, "syncCompleted"}, {C::syncUptoDate, "syncUptoDate"}, {C::syncFailed, "syncFailed"}};
};

}  // namespace tarvo
