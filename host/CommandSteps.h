#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/Host.h"
#include "platform/DispatchQueue.h"
#include "platform/Result.h"

/// What the commands for people have in common. Main thread; the main queue runs while a step waits.
namespace tarvo::host {

/// Longer than a request may take; the library answers before.
constexpr std::chrono::seconds patience{150};

/// Gives what `start` hands to its callback, from any thread; nothing when it does not come in time. `start` returns
/// what must live until then.
template <class T, class Start>
std::optional<T> awaited(Start start) {
    auto answer = std::make_shared<std::optional<T>>();
    auto kept = start(
        [answer](T value) { MainQueue::shared()->async([answer, value = std::move(value)] { *answer = value; }); });
    bool came = MainQueue::shared()->runUntil([&] { return answer->has_value(); }, patience);
    return came ? std::move(*answer) : std::nullopt;
}

/// Opens the database of the account and gives its path. When it cannot be opened, says why in one line on standard
/// error and gives the exit status.
Result<std::string, int> openDatabase(Host& host, const Arguments& arguments);
/// The names of the stored modules; none when modules were never fetched.
std::vector<std::string> storedModuleNames(const std::shared_ptr<DatabaseAdapter>& database);
/// Makes the init call. Gives one line that says why it could not be done, or nothing.
std::optional<std::string> fetchModules(Host& host);
/// A notice of a failed fetch as part of a line.
std::string explanationOf(const std::string& notice);
/// Writes to standard output and gives the exit status.
int print(const std::string& text);

}  // namespace tarvo::host
