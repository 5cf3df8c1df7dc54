#include "tarvobase/change_queues/WhyItWaits.h"

#include <vector>

#include "platform/Text.h"
#include "tarvobase/utils/Util.h"

namespace tarvo {

namespace {

using WaitingFor = Change::WaitingFor;

std::string momentOf(std::int64_t milliseconds) {
    return Util::DateFormatters::iso8601DateFormatter().string(milliseconds / 1000).value_or("a moment to come");
}

/// Returns ", <what> <moment>", or an empty text if the moment is not known.
std::string withMoment(const char* what, const std::optional<std::int64_t>& milliseconds) {
    return milliseconds ? std::string(", ") + what + " " + momentOf(*milliseconds) : std::string();
}

std::string namesOf(const WaitingFor& waitingFor) {
    std::vector<std::string> texts;
    for (auto number : waitingFor.numbers) texts.push_back(std::to_string(number));
    if (texts.empty()) return "another change";
    return (texts.size() == 1 ? "change " : "changes ") + text::join(texts, ", ");
}

/// Returns a text that may stand in the middle of a sentence.
std::string withoutFullStop(std::string text) {
    while (!text.empty() && text.back() == '.') text.pop_back();
    return text;
}

/// Returns what the server said last to a change that was given up.
std::string lastWordsOf(const ErrorResponse& error) {
    auto last = error.details ? error.details->find("lastRefusal") : nullptr;
    auto message = last && last->asMap() ? last->asMap()->valueOf("message").textOr("") : "";
    return message.empty() ? "" : "; the last time: " + withoutFullStop(std::move(message));
}

std::string whyItFailed(const Change& change) {
    auto none = ErrorResponse{};
    auto& error = change.error ? *change.error : none;
    if (error.code == ErrorResponse::maxSyncAttemptReached().code)
        return "was started " + std::to_string(change.attempts) + " times and is not sent any more" +
               lastWordsOf(error);
    if (error.code == ErrorResponse::dependingTransactionFailed().code)
        return "names a record whose change has failed or is gone";
    if (error.code == ErrorResponse::parsingFailed().code)
        return "may have reached the server, whose answer could not be read";
    return "was refused: " + withoutFullStop(error.message);
}

std::string whatItWaitsFor(const WaitingFor& waitingFor) {
    using R = Change::Reason;
    switch (waitingFor.reason) {
        case R::earlierChange:
            return "waits for " + namesOf(waitingFor) + ", which must go first";
        case R::newRecord:
            return "waits for " + namesOf(waitingFor) + ", which adds a record that it names";
        case R::notSendable:
            return "waits for a later version, since changes of its kind are not sent yet";
        case R::noToken:
            return "waits for somebody to sign in, since there is no token" +
                   withMoment("and is tried again at", waitingFor.until);
        case R::server:
            return "has had no answer of the server" +
                   (waitingFor.since ? " since " + momentOf(*waitingFor.since) : std::string()) +
                   withMoment("and is sent again at", waitingFor.until);
        case R::otherProcess:
            return "waits while another program sends" + withMoment("and is looked at again at", waitingFor.until);
        case R::queueOff:
            return "is not sent, since sending is switched off";
        case R::otherScope:
            return "waits until the account and the organisation in which it was made are in use again";
        case R::heldBack:
            return "is held back for newer changes of its record";
    }
    return "waits";
}

}  // namespace

std::string whyItWaits(const Change& change) {
    switch (change.state) {
        case Change::State::ready:
            return "goes at the next opportunity";
        case Change::State::sending:
            return "is on its way to the server";
        case Change::State::failed:
            return whyItFailed(change);
        case Change::State::waiting:
            break;
    }
    return whatItWaitsFor(change.waitingFor.value_or(WaitingFor{.reason = Change::Reason::heldBack}));
}

}  // namespace tarvo
