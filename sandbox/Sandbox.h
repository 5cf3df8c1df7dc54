#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/ThreadSafety.h"
#include "sandbox/CallTable.h"
#include "sandbox/Faults.h"
#include "sandbox/RequestLog.h"
#include "sandbox/SandboxAccounts.h"
#include "sandbox/ServerClock.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

/// Who shares a data set: everybody, each account by itself, or each organisation that an account chooses. The ids of
/// two data sets differ in their first ten digits, so that a client's mix-up can be found by its texts.
enum class DataSharing { everybody, account, organisation };

struct SandboxOptions {
    std::uint64_t seed = 1;
    /// The number of records in each module that has lists of its own.
    std::size_t recordsPerModule = 250;
    /// A page of changes has at most this many records.
    std::size_t syncPage = 10'000;
    /// A list with more changes than this is answered as too much for the changes alone.
    std::size_t listReset = 1'000;
    std::vector<Account> accounts;
    DataSharing dataSharing = DataSharing::everybody;
    /// How fields are named. Nullopt follows the servlet: columns for "crm", API names for "vestra".
    std::optional<Naming> naming;
    /// Where the request log is written; empty keeps it only in memory.
    std::string logPath;
    bool logValues = false;
};

/// Answers requests: finds the call, checks the token, applies the fault that is set, and logs. Requests may come from
/// many threads. Handlers of calls run one at a time; long answers are written in parallel.
class Sandbox {
public:
    /// `onStop` runs when a control call asks the server to end, on the thread of that request.
    Sandbox(SandboxOptions options, std::function<void()> onStop);

    Answer handle(const Request& request);
    /// Ends every delay that is running. Later ones run as they are set.
    void releaseDelays();
    /// Ends every delay that is running and skips all later ones.
    void endDelays();

private:
    Answer call(const Request& request, LoggedRequest& logged);
    Answer work(const CallRow& row, const CallPath& path, const Request& request, const std::string& account,
                const std::optional<Fault>& fault);
    void delay(std::chrono::milliseconds duration);
    DataSet& dataFor(const std::string& account, const std::string& organisation) TARVO_REQUIRES(dataMutex_);

    const SandboxOptions options_;
    const std::function<void()> onStop_;
    const Accounts accounts_;
    ServerClock clock_;
    FaultSwitch faults_;
    RequestLog log_;
    platform::Mutex dataMutex_;
    DataSet data_ TARVO_GUARDED_BY(dataMutex_);
    std::map<std::pair<std::string, std::size_t>, std::unique_ptr<DataSet>> ownData_ TARVO_GUARDED_BY(dataMutex_);
    platform::Mutex delayMutex_;
    platform::Condition delayEnd_;
    std::uint64_t releases_ TARVO_GUARDED_BY(delayMutex_) = 0;
    bool delaysEnded_ TARVO_GUARDED_BY(delayMutex_) = false;

    friend class Control;
};

}  // namespace tarvo::sandbox
