#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/ThreadSafety.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/sync/RecordsSyncNetworkService.h"
#include "tarvobase/sync/SyncRounds.h"

namespace tarvo {

/// Receives the notices of `RecordsSyncDataManager`, on the queue of the work. Notices of one round come one after
/// another, and those of different modules may come at the same time.
class RecordsSyncDataManagerDelegate : public virtual platform::Object {
public:
    using Records = std::optional<std::vector<Record>>;
    using Ids = std::optional<std::vector<std::string>>;

    virtual void syncStarted(const std::string& for_) { static_cast<void>(for_); }
    /// Brings a page that is stored: the records as the server sent them, without changes that wait here. A list that
    /// the server did not send, or that cannot be read, is absent.
    virtual void syncResultsFetched(const std::string& moduleName, const Records& addedRecords,
                                    const Records& editedRecords, const Ids& deletedRecordIDs) {
        static_cast<void>(moduleName), static_cast<void>(addedRecords), static_cast<void>(editedRecords),
            static_cast<void>(deletedRecordIDs);
    }
    /// Returns whether `syncResultsFetched` is wanted, on the queue of the work. Making thousands of records takes time
    /// and memory, so that none are made if nobody wants them.
    virtual bool wantsSyncResults() const { return true; }
    /// A page of the round is stored.
    virtual void syncProgressed(const SyncRound& round) { static_cast<void>(round); }
    /// The round has ended, finished or broken. Each accepted call of `syncRecords` gets this callback once.
    virtual void syncEnded(const SyncRound& round) { static_cast<void>(round); }
};

class RecordsSyncDataManagerProtocol : public virtual platform::Object {
public:
    std::weak_ptr<RecordsSyncDataManagerDelegate> delegate;

    /// Asks for a round of a module. Returns false if no `syncEnded` will answer this call: the module is not stored,
    /// or the data manager waits for a round of it already, which serves this call as well. A round goes on when
    /// everybody who asked for it is gone.
    virtual bool syncRecords(const std::string& moduleName) = 0;
    virtual bool syncRecords(const Module& module) = 0;
};

/// Brings the records of modules up to date: asks the server for what was added, edited and deleted since the module's
/// watermark, page by page, and stores it. A module has one round at a time in the whole process (`SyncRounds`). Each
/// step is stored before the next one: the rows of a page, the note of how far the round is, and at the end the
/// watermark with the outcome. A round that breaks off keeps the old watermark, so that the next one repeats it.
///
/// So does a round with a record of which the server may have an edit that waits here for its answer. Somebody else may
/// have changed the same field since: the queue laid the edit over that, and its answer will be older than the page.
/// The same goes for deletes while an add waits for its answer, which would bring back a record that is deleted
/// already.
class RecordsSyncDataManager final : public RecordsSyncDataManagerProtocol,
                                     public RecordsSyncDelegate,
                                     public SyncRoundRunner {
public:
    struct Collaborators {
        std::shared_ptr<RecordsSyncNetworkServiceProtocol> recordsSyncNetworkService;
        std::shared_ptr<RecordSettingsPersistanceProtocol> recordSyncSettings;
        std::shared_ptr<RecordPersistanceDelegate> recordPersistanceDelegate;
        std::shared_ptr<FieldMetadataPersistanceDelegate> metadataPersistance;
        std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
        Scope scope;
        /// `UnsentChanges::recordsWithSentChanges`.
        std::function<std::optional<std::set<std::string>>()> recordsWithSentChanges;
    };
    static constexpr std::int64_t maximumRecords = 10'000;

    /// Becomes the delegate of the service.
    static std::shared_ptr<RecordsSyncDataManager> make(Collaborators collaborators);
    static std::shared_ptr<RecordsSyncDataManager> make(
        const Stores& stores,
        std::shared_ptr<RecordsSyncNetworkServiceProtocol> service = std::make_shared<RecordsSyncNetworkService>());

    bool syncRecords(const std::string& moduleName) override;
    bool syncRecords(const Module& module) override;
    void syncCompleted(SyncResults syncResults, std::int64_t from, const Module& module) override;
    void runRound(std::shared_ptr<SyncRoundUnderWay> round) override;
    std::shared_ptr<RecordsSyncDataManagerDelegate> roundListener() const override { return delegate.lock(); }

    /// Returns how the last round of each module went, or how far the one under way is, by module name.
    static std::vector<SyncRound> rounds(const Stores& stores);

private:
    using Delegate = RecordsSyncDataManagerDelegate;
    using Reason = SyncRound::Reason;
    /// A round of this data manager.
    struct Round {
        std::shared_ptr<SyncRoundUnderWay> underWay;
        std::string lastModifiedTime;
        SyncRound progress;
        std::optional<std::int64_t> firstResponseTime{};
        bool mustBeRepeated = false;
    };

    explicit RecordsSyncDataManager(Collaborators collaborators) : collaborators_(std::move(collaborators)) {}

    SyncRoundSize expectedSize(const std::string& moduleName) const;
    std::optional<Reason> takePage(Round& round, const SyncRecordsResponse& page, std::int64_t from);
    bool hasMetadata(const std::string& moduleName, const SyncRecordsResponse& page);
    bool mayBeOvertaken(const SyncRecordsResponse& page) const;
    std::optional<Reason> storePage(const SyncRecordsResponse& page, const std::string& moduleName) const;
    std::optional<std::int64_t> timeBesideOther(const Round& round) const;
    void finish(Round& round, const SyncRecordsResponse& page) const;
    void storeBroken(Round& round) const;
    void requestPage(const Round& round, std::int64_t from) const;
    void end(const std::shared_ptr<Round>& round, std::optional<Reason> reason);
    void reportPage(const Round& round, const SyncRecordsResponse& page) const;

    const Collaborators collaborators_;
    platform::Mutex mutex_;
    std::map<std::string, std::shared_ptr<Round>> rounds_ TARVO_GUARDED_BY(mutex_);
    std::set<std::string> modulesWithFields_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
