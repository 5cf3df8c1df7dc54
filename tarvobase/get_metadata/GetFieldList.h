#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// Types of `GetFieldList`.
struct GetFieldListOperation {
    struct Request;
    struct Response;
    using DomainError = MetadataError;
};

struct GetFieldListOperation::Request : BaseRequest {
    Request() = default;
    explicit Request(std::string moduleName, std::optional<std::vector<std::string>> columnList = std::nullopt,
                     std::vector<FieldSort> sortList = {})
        : moduleName(std::move(moduleName)), columnList(std::move(columnList)), sortList(std::move(sortList)) {}
    std::string moduleName;
    std::optional<std::vector<std::string>> columnList;  ///< identifiers of the requested fields; absent for all
    std::vector<FieldSort> sortList;                     ///< empty for the server's order

    static constexpr auto fields() {
        return describe(field("moduleName", &Request::moduleName), field("columnList", &Request::columnList),
                        optionalField("sortList", &Request::sortList));
    }
};

struct GetFieldListOperation::Response : BaseResponse {
    Response() = default;
    explicit Response(FieldList fieldList) : fieldList(std::move(fieldList)) {}
    FieldList fieldList;

    static constexpr auto fields() { return describe(field("fieldList", &Response::fieldList)); }
};

/// Answers the fields of a module with their picklists, from the database that was open when the object was made.
/// Answers once, on the main queue, whatever the request's source. A module that is unknown or has no metadata yet is
/// the domain error `notFound`.
class GetFieldList final : public Usecase<GetFieldListOperation> {
public:
    GetFieldList();
    explicit GetFieldList(std::shared_ptr<GetFieldListDM> dataManager) : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<GetFieldListDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
