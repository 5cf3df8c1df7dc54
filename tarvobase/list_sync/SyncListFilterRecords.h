#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tarvobase/list_sync/SyncListFilterRecordDM.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// Types of `SyncListFilterRecords`.
struct SyncListFilterRecordsOperation {
    struct Request : BaseRequest {
        DataSource source() const override { return requestedSource; }

        std::string moduleName;
        std::string criteriaId;  ///< id of the custom view
        DataSource requestedSource = DataSource::both;

        static constexpr auto fields() {
            return describe(field("moduleName", &Request::moduleName), field("criteriaId", &Request::criteriaId),
                            optionalField("source", &Request::requestedSource));
        }
    };
    struct Response : BaseResponse {
        ResponseSource source() const override { return from; }

        std::string moduleName;
        std::string criteriaId;
        SyncLFRecordCompletionStatus status;
        ResponseSource from = ResponseSource::network;

        static constexpr auto fields() {
            return describe(field("moduleName", &Response::moduleName), field("criteriaId", &Response::criteriaId),
                            field("status", &Response::status), field("source", &Response::from));
        }
    };
    using DomainError = NoDomainError;
};

/// Brings the stored list of a view up to date. Answers once, on the main queue, with a success whose status says how
/// it went; there is no answer for a list that was never read, for a view or module that is not here, and under the
/// sources that do not want the server.
class SyncListFilterRecords final : public Usecase<SyncListFilterRecordsOperation> {
public:
    /// Uses the database that is open at this moment and the settings of the account.
    SyncListFilterRecords() : SyncListFilterRecords(SyncListFilterRecordDM::make(Stores::current())) {}
    explicit SyncListFilterRecords(std::shared_ptr<SyncListFilterRecordDM> dataManager)
        : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<SyncListFilterRecordDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        auto source = request->source();
        if (source == DataSource::none || source == DataSource::database) return;
        dataManager->syncListFilterRecord(request->moduleName, request->criteriaId,
                                          [request, handler](SyncLFRecordCompletionStatus status) {
                                              Response response;
                                              response.moduleName = request->moduleName;
                                              response.criteriaId = request->criteriaId;
                                              response.status = status;
                                              handler.onSuccess(std::move(response));
                                          });
    }
};

}  // namespace tarvo
