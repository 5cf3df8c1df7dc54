#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tarvobase/get_metadata/GetModuleTagsNS.h"
#include "tarvobase/usecase/BaseDataManager.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/tag/TagPersistanceDelegate.h"

namespace tarvo {

/// Types of `GetModuleTagsUC`.
struct GetModuleTagsOperation {
    struct Request;
    struct Response;
    struct TagsError;
    using DomainError = TagsError;
};

struct GetModuleTagsOperation::Request : BaseRequest {
    Request() = default;
    explicit Request(Module module, DataSource source = DataSource::both)
        : module(std::move(module)), requestedSource(source) {}
    DataSource source() const override { return requestedSource; }

    Module module;  ///< only its names are used
    DataSource requestedSource = DataSource::both;

    static constexpr auto fields() {
        return describe(field("module", &Request::module), optionalField("source", &Request::requestedSource));
    }
};

struct GetModuleTagsOperation::Response : BaseResponse {
    Response() = default;
    Response(std::optional<std::vector<Tag>> tags, ResponseSource source) : tags(std::move(tags)), from(source) {}
    ResponseSource source() const override { return from; }

    /// Absent if the server's answer could not be used; the stored tags then stay as they are.
    std::optional<std::vector<Tag>> tags;
    ResponseSource from = ResponseSource::database;

    static constexpr auto fields() {
        return describe(field("tags", &Response::tags), field("source", &Response::from));
    }
};

/// There are no errors of this kind at present.
struct GetModuleTagsOperation::TagsError {
    static constexpr auto fields() { return describe(); }
};

/// Reads tags from the table, and stores the server's tags in the table.
class GetModuleTagsDM final : public BaseDataManager<GetModuleTagsOperation> {
public:
    GetModuleTagsDM(std::shared_ptr<TagPersistanceDelegate> tagsDBPersistance,
                    std::shared_ptr<TagRecordsPersistanceDelegate> tagsRecordsDBPersistance,
                    std::shared_ptr<GetModuleTagsNS> tagsNWService, std::shared_ptr<DatabaseAdapter> databaseAdapter);

    const std::shared_ptr<TagPersistanceDelegate> tagsDBPersistance;
    const std::shared_ptr<TagRecordsPersistanceDelegate> tagsRecordsDBPersistance;
    const std::shared_ptr<GetModuleTagsNS> tagsNWService;

    bool getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) override;
    void getNWResponse(const RequestPtr& request, OnNWSuccess onSuccess, OnNWError onError) override;

private:
    /// Removes what the server no longer has and stores its tags, as one commit.
    void replaceTags(const std::string& moduleName, const std::vector<Tag>& tags);
    bool remove(const Tag& tag, const std::vector<TagRecord>& links);

    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
};

/// Answers the tags of a module: first those of the database, then those of the server, which replace them. A tag that
/// the server no longer has is removed, unless it was made here or a record that waits for its first upload carries it.
/// Observers of records are notified of the records that lose it. Answers on the main queue, as often as the request's
/// source says. A server answer that cannot be used changes nothing; a request that gets no answer is a failure.
class GetModuleTagsUC final : public Usecase<GetModuleTagsOperation> {
public:
    using TagsError = GetModuleTagsOperation::TagsError;
    /// Uses the stores of the current scope.
    GetModuleTagsUC();
    explicit GetModuleTagsUC(std::shared_ptr<GetModuleTagsDM> getTagsDM) : getTagsDM(std::move(getTagsDM)) {}

    const std::shared_ptr<GetModuleTagsDM> getTagsDM;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        getTagsDM->runRequest(request, handler);
    }
};

}  // namespace tarvo
