#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Describe.h"

namespace tarvo {

/// How the last round of a module went, or how far the one under way is. A round asks the server for what changed in
/// one module since its watermark, page by page.
struct SyncRound {
    enum class Outcome { finished, broken, running };
    /// Why a round broke off. What it had stored by then stays, and the next round asks for the same changes again.
    enum class Reason {
        noNetwork,       ///< the server could not be reached, or did not answer in time
        notSignedIn,     ///< there was no token for the request
        outdated,        ///< another account, organisation or database came into force
        refused,         ///< the server refused
        unusableAnswer,  ///< the server's answer cannot be read
        noResponseTime,  ///< the answer does not say when it was made
        noMetadata,      ///< the module has no fields here
        notStored,       ///< the database could not store the page
        noProgress,      ///< the server has more, but its page does not advance
        stopped,         ///< the host stopped it
        interrupted      ///< the program ended between two pages
    };

    std::string moduleName;
    Outcome outcome = Outcome::running;
    std::optional<Reason> reason{};  ///< of a broken round
    std::int64_t pages = 0;          ///< pages stored
    // Records in those pages, not all of which need have a row here.
    std::int64_t added = 0;
    std::int64_t edited = 0;
    std::int64_t deleted = 0;
    std::optional<std::string> watermark{};    ///< the server's time from which the next round goes on
    std::optional<std::int64_t> finishedAt{};  ///< when a round last finished, in the server's milliseconds since 1970

    static constexpr auto fields() {
        using V = SyncRound;
        return describe(field("moduleName", &V::moduleName), field("outcome", &V::outcome), field("reason", &V::reason),
                        field("pages", &V::pages), field("added", &V::added), field("edited", &V::edited),
                        field("deleted", &V::deleted), field("watermark", &V::watermark),
                        field("finishedAt", &V::finishedAt));
    }
    friend bool operator==(const SyncRound&, const SyncRound&) = default;
};

template <>
struct EnumCases<SyncRound::Outcome> {
    using O = SyncRound::Outcome;
    static constexpr EnumCase<O> cases[] = {{O::finished, "finished"}, {O::broken, "broken"}, {O::running, "running"}};
};

template <>
struct EnumCases<SyncRound::Reason> {
    using R = SyncRound::Reason;
    static constexpr EnumCase<R> cases[] = {
        {R::noNetwork, "noNetwork"},   {R::notSignedIn, "notSignedIn"},       {R::outdated, "outdated"},
        {R::refused, "refused"},       {R::unusableAnswer, "unusableAnswer"}, {R::noResponseTime, "noResponseTime"},
        {R::noMetadata, "noMetadata"}, {R::notStored, "notStored"},           {R::noProgress, "noProgress"},
        {R::stopped, "stopped"},       {R::interrupted, "interrupted"}};
};

}  // namespace tarvo
