#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "sandbox/Accounts.h"
#include "sandbox/CallTable.h"
#include "sandbox/Faults.h"
#include "sandbox/RequestLog.h"
#include "sandbox/ServerClock.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

struct SandboxOptions {
    std::uint64_t seed = 1;
    /// In each module that stands alone.
    std::size_t recordsPerModule = 250;
    std::vector<Account> accounts;
    /// How fields are named; nothing follows the servlet: columns for "crm", API names for "vestra".
    std::optional<Naming> naming;
    /// Where the request log is written; empty for memory alone.
    std::string logPath;
    bool logValues = false;
};

/// The server behind the transport: takes a request, finds its call, checks the token, applies the fault that is set,
/// logs. Requests may come from many threads; the work of calls is done one at a time, long answers are written beside
/// it.
class Sandbox {
public:
    /// `onStop` runs when a control call asks the server to end, on the thread of that request.
    Sandbox(SandboxOptions options, std::function<void()> onStop);

    Answer handle(const Request& request);
    /// Ends every delay that is running and makes later ones no delay at all.
    void endDelays();

private:
    Answer call(const Request& request, LoggedRequest& logged);
    Answer work(const CallRow& row, const CallPath& path, const Request& request, const std::string& account,
                const std::optional<Fault>& fault);
    void delay(std::chrono::milliseconds duration);

    const SandboxOptions options_;
    const std::function<void()> onStop_;
    const Accounts accounts_;
    ServerClock clock_;
    FaultSwitch faults_;
    RequestLog log_;
    std::mutex dataMutex_;
    DataSet data_;
    std::mutex delayMutex_;
    std::condition_variable delayEnd_;
    bool delaysEnded_ = false;

    friend class Control;
};

}  // namespace tarvo::sandbox
