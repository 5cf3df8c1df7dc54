#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "tarvobase/list_view/GetFilterRecordListDM.h"
#include "tarvobase/records/Section.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// Turns a page of records into a screen's own rows. `convert` runs on a background queue before the answer goes to the
/// main queue, so that the screen gets what it draws. Two answers may be converted at the same time.
template <class Converter>
concept RecordListConvertible = requires(const Converter& converter, const std::vector<Record>& records) {
    { converter.convert(records) } -> std::convertible_to<typename Converter::Output>;
};

/// For screens that take the records as they are.
struct NoRecordConversion {
    struct Output {};
    Output convert(const std::vector<Record>&) const { return {}; }
};

/// Types of `GetListFilterRecords`.
template <RecordListConvertible Converter>
struct GetListFilterRecordsOperation {
    struct Request : GetListFilterRecordsParams {
        Request() = default;
        explicit Request(GetListFilterRecordsParams params, std::shared_ptr<const Converter> converter = nullptr)
            : GetListFilterRecordsParams(std::move(params)), converter(std::move(converter)) {}

        std::shared_ptr<const Converter> converter;  ///< null if nothing is to be converted
    };
    struct Response : BaseResponse {
        ResponseSource source() const override { return from; }

        std::optional<std::vector<Record>> records;  ///< empty if the view has no records here
        /// The records in sections. Absent at present, even if the request asks for groups.
        std::optional<std::vector<Section<std::optional<Value>, Record>>> groups;
        bool moreRecords = false;  ///< whether the server has more records of the view than are stored
        std::int64_t count = 0;    ///< how many `records` there are
        Request request;
        ResponseSource from = ResponseSource::database;
        std::optional<typename Converter::Output> converted;  ///< output of the converter; absent without one

        static constexpr auto fields() {
            return describe(field("records", &Response::records), field("groups", &Response::groups),
                            field("moreRecords", &Response::moreRecords), field("count", &Response::count),
                            field("request", &Response::request), field("source", &Response::from));
        }
    };
    using DomainError = NoDomainError;
};

/// Answers a page of a view: the stored rows at once, and the server's rows if the stored ones do not fill the page.
/// Answers on the main queue, once or twice. A first success with the source `database` may be followed by one with
/// `network`, which holds the whole page anew, or by a failure, which then means only that nothing better came. Every
/// failure is `unknownError`, whose `reason` says more: there is no such module or view, the server could not be
/// reached, it refused, its answer cannot be read, or the answer could not be stored. The source `none` gets no answer,
/// and no second answer comes if the use case is released.
template <RecordListConvertible Converter = NoRecordConversion>
class GetListFilterRecords final : public Usecase<GetListFilterRecordsOperation<Converter>> {
    using Base = Usecase<GetListFilterRecordsOperation<Converter>>;

public:
    using typename Base::Request;
    using typename Base::Response;
    using typename Base::UICallback;

    /// Uses the database that is open at this moment and the settings of the account.
    GetListFilterRecords() : GetListFilterRecords(GetFilterRecordListDM::current()) {}
    explicit GetListFilterRecords(std::shared_ptr<GetFilterRecordListDM> dataManager)
        : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<GetFilterRecordListDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        auto answer = [request, handler](ResponseSource source) {
            return [=](GetFilterRecordListDM::RecordList list) {
                handler.onSuccess(responseOf(*request, std::move(list), source));
            };
        };
        dataManager->getRecordList(request, {.callback = answer(ResponseSource::database),
                                             .onSuccess = answer(ResponseSource::network),
                                             .onError = [handler](auto failure) { handler.onError(failure); }});
    }

private:
    static Response responseOf(const Request& request, GetFilterRecordListDM::RecordList list, ResponseSource source) {
        Response response;
        if (request.converter) response.converted = request.converter->convert(list.records);
        response.count = static_cast<std::int64_t>(list.records.size());
        response.moreRecords = list.moreRecords;
        response.records = std::move(list.records);
        response.request = request;
        response.from = source;
        return response;
    }
};

}  // namespace tarvo
