#pragma once

#include <string>

#include "platform/Describe.h"

namespace tarvo {

enum class HTTPMethod { get, post };
template <>
struct EnumCases<HTTPMethod> {
    static constexpr EnumCase<HTTPMethod> cases[] = {{HTTPMethod::get, "get", "GET"},
                                                     {HTTPMethod::post, "post", "POST"}};
};

enum class NTaskPriority { low, normal, high };

enum class ApiVersion { v2, v3, v4, v5 };
template <>
struct EnumCases<ApiVersion> {
    static constexpr EnumCase<ApiVersion> cases[] = {
        {ApiVersion::v2, "v2"}, {ApiVersion::v3, "v3"}, {ApiVersion::v4, "v4"}, {ApiVersion::v5, "v5"}};
};

/// A call of the server. Three of them carry parts of their path; the others are plain.
class CRMAPIs {
public:
    enum class Case {
        getMyJobsRecord,
        updateapprovalstatus,
        sendMail,
        appinitdata,
        appMetadata,
        customViews,
        initRecords,
        recordsSync,
        relatedRecords,
        customViewRecords,
        getRecord,
        getRecords,
        getHomeRecords,
        getCurrencyMetadata,
        getAttachmentDownload,
        getReportingToStatus,
        recordsSearch,
        globalSearch,
        downloadRecordPhoto,
        downloadUserPhoto,
        getUserDetails,
        getHighChartAndJQuery,
        getDashboards,
        getDashboardComponents,
        getDashboardData,
        getWebDashboardsData,
        modulesSync,
        metadataSync,
        getPermissions,
        addRecord,
        updateRecord,
        deleteRecord,
        getTimeline,
        feedback,
        uploadVoiceNote,
        getRelatedEmailFilters,
        getRelatedEmailList,
        getRelatedEmailDetail,
        relatedEmailSharedDetails,
        downloadEmailAttachment,
        downloadPrivateEmailInlineItem,
        getModuleTags,
        addTags,
        removeTags,
        getDealStageHistory,
        getPipelines,
        addCheckIn,
        updateCheckIn,
        deleteCheckIn,
        getMyJobs,
        markAsRead,
        downloadAttachment,
        uploadAttachment,
        switchPortal,
        getFromAddresses,
        getEmailTemplates,
        sendEmail,
        uploadEmailAttachments,
        getAllFromEmails,
        getMailTemplate,
        getMailTemplates,
        getTemplateWithMergeFields,
        getPlatformPortalInfo
    };

    CRMAPIs(Case plain) : case_(plain) {}  // NOLINT: implicit, so that a call is named by its case alone
    static CRMAPIs getMyJobsRecord(std::string id) { return {Case::getMyJobsRecord, std::move(id), {}}; }
    static CRMAPIs updateapprovalstatus(std::string id) { return {Case::updateapprovalstatus, std::move(id), {}}; }
    static CRMAPIs sendMail(std::string module, std::string id) {
        return {Case::sendMail, std::move(id), std::move(module)};
    }

