#include "sandbox/Sandbox.h"

#include <algorithm>

#include "platform/Json.h"
#include "platform/Log.h"
#include "sandbox/Control.h"
#include "sandbox/Envelope.h"

namespace tarvo::sandbox {
namespace {

constexpr const char* jsonType = "application/json;charset=UTF-8";

// Parses an answer that is written as text, so that a fault can change its values.
void parseWrittenBody(Reply& reply) {
    if (!reply.writeBody) return;
    reply.json = json::parse(reply.writeBody()).value_or(Value());
    reply.writeBody = nullptr;
}

Answer toAnswer(Reply reply) {
    if (reply.writeBody) return {reply.status, reply.writeBody(), jsonType, Delivery::whole};
    if (!reply.contentType.empty())
        return {reply.status, std::move(reply.bytes), std::move(reply.contentType), Delivery::whole};
    return {reply.status, json::write(reply.json).value_or("null"), jsonType, Delivery::whole};
}

Answer failure(int status, std::string_view code, std::string_view message) {
    return toAnswer(Reply::of(envelope::failure(code, message), status));
}

Answer noAnswer() { return {0, "", "", Delivery::none}; }

const CallRow* findCall(std::string_view method, std::string_view name) {
    auto table = callTable();
    auto found = std::find_if(table.begin(), table.end(),
                              [&](const CallRow& row) { return row.method == method && row.name == name; });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace

Sandbox::Sandbox(SandboxOptions options, std::function<void()> onStop)
    : options_(std::move(options)),
      onStop_(std::move(onStop)),
      accounts_(options_.accounts),
      log_(options_.logPath, options_.logValues),
      data_(options_.seed, accounts_, options_.recordsPerModule) {
    data_.sync.pageLimit = options_.syncPage;
    data_.sync.listReset = options_.listReset;
}

Answer Sandbox::handle(const Request& request) {
    if (request.path.starts_with("/control/")) return toAnswer(Control(*this).handle(request));
    auto begin = platform::Clock::steadyNow();
    LoggedRequest logged;
    logged.method = request.method;
    logged.path = request.path;
    logged.parameters = log_.describeParameters(request);
    logged.receivedAt = clock_.milliseconds();
    auto answer = call(request, logged);
    logged.status = answer.status;
    logged.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(platform::Clock::steadyNow() - begin).count();
    log_.add(logged);
    return answer;
}

Answer Sandbox::call(const Request& request, LoggedRequest& logged) {
    auto path = parseCallPath(request.path);
    const auto* row = path ? findCall(request.method, path->name) : nullptr;
    if (!row) return failure(404, "INVALID_URL_PATTERN", "There is no such call.");
    const auto* account = accounts_.of(request);
    if (!account) return failure(401, "AUTHENTICATION_FAILURE", "The token is missing or not valid.");
    logged.account = account->id;
    logged.organisation = request.organisation;
    logged.transactionId = request.transactionId;

    auto fault = faults_.take(row->name);
    if (fault) logged.fault = faultName(fault->kind);
    if (fault && fault->kind == FaultKind::delay) delay(fault->duration);
    if (fault && fault->kind == FaultKind::dropBefore) return noAnswer();
    if (fault && fault->kind == FaultKind::errorEnvelope) return failure(fault->status, fault->code, fault->message);
    auto answer = work(*row, *path, request, account->id, fault);
    if (fault && fault->kind == FaultKind::delayAfter) delay(fault->duration);
    if (fault && fault->kind == FaultKind::dropAfter) return noAnswer();
    if (fault && fault->kind == FaultKind::truncate) answer.delivery = Delivery::half;
    if (fault && fault->kind == FaultKind::nonJson)
        return {200, "<html><body>Please sign in.</body></html>", "text/html", Delivery::whole};
    return answer;
}

Answer Sandbox::work(const CallRow& row, const CallPath& path, const Request& request, const std::string& account,
                     const std::optional<Fault>& fault) {
    auto naming = options_.naming.value_or(path.servlet == "crm" ? Naming::column : Naming::api);
    Reply reply;
    {
        platform::MutexLock lock(dataMutex_);
        reply = row.handle({request, account, dataFor(account, request.organisation), clock_.tick(), clock_, naming,
                            path.version, path.name});
    }
    if (fault && touchesContent(fault->kind)) {
        parseWrittenBody(reply);
        damage(reply.json, *fault);
    }
    return toAnswer(std::move(reply));
}

// Data sets are made at the first call that needs them and never removed: answers are written without the lock.
DataSet& Sandbox::dataFor(const std::string& account, const std::string& organisation) {
    if (options_.dataSharing == DataSharing::everybody) return data_;
    auto same = [&](const Account& one) { return one.id == account; };
    auto place = std::find_if(options_.accounts.begin(), options_.accounts.end(), same) - options_.accounts.begin();
    auto make = [&](std::size_t chosen) -> DataSet& {
        dataMutex_.assumeHeld();
        auto& data = ownData_[{account, chosen}];
        auto seed = options_.seed + 1000 * static_cast<std::uint64_t>(place + 1) + chosen;
        if (!data) {
            data = std::make_unique<DataSet>(seed, Accounts({{account, ""}}), options_.recordsPerModule,
                                             account + ".example.com");
            data->sync.pageLimit = options_.syncPage;
            data->sync.listReset = options_.listReset;
        }
        return *data;
    };
    auto& own = make(0);
    if (options_.dataSharing == DataSharing::account) return own;
    for (std::size_t chosen = 1; chosen < own.organisations.size(); ++chosen)
        if (own.organisations[chosen].id == organisation) {
            auto& data = make(chosen);
            data.organisations = own.organisations;
            return data;
        }
    return own;
}

// Waits on a condition, so that a server that is shutting down need not wait for its own delays.
void Sandbox::delay(std::chrono::milliseconds duration) {
    platform::MutexLock lock(delayMutex_);
    auto seen = releases_;
    delayEnd_.waitFor(lock, duration, [&] {
        delayMutex_.assumeHeld();
        return delaysEnded_ || releases_ != seen;
    });
}

void Sandbox::releaseDelays() {
    platform::MutexLock lock(delayMutex_);
    ++releases_;
    delayEnd_.notifyAll();
}

void Sandbox::endDelays() {
    platform::MutexLock lock(delayMutex_);
    delaysEnded_ = true;
    delayEnd_.notifyAll();
}

}  // namespace tarvo::sandbox
