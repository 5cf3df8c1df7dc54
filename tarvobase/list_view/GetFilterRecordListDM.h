#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/list_view/GetCVRecordsNetworkService.h"
#include "tarvobase/list_view/GetFilterRecordsDBSP.h"
#include "tarvobase/list_view/GetListFilterRecordsParams.h"
#include "tarvobase/list_view/ListPageStore.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/transaction/UnlistedRecordsContract.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

/// Serves a page of a view: the stored rows first, and then, if they do not fill the page and the server has said that
/// it has more, the rows that the server adds. The server decides which records belong to a view, and the view's map
/// keeps its decision. While the map is empty and the server has not said that the list is, the rows are the stored
/// records that meet the view's own condition. Two kinds of records are shown besides the map, and never count as held
/// when the server is asked for more:
///
/// - a record whose change the server refused as a duplicate;
/// - a record that was added here, if it meets the view's own condition. It has its real id once the server has
///   accepted it. The view's first answer to a request after that decides on it. An answer with a later page does not,
///   since it cannot hold a record that belongs before it.
///
/// The map always holds the beginning of the server's list, without gaps: a request asks for the records after those of
/// the map, and for a page that begins further on, requests follow one another until the map reaches it.
///
/// These answers come, in this order:
///
/// | stored rows | the server is asked | answers |
/// |---|---|---|
/// | some | no | `callback` with them |
/// | none | no | `callback` without rows |
/// | some | yes | `callback` with them, then `onSuccess` or `onError` |
/// | none | yes | `onSuccess` or `onError` |
///
/// A page with records besides the map alone counts as "some" for the answers. Under the source `either` the server is
/// asked all the same.
///
/// Every failure is `unknownError` with its reason. No further answer comes if the data manager is released while the
/// server is asked.
class GetFilterRecordListDM final : public platform::Object {
public:
    struct Parts {
        std::shared_ptr<UserDefaultsUtil> userDefaultsUtil;
        std::shared_ptr<GetCVRecordsNetworkService> networkService;
        std::shared_ptr<GetModuleInfoDataManager> moduleInfoDatamanager;
        std::shared_ptr<CustomViewPersistanceDelegate> filterPersistence;
        std::shared_ptr<FilterRecordMapPersistanceDelegate> filterRecordMapPersistance;
        std::shared_ptr<GetFilterRecordsDBSP> filterRecordDBS;
        std::shared_ptr<RecordPersistanceDelegate> recordPersistance;
        std::shared_ptr<UnlistedRecordsContract> unlistedRecords;
        std::string account;  ///< whose views these are
        std::optional<AnswersBesideSync> answersBesideSync{};
    };
    explicit GetFilterRecordListDM(Parts parts) : parts(std::move(parts)) {}
    /// Uses the database that is open at this moment and the settings of the account.
    static std::shared_ptr<GetFilterRecordListDM> current();

    const Parts parts;

    using RequestPtr = std::shared_ptr<const GetListFilterRecordsParams>;
    using Failure = AppError<NoDomainError>;
    struct RecordList {
        std::vector<Record> records;
        bool moreRecords = false;  ///< whether the server has more records of the view
    };
    /// All three must be set. `callback` is called before `getRecordList` returns. The others may be called later, on a
    /// background queue.
    struct Answers {
        std::function<void(RecordList)> callback;
        std::function<void(RecordList)> onSuccess;
        std::function<void(Failure)> onError;
    };

    /// Answers a page. Blocks its caller for the local part. The source `database` never asks the server. `network`
    /// asks first, and answers stored rows only if the server has no more. `either` asks the server only if there are
    /// no stored rows, and `none` gives no answer. `criteria` are further conditions on the stored rows.
    void getRecordList(const RequestPtr& request, Answers answers,
                       std::optional<std::vector<Criteria>> criteria = std::nullopt);

private:
    /// The state of one call.
    struct Call {
        RequestPtr request;
        Answers answers;
        std::optional<std::vector<Criteria>> criteria;
        ModuleInfo moduleInfo;
        CustomView view;
    };
    using CallPtr = std::shared_ptr<const Call>;

    /// A page as it is shown.
    struct Page {
        std::vector<Record> records;
        UnlistedRecords unlisted;
    };
    using Asked = ListPageStore::Asked;

    Page readLocally(const Call& call) const;
    std::vector<Record> rowsOf(const Call& call, std::optional<Criteria> unsynced, std::vector<Criteria> more) const;
    UnlistedRecords unlistedRecords(const Call& call) const;
    std::optional<Criteria> getUnsyncedCriteria(const Call& call, const UnlistedRecords& unlisted) const;
    std::int64_t listedCount(const Call& call, const Page& page) const;
    std::int64_t heldCount(const Call& call) const;
    bool canTriggerNetworkRequest(const Call& call, std::int64_t recordCount) const;
    std::optional<std::int64_t> firstPosition(const Call& call, std::int64_t recordCount) const;
    std::optional<std::int64_t> nextPosition(const Call& call, std::int64_t from) const;
    void triggerNetworkRequest(const CallPtr& call, std::int64_t from);
    void networkCompletion(const CallPtr& call, Asked asked, const Result<ListPage, FailureDetails>& page);
    void answerStored(const Call& call) const;
    void answerFinally(const Call& call) const;
    bool hasMore(const GetListFilterRecordsParams& request) const;
};

}  // namespace tarvo