    Case which() const { return case_; }
    const std::string& id() const { return id_; }
    const std::string& module() const { return module_; }

private:
    CRMAPIs(Case which, std::string id, std::string module)
        : case_(which), id_(std::move(id)), module_(std::move(module)) {}
    Case case_;
    std::string id_;
    std::string module_;
};

/// The plain calls. The raw text is the path on the server.
template <>
struct EnumCases<CRMAPIs::Case> {
    using C = CRMAPIs::Case;
    static constexpr EnumCase<C> cases[] = {
        {C::appinitdata, "appinitdata", "getappinitdata"},
        {C::appMetadata, "appMetadata", "getmetadatainfo"},
        {C::customViews, "customViews", "getcustomviewsinfo"},
        {C::initRecords, "initRecords", "getinitrecords"},
        {C::recordsSync, "recordsSync", "products/getsyncrecords"},
        {C::relatedRecords, "relatedRecords", "products/getrelatedrecords"},
        {C::customViewRecords, "customViewRecords", "products/getcvrecords"},
        {C::getRecord, "getRecord", "products/getrecord"},
        {C::getRecords, "getRecords", "products/getrecords"},
        {C::getHomeRecords, "getHomeRecords", "gethomerecords"},
        {C::getCurrencyMetadata, "getCurrencyMetadata", "gettaxcurrencies"},
        {C::getAttachmentDownload, "getAttachmentDownload", "downloadfile"},
        {C::getReportingToStatus, "getReportingToStatus", "getreportingtostatus"},
        {C::recordsSearch, "recordsSearch", "products/getsearchrecords"},
        {C::globalSearch, "globalSearch", "products/globalsearch"},
        {C::downloadRecordPhoto, "downloadRecordPhoto", "downloadphoto"},
        {C::downloadUserPhoto, "downloadUserPhoto", "contacts/downloadphoto"},
        {C::getUserDetails, "getUserDetails", "getuserdetails"},
        {C::getHighChartAndJQuery, "getHighChartAndJQuery", "getdashcombinejs"},
        {C::getDashboards, "getDashboards", "getdashboards"},
        {C::getDashboardComponents, "getDashboardComponents", "getdashcomponents"},
        {C::getDashboardData, "getDashboardData", "getdashcomponentsdata"},
        {C::getWebDashboardsData, "getWebDashboardsData", "Dashboards"},
        {C::modulesSync, "modulesSync", "getsyncmodules"},
        {C::metadataSync, "metadataSync", "getsyncmetadata"},
        {C::getPermissions, "getPermissions", "getpermissions"},
        {C::addRecord, "addRecord", "products/addrecord"},
        {C::updateRecord, "updateRecord", "products/updaterecord"},
        {C::deleteRecord, "deleteRecord", "products/deleterecord"},
        {C::getTimeline, "getTimeline", "gettimelinerecords"},
        {C::feedback, "feedback", "submitfeedback"},
        {C::uploadVoiceNote, "uploadVoiceNote", "uploadvoicenote"},
        {C::getRelatedEmailFilters, "getRelatedEmailFilters", "getemailfilters"},
        {C::getRelatedEmailList, "getRelatedEmailList", "getrelatedemails"},
        {C::getRelatedEmailDetail, "getRelatedEmailDetail", "getrelatedemail"},
        {C::relatedEmailSharedDetails, "relatedEmailSharedDetails", ""},
        {C::downloadEmailAttachment, "downloadEmailAttachment", "downloademailattachment"},
        {C::downloadPrivateEmailInlineItem, "downloadPrivateEmailInlineItem", "downloadprivateinlineimage"},
        {C::getModuleTags, "getModuleTags", "getmoduletags"},
        {C::addTags, "addTags", "addtags"},
        {C::removeTags, "removeTags", "removetags"},
        {C::getDealStageHistory, "getDealStageHistory", "getstagehistory"},
        {C::getPipelines, "getPipelines", "getpipelines"},
        {C::addCheckIn, "addCheckIn", "checkins/addrecord"},
        {C::updateCheckIn, "updateCheckIn", "checkins/updaterecord"},
        {C::deleteCheckIn, "deleteCheckIn", "deletecheckin"},
        {C::getMyJobs, "getMyJobs", "getmyjobs"},
        {C::markAsRead, "markAsRead", "markasread"},
        {C::downloadAttachment, "downloadAttachment", "downloadattachment"},
        {C::uploadAttachment, "uploadAttachment", "uploadattachment"},
        {C::switchPortal, "switchPortal", "switchportal"},
        {C::getFromAddresses, "getFromAddresses", "settings/emails/from_aliases"},
        {C::getEmailTemplates, "getEmailTemplates", "getemailtemplates"},
        {C::sendEmail, "sendEmail", "sendemail"},
        {C::uploadEmailAttachments, "uploadEmailAttachments", "uploademailattachments"},
        {C::getAllFromEmails, "getAllFromEmails", "getallfromemails"},
        {C::getMailTemplate, "getMailTemplate", "getmailtemplate"},
        {C::getMailTemplates, "getMailTemplates", "getmailtemplates"},
        {C::getTemplateWithMergeFields, "getTemplateWithMergeFields", "gettemplatewithmergefields"},
        {C::getPlatformPortalInfo, "getPlatformPortalInfo", "getplatformportalinfo"}};
};

}  // namespace tarvo
