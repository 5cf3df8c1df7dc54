#include "host/commands/CommandSteps.h"

#include <atomic>
#include <cstdio>

#include "host/InitStep.h"
#include "host/commands/Console.h"
#include "host/serve/ModuleDownloads.h"
#include "platform/Text.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/get_metadata/GetFieldList.h"
#include "tarvobase/list_view/GetCustomViewsDataManager.h"
#include "tarvobase/metadata/PopulateRelatedModulesDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"

namespace tarvo::host {

namespace {

using Download = decltype(&runMetadataDownload);

const std::string databaseRefused =
    "the database did not store what the server sent; the disk may be full, or another program may keep the file "
    "locked";

/// Returns the views by the name that people read; nullopt if the table cannot be read.
std::optional<std::vector<CustomView>> storedViews(const std::string& module) {
    return GetCustomViewsDataManager::current()->getCustomViews(module, {CustomViewColumnName::ViewDisplayName});
}

/// Downloads for one module. Returns why it failed, or nullopt.
std::optional<std::string> fetchFor(const std::shared_ptr<DatabaseAdapter>& database, const std::string& moduleName,
                                    Download download) {
    auto module = Stores::current().modules()->getModuleByModuleName(moduleName);
    if (!module) return "the module " + moduleName + " cannot be read";
    auto outcome = awaited<DownloadOutcome>([&](auto whenEnded) { return download(database, {*module}, whenEnded); });
    if (!outcome) return "the server did not answer in time";
    if (!outcome->notStored.empty()) return databaseRefused;
    if (outcome->failed.empty()) return std::nullopt;
    return explanationOf(outcome->failed.begin()->first, outcome->cause);
}

}  // namespace

Result<std::string, int> openDatabase(Host& host, const Arguments& arguments) {
    // No command opens a database twice.
    auto passphrase = host.takePassphrase();
    if (!passphrase) return fail("a passphrase is needed", 2);
    // What is to be cancelled must not leave before.
    auto path = host.openDatabase(*passphrase, arguments.command != Command::cancel);
    if (path) return *path;
    auto account = "the database of account " + *arguments.account;
    if (path.error().kind == Host::OpeningFailure::Kind::wrongPassphrase)
        return fail("wrong passphrase: it does not open " + account);
    return fail(account + " cannot be opened: " + path.error().message);
}

std::vector<std::string> storedModuleNames(const std::shared_ptr<DatabaseAdapter>& database) {
    ModuleDatabaseConstants constants;
    std::string table(constants.TableName);
    if (database->columnNames(table).empty()) return {};
    std::vector<std::string> names;
    if (auto modules = ModuleInDatabase(table, database, constants).getAllModules())
        for (auto& module : *modules) names.push_back(module.moduleName);
    return names;
}

std::optional<std::string> fetchModules(Host& host) {
    auto outcome = awaited<InitOutcome>([&](auto whenEnded) { return runInitStep(host.database(), whenEnded); });
    if (!outcome) return "the server did not answer in time";
    if (outcome->isRefusedByDatabase) return databaseRefused;
    return outcome->isStored() ? std::nullopt : std::optional(explanationOf(*outcome->failure));
}

std::optional<int> findModule(Host& host, const Arguments& arguments, const char* tokenNeeded) {
    auto names = storedModuleNames(host.database());
    if (names.empty()) {
        if (!arguments.token) return fail(tokenNeeded, 2);
        if (auto failure = fetchModules(host)) return fail(*failure);
        names = storedModuleNames(host.database());
    }
    if (text::contains(names, arguments.module)) return std::nullopt;
    return fail("there is no module \"" + arguments.module + "\"; the command modules lists them");
}

std::optional<FieldList> storedFields(const std::string& module) {
    auto fields = awaited<std::optional<FieldList>>([&](auto answer) {
        auto usecase = std::make_shared<GetFieldList>();
        usecase->execute(GetFieldList::Request(module),
                         [answer](const GetFieldList::Response* response, const GetFieldList::Failure*) {
                             answer(response ? std::optional(response->fieldList) : std::nullopt);
                         });
        return usecase;
    });
    return fields.value_or(std::nullopt);
}

StoredLayouts storedLayouts(const std::string& module) {
    auto layouts = awaited<StoredLayouts>([&](auto answer) {
        auto usecase = std::make_shared<GetLayoutModuleInfo>();
        usecase->execute(
            GetLayoutModuleInfo::Request({module}),
            [answer, module](const GetLayoutModuleInfo::Response* response, const GetLayoutModuleInfo::Failure*) {
                auto found =
                    response ? response->moduleInfoDict.find(module) : GetLayoutModuleInfoDM::Infos::iterator();
                bool known = response && found != response->moduleInfoDict.end() && found->second;
                answer(known ? found->second->layoutInfo.orderedLayouts.values() : StoredLayouts());
            });
        return usecase;
    });
    return layouts.value_or(StoredLayouts());
}

Result<FieldList, int> neededFields(Host& host, const Arguments& arguments, const char* tokenNeeded) {
    auto fields = storedFields(arguments.module);
    if (arguments.fetch || !fields) {
        if (!arguments.token) return fail(tokenNeeded, 2);
        if (auto failure = fetchMetadata(host, arguments.module)) return fail(*failure);
        fields = storedFields(arguments.module);
    }
    if (!fields) return fail("the server sent no fields of " + arguments.module);
    return *std::move(fields);
}

Result<std::vector<CustomView>, int> neededViews(Host& host, const Arguments& arguments, const char* tokenNeeded) {
    auto views = storedViews(arguments.module);
    if (arguments.fetch || !views || views->empty()) {
        if (!arguments.token) return fail(tokenNeeded, 2);
        if (auto failure = fetchViews(host, arguments.module)) return fail(*failure);
        views = storedViews(arguments.module);
    }
    if (!views) return fail("the views of " + arguments.module + " could not be read");
    return *std::move(views);
}

const FieldMetadata* fieldNamed(const FieldList& fields, const std::string& name) {
    if (auto field = fields.getField(name)) return field;
    for (auto field : fields.allFields())
        if (field->fieldAPIName == name || field->columnCRMName == name) return field;
    return nullptr;
}

std::string comparatorOf(const ColumnFilter& filter) {
    return std::visit([](auto type) { return std::string(caseName(type)); }, filter.filterType);
}

std::optional<std::string> fetchMetadata(Host& host, const std::string& moduleName) {
    auto failure = fetchFor(host.database(), moduleName, runMetadataDownload);
    if (!failure) PopulateRelatedModulesDM::make(Stores::current())->populateLookupColumn();
    return failure;
}

std::optional<std::string> fetchViews(Host& host, const std::string& moduleName) {
    return fetchFor(host.database(), moduleName, runViewDownload);
}

std::string explanationOf(CommonError error, const std::string& cause) {
    switch (error) {
        case CommonError::networkResponseError:
            return "the server did not answer" + (cause.empty() ? "" : " (" + cause + ")");
        case CommonError::parsingError:
            return "the server's answer cannot be used; the token may be wrong";
        case CommonError::noAuthtoken:
            return "the account has no token";
        default:
            return "the server's data could not be fetched (" + std::string(caseName(error)) + ")";
    }
}

std::string explanationOf(const CommonErrorNotice& notice) {
    return explanationOf(notice.kind, notice.arguments.valueOf("cause").textOr(""));
}

int printForPrograms(const std::string& json) { return print(harmlessJson(json)); }

int printForPeople(const std::string& lines) { return print(harmlessLines(lines)); }

void waitForRestingQueues(std::chrono::seconds atMost) {
    auto isResting = std::make_shared<std::atomic<bool>>(false);
    ChangeQueues::shared().whenResting([isResting] { *isResting = true; });
    MainQueue::shared()->runUntil([&] { return isResting->load(); }, atMost);
}

int print(const std::string& text) {
    bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return written ? 0 : fail("standard output cannot be written");
}

}  // namespace tarvo::host
