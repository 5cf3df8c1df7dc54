#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"

/// The failure notices of delegate use cases. Every operation is empty unless overridden. Use cases call their
/// delegates' notices on the main queue; between service, data manager and use case they come on the queue of the work.
///
/// A class `...WithChaining` passes each notice, with the same arguments, to its next responder if there is one. So
/// failures bubble from a network service through its data manager to the use case and from there to its delegate.
namespace tarvo {

class CommonErrorProtocol : public virtual platform::Object {
public:
    /// The server's answer could not be used.
    virtual void parsingError() {}
    /// The request got no answer.
    virtual void networkResponseError() {}
    virtual void networkParamsError() {}
    virtual void networkIdentifierError() {}
    /// The account has no token; the request was not sent.
    virtual void noAuthtoken(const std::string& brenuid) { static_cast<void>(brenuid); }
    virtual void unableToGetMetadata(const std::string& moduleName, const std::string& crmColumnName) {
        static_cast<void>(moduleName), static_cast<void>(crmColumnName);
    }
};

class CommonErrorProtocolWithChaining : public virtual CommonErrorProtocol {
public:
    virtual std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() = 0;

    void parsingError() override {
        if (auto next = nextCommonErrorProtocolResponder()) next->parsingError();
    }
    void networkResponseError() override {
        if (auto next = nextCommonErrorProtocolResponder()) next->networkResponseError();
    }
    void networkParamsError() override {
        if (auto next = nextCommonErrorProtocolResponder()) next->networkParamsError();
    }
    void networkIdentifierError() override {
        if (auto next = nextCommonErrorProtocolResponder()) next->networkIdentifierError();
    }
    void noAuthtoken(const std::string& brenuid) override {
        if (auto next = nextCommonErrorProtocolResponder()) next->noAuthtoken(brenuid);
    }
    void unableToGetMetadata(const std::string& moduleName, const std::string& crmColumnName) override {
        if (auto next = nextCommonErrorProtocolResponder()) next->unableToGetMetadata(moduleName, crmColumnName);
    }
};

class FileDownloadErrorProtocol : public virtual platform::Object {
public:
    virtual void unableToWriteToDisc() {}
    virtual void unableToCreateDirectory() {}
    virtual void photosDirectoryNotSet() {}
    virtual void unableToReadFile() {}
};

class FileDownloadErrorProtocolWithChaining : public virtual FileDownloadErrorProtocol {
public:
    virtual std::shared_ptr<FileDownloadErrorProtocol> nextFileDownloadErrorProtocolResponder() = 0;

    void unableToWriteToDisc() override {
        if (auto next = nextFileDownloadErrorProtocolResponder()) next->unableToWriteToDisc();
    }
    void unableToCreateDirectory() override {
        if (auto next = nextFileDownloadErrorProtocolResponder()) next->unableToCreateDirectory();
    }
    void photosDirectoryNotSet() override {
        if (auto next = nextFileDownloadErrorProtocolResponder()) next->photosDirectoryNotSet();
    }
    void unableToReadFile() override {
        if (auto next = nextFileDownloadErrorProtocolResponder()) next->unableToReadFile();
    }
};

class GetRecordsErrorProtocol : public virtual platform::Object {
public:
    virtual void relatedModuleIsNilError() {}
    virtual void unableToConvertRecordFromDictionaryError() {}
    virtual void unableToGetIDForRecordError() {}
};

class GetRecordsErrorProtocolWithChaining : public virtual GetRecordsErrorProtocol {
public:
    virtual std::shared_ptr<GetRecordsErrorProtocol> nextGetRecordsErrorProtocolResponder() = 0;

    void relatedModuleIsNilError() override {
        if (auto next = nextGetRecordsErrorProtocolResponder()) next->relatedModuleIsNilError();
    }
    void unableToConvertRecordFromDictionaryError() override {
        if (auto next = nextGetRecordsErrorProtocolResponder()) next->unableToConvertRecordFromDictionaryError();
    }
    void unableToGetIDForRecordError() override {
        if (auto next = nextGetRecordsErrorProtocolResponder()) next->unableToGetIDForRecordError();
    }
};

class AttachmentsErrorProtocol : public virtual platform::Object {
public:
    virtual void noteObjectNotPassedError() {}
};

class AttachmentsErrorProtocolWithChaining : public virtual AttachmentsErrorProtocol {
public:
    virtual std::shared_ptr<AttachmentsErrorProtocol> nextAttachmentsErrorProtocolResponder() = 0;

    void noteObjectNotPassedError() override {
        if (auto next = nextAttachmentsErrorProtocolResponder()) next->noteObjectNotPassedError();
    }
};

class ActivityRecordErrorProtocol : public virtual platform::Object {
public:
    /// Dates are seconds since 1970.
    virtual void recordNotFound(std::int64_t startDate, std::int64_t endDate, int from, int limit) {
        static_cast<void>(startDate), static_cast<void>(endDate), static_cast<void>(from), static_cast<void>(limit);
    }
};

class DownloadRecordsErrorProtocol : public virtual platform::Object {
public:
    virtual void unableToDownloadRecordsError() {}
    virtual void unableToFetchMetadataError() {}
};

class SearchErrorProtocol : public virtual platform::Object {
public:
    virtual void recordNotFound(const std::string& forKeyword, const std::string& moduleName) {
        static_cast<void>(forKeyword), static_cast<void>(moduleName);
    }
};

class SearchErrorProtocolWithChaining : public virtual SearchErrorProtocol {
public:
    virtual std::shared_ptr<SearchErrorProtocol> nextSearchErrorProtocolResponder() = 0;

    void recordNotFound(const std::string& forKeyword, const std::string& moduleName) override {
        if (auto next = nextSearchErrorProtocolResponder()) next->recordNotFound(forKeyword, moduleName);
    }
};

class MetadataSyncErrorProtocol : public virtual platform::Object {
public:
    virtual void syncFailed(const std::vector<std::string>& modules) { static_cast<void>(modules); }
};

class StoreOrgsErrorProtocol : public virtual platform::Object {
public:
    virtual void noOrgsFetched() {}
};

class AddEditRecordNetworkServiceErrorProtocol : public virtual platform::Object {
public:
    virtual void operationFailed(const std::string& operation, const std::string& recordID,
                                 const std::string& transactionID, const std::string& moduleName) {
        static_cast<void>(operation), static_cast<void>(recordID), static_cast<void>(transactionID),
            static_cast<void>(moduleName);
    }
};

class DeleteRecordNetworkServiceErrorProtocol : public virtual platform::Object {
public:
    virtual void deleteRecordFailed(const std::string& recordID, const std::string& transactionID,
                                    const std::string& moduleName) {
        static_cast<void>(recordID), static_cast<void>(transactionID), static_cast<void>(moduleName);
    }
};

}  // namespace tarvo
