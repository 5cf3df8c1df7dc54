#pragma once

#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/Support.h"
#include "benchmarks/init_process/Application.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/change_queues/RecordChangesAssembler.h"
#include "tarvobase/record_changes/RecordChangeUseCases.h"
#include "tarvobase/utils/Util.h"

namespace tarvo::benchmarks {

/// A server and an account that has been downloaded from it, with a thousand leads and no unsent change.
class SignedInAccount {
public:
    static constexpr std::size_t recordCount = 1'000;

    SignedInAccount() {
        if (!server_.listens()) return;
        application_.emplace(folder_.path, server_);
        open();
        Util::performInitialOperations(std::make_shared<BrenUserDefaults>());
        isReady_ = download(adapter(), std::make_shared<Split>());
        auto rows = adapter()->fetchObjects("SELECT ID FROM LeadsRecords", std::nullopt);
        if (!isReady_ || !rows) return;
        for (auto row : *rows) ids.push_back(row.valueOf("ID").textOr(""));
        // The first start of the queue makes its table and its indexes.
        drain();
        ChangeQueues::shared().stop();
    }

    bool isReady() const { return isReady_ && ids.size() >= recordCount; }
    const std::shared_ptr<KelvaDatabasePersistance>& adapter() const { return database_->adapter; }
    void open() { database_.emplace(DatabaseConstants().databaseName()); }
    void close() { database_.reset(); }

    /// Edits three fields of a lead.
    void edit(std::size_t number, const std::string& company) const {
        Record record(ids[number % recordCount], "Leads");
        record.set("COMPANY", company);
        record.set("CITY", "Bonn");
        record.set("PHONE", "+49 228 " + std::to_string(number));
        if (!EditRecordDataManager(RecordChangesAssembler::parts()).editRecord(record, leads())) std::abort();
    }
    /// Sends what waits, and returns when the queue has come to rest. It stays on.
    static void drain() {
        std::promise<void> rested;
        ChangeQueues::shared().start();
        ChangeQueues::shared().whenResting([&] { rested.set_value(); });
        rested.get_future().wait();
    }
    static Module leads() { return {.moduleName = "Leads", .apiName = "Leads"}; }

    std::vector<std::string> ids;

private:
    Folder folder_;
    SandboxProcess server_{folder_.path + "/server", recordCount};
    std::optional<Application> application_;
    std::optional<OpenDatabase> database_;
    bool isReady_ = false;
};

}  // namespace tarvo::benchmarks
