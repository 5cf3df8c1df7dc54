#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"
#include "tarvobase/usecase/Notice.h"

/// The failure notices of delegate use cases. Every operation is empty unless it is overridden. A use case calls its
/// delegate on the main queue; between service, data manager and use case, notices come on the queue of the work.
///
/// A class `...WithChaining` passes each notice, with the same arguments, to its next responder if there is one. In
/// this way a failure travels from a network service through its data manager to the use case, and from there to its
/// delegate. A class that treats all notices of an interface alike derives from the interface's `...Relay`.
namespace tarvo {

class CommonErrorProtocol : public virtual platform::Object {
public:
    /// The server's answer could not be used.
    virtual void parsingError() {}
    /// The request got no answer.
    virtual void networkResponseError() {}
    /// The same for those who want to know why, such as "certificate expired: crm.example.com:443". Calls
    /// `networkResponseError` unless it is overridden.
    virtual void networkResponseErrorWithCause(const std::string& cause) {
        static_cast<void>(cause);
        networkResponseError();
    }
    virtual void networkParamsError() {}
    virtual void networkIdentifierError() {}
    /// The account has no token; the request was not sent.
    virtual void noAuthtoken(const std::string& brenuid) { static_cast<void>(brenuid); }
    virtual void unableToGetMetadata(const std::string& moduleName, const std::string& crmColumnName) {
        static_cast<void>(moduleName), static_cast<void>(crmColumnName);
    }
};

/// The cases are in the order of their names, in which lists of failures show them.
enum class CommonError {
    networkIdentifierError,
    networkParamsError,
    networkResponseError,
    noAuthtoken,
    parsingError,
    unableToGetMetadata
};

template <>
struct EnumCases<CommonError> {
    static constexpr EnumCase<CommonError> cases[] = {{CommonError::networkIdentifierError, "networkIdentifierError"},
                                                      {CommonError::networkParamsError, "networkParamsError"},
                                                      {CommonError::networkResponseError, "networkResponseError"},
                                                      {CommonError::noAuthtoken, "noAuthtoken"},
                                                      {CommonError::parsingError, "parsingError"},
                                                      {CommonError::unableToGetMetadata, "unableToGetMetadata"}};
};

using CommonErrorNotice = Notice<CommonErrorProtocol, CommonError>;

class CommonErrorRelay : public NoticeRelay<CommonErrorNotice> {
public:
    void parsingError() override { relayCall(CommonError::parsingError, &CommonErrorProtocol::parsingError); }
    void networkResponseError() override {
        relayCall(CommonError::networkResponseError, &CommonErrorProtocol::networkResponseError);
    }
    void networkResponseErrorWithCause(const std::string& cause) override {
        relayCall(CommonError::networkResponseError, &CommonErrorProtocol::networkResponseErrorWithCause,
                  argument("cause", cause));
    }
    void networkParamsError() override {
        relayCall(CommonError::networkParamsError, &CommonErrorProtocol::networkParamsError);
    }
    void networkIdentifierError() override {
        relayCall(CommonError::networkIdentifierError, &CommonErrorProtocol::networkIdentifierError);
    }
    void noAuthtoken(const std::string& brenuid) override {
        relayCall(CommonError::noAuthtoken, &CommonErrorProtocol::noAuthtoken, argument("brenuid", brenuid));
    }
    void unableToGetMetadata(const std::string& moduleName, const std::string& crmColumnName) override {
        relayCall(CommonError::unableToGetMetadata, &CommonErrorProtocol::unableToGetMetadata,
                  argument("moduleName", moduleName), argument("crmColumnName", crmColumnName));
    }
};

class CommonErrorProtocolWithChaining : public CommonErrorRelay {
public:
    virtual std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() = 0;

protected:
    void relay(const Notice& notice) override {
        if (auto next = nextCommonErrorProtocolResponder()) notice.repeatOn(*next);
    }
};

class FileDownloadErrorProtocol : public virtual platform::Object {
public:
    virtual void unableToWriteToDisc() {}
    virtual void unableToCreateDirectory() {}
    virtual void photosDirectoryNotSet() {}
    virtual void unableToReadFile() {}
};

enum class FileDownloadError { unableToWriteToDisc, unableToCreateDirectory, photosDirectoryNotSet, unableToReadFile };

template <>
struct EnumCases<FileDownloadError> {
    static constexpr EnumCase<FileDownloadError> cases[] = {
        {FileDownloadError::unableToWriteToDisc, "unableToWriteToDisc"},
        {FileDownloadError::unableToCreateDirectory, "unableToCreateDirectory"},
        {FileDownloadError::photosDirectoryNotSet, "photosDirectoryNotSet"},
        {FileDownloadError::unableToReadFile, "unableToReadFile"}};
};

class FileDownloadErrorRelay : public NoticeRelay<Notice<FileDownloadErrorProtocol, FileDownloadError>> {
public:
    void unableToWriteToDisc() override {
        relayCall(FileDownloadError::unableToWriteToDisc, &FileDownloadErrorProtocol::unableToWriteToDisc);
    }
    void unableToCreateDirectory() override {
        relayCall(FileDownloadError::unableToCreateDirectory, &FileDownloadErrorProtocol::unableToCreateDirectory);
    }
    void photosDirectoryNotSet() override {
        relayCall(FileDownloadError::photosDirectoryNotSet, &FileDownloadErrorProtocol::photosDirectoryNotSet);
    }
    void unableToReadFile() override {
        relayCall(FileDownloadError::unableToReadFile, &FileDownloadErrorProtocol::unableToReadFile);
    }
};

class FileDownloadErrorProtocolWithChaining : public FileDownloadErrorRelay {
public:
    virtual std::shared_ptr<FileDownloadErrorProtocol> nextFileDownloadErrorProtocolResponder() = 0;

protected:
    void relay(const Notice& notice) override {
        if (auto next = nextFileDownloadErrorProtocolResponder()) notice.repeatOn(*next);
    }
};

class GetRecordsErrorProtocol : public virtual platform::Object {
public:
    virtual void relatedModuleIsNilError() {}
    virtual void unableToConvertRecordFromDictionaryError() {}
    virtual void unableToGetIDForRecordError() {}
};

enum class GetRecordsError {
    relatedModuleIsNilError,
    unableToConvertRecordFromDictionaryError,
    unableToGetIDForRecordError
};

template <>
struct EnumCases<GetRecordsError> {
    static constexpr EnumCase<GetRecordsError> cases[] = {
        {GetRecordsError::relatedModuleIsNilError, "relatedModuleIsNilError"},
        {GetRecordsError::unableToConvertRecordFromDictionaryError, "unableToConvertRecordFromDictionaryError"},
        {GetRecordsError::unableToGetIDForRecordError, "unableToGetIDForRecordError"}};
};

class GetRecordsErrorRelay : public NoticeRelay<Notice<GetRecordsErrorProtocol, GetRecordsError>> {
public:
    void relatedModuleIsNilError() override {
        relayCall(GetRecordsError::relatedModuleIsNilError, &GetRecordsErrorProtocol::relatedModuleIsNilError);
    }
    void unableToConvertRecordFromDictionaryError() override {
        relayCall(GetRecordsError::unableToConvertRecordFromDictionaryError,
                  &GetRecordsErrorProtocol::unableToConvertRecordFromDictionaryError);
    }
    void unableToGetIDForRecordError() override {
        relayCall(GetRecordsError::unableToGetIDForRecordError, &GetRecordsErrorProtocol::unableToGetIDForRecordError);
    }
};

class GetRecordsErrorProtocolWithChaining : public GetRecordsErrorRelay {
public:
    virtual std::shared_ptr<GetRecordsErrorProtocol> nextGetRecordsErrorProtocolResponder() = 0;

protected:
    void relay(const Notice& notice) override {
        if (auto next = nextGetRecordsErrorProtocolResponder()) notice.repeatOn(*next);
    }
};

class AttachmentsErrorProtocol : public virtual platform::Object {
public:
    virtual void noteObjectNotPassedError() {}
};

enum class AttachmentsError { noteObjectNotPassedError };

template <>
struct EnumCases<AttachmentsError> {
    static constexpr EnumCase<AttachmentsError> cases[] = {
        {AttachmentsError::noteObjectNotPassedError, "noteObjectNotPassedError"}};
};

class AttachmentsErrorRelay : public NoticeRelay<Notice<AttachmentsErrorProtocol, AttachmentsError>> {
public:
    void noteObjectNotPassedError() override {
        relayCall(AttachmentsError::noteObjectNotPassedError, &AttachmentsErrorProtocol::noteObjectNotPassedError);
    }
};

class AttachmentsErrorProtocolWithChaining : public AttachmentsErrorRelay {
public:
    virtual std::shared_ptr<AttachmentsErrorProtocol> nextAttachmentsErrorProtocolResponder() = 0;

protected:
    void relay(const Notice& notice) override {
        if (auto next = nextAttachmentsErrorProtocolResponder()) notice.repeatOn(*next);
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

enum class DownloadRecordsError { unableToDownloadRecordsError, unableToFetchMetadataError };

template <>
struct EnumCases<DownloadRecordsError> {
    static constexpr EnumCase<DownloadRecordsError> cases[] = {
        {DownloadRecordsError::unableToDownloadRecordsError, "unableToDownloadRecordsError"},
        {DownloadRecordsError::unableToFetchMetadataError, "unableToFetchMetadataError"}};
};

class DownloadRecordsErrorRelay : public NoticeRelay<Notice<DownloadRecordsErrorProtocol, DownloadRecordsError>> {
public:
    void unableToDownloadRecordsError() override {
        relayCall(DownloadRecordsError::unableToDownloadRecordsError,
                  &DownloadRecordsErrorProtocol::unableToDownloadRecordsError);
    }
    void unableToFetchMetadataError() override {
        relayCall(DownloadRecordsError::unableToFetchMetadataError,
                  &DownloadRecordsErrorProtocol::unableToFetchMetadataError);
    }
};

class DownloadRecordsErrorProtocolWithChaining : public DownloadRecordsErrorRelay {
public:
    virtual std::shared_ptr<DownloadRecordsErrorProtocol> nextDownloadRecordsErrorProtocolResponder() = 0;

protected:
    void relay(const Notice& notice) override {
        if (auto next = nextDownloadRecordsErrorProtocolResponder()) notice.repeatOn(*next);
    }
};

class SearchErrorProtocol : public virtual platform::Object {
public:
    virtual void recordNotFound(const std::string& forKeyword, const std::string& moduleName) {
        static_cast<void>(forKeyword), static_cast<void>(moduleName);
    }
};

enum class SearchError { recordNotFound };

template <>
struct EnumCases<SearchError> {
    static constexpr EnumCase<SearchError> cases[] = {{SearchError::recordNotFound, "recordNotFound"}};
};

class SearchErrorRelay : public NoticeRelay<Notice<SearchErrorProtocol, SearchError>> {
public:
    void recordNotFound(const std::string& forKeyword, const std::string& moduleName) override {
        relayCall(SearchError::recordNotFound, &SearchErrorProtocol::recordNotFound, argument("forKeyword", forKeyword),
                  argument("moduleName", moduleName));
    }
};

class SearchErrorProtocolWithChaining : public SearchErrorRelay {
public:
    virtual std::shared_ptr<SearchErrorProtocol> nextSearchErrorProtocolResponder() = 0;

protected:
    void relay(const Notice& notice) override {
        if (auto next = nextSearchErrorProtocolResponder()) notice.repeatOn(*next);
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
