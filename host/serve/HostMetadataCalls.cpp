#include "host/serve/HostMetadataCalls.h"

#include <algorithm>

#include "host/serve/ModuleDownloads.h"
#include "tarvobase/metadata/PopulateRelatedModulesDM.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;

struct DownloadRequest {
    std::vector<std::string> moduleNames;  // empty for all that are stored
    bool holdInput = true;
    static constexpr auto fields() {
        return describe(optionalField("moduleNames", &DownloadRequest::moduleNames),
                        optionalField("holdInput", &DownloadRequest::holdInput));
    }
};
struct PopulateRequest {
    static constexpr auto fields() { return describe(); }
};

/// Returns the stored modules of these names, each once, or why there are none.
Result<std::vector<Module>, std::string> modulesNamed(const std::vector<std::string>& names) {
    using Answer = Result<std::vector<Module>, std::string>;
    auto stored = Stores::current().modules()->getAllModules();
    if (!stored || stored->empty()) return Answer::failure("no modules are stored");
    if (names.empty()) return Answer::success(*stored);
    std::vector<Module> modules;
    for (auto& name : names) {
        auto isNamed = [&](const Module& module) { return module.moduleName == name; };
        if (std::any_of(modules.begin(), modules.end(), isNamed)) continue;
        auto found = std::find_if(stored->begin(), stored->end(), isNamed);
        if (found == stored->end()) return Answer::failure("there is no module \"" + name + "\"");
        modules.push_back(*found);
    }
    return Answer::success(std::move(modules));
}

void reportOutcome(const DownloadOutcome& outcome, const CallPtr& call) {
    for (auto& [error, names] : outcome.failed) {
        ValueMap arguments{{"moduleNames", bridge::toJson(names)}};
        if (error == CommonError::networkResponseError) arguments.set("cause", outcome.cause);
        call->delegate(caseName(error), std::move(arguments));
    }
    if (!outcome.notStored.empty()) call->delegate("notStored", {{"moduleNames", bridge::toJson(outcome.notStored)}});
    call->done("response", ValueMap{{"moduleNames", bridge::toJson(outcome.stored)}});
    call->finish();
}

using Download = decltype(&runMetadataDownload);

void download(Host& host, Download run, const DownloadRequest& request, const CallPtr& call) {
    if (!host.database()) return call->refuse("no database is open");
    auto modules = modulesNamed(request.moduleNames);
    if (!modules) return call->refuse("request.moduleNames: " + modules.error());
    if (request.holdInput) call->holdInput();
    call->keepUntilEnd(
        run(host.database(), *modules, [call](const DownloadOutcome& outcome) { reportOutcome(outcome, call); }));
}

}  // namespace

void addMetadataCalls(bridge::Registry& registry, Host& host) {
    auto add = [&](std::string name, Download run) {
        registry.addOperation<DownloadRequest>(
            std::move(name),
            [&host, run](const DownloadRequest& request, const CallPtr& call) { download(host, run, request, call); });
    };
    add("host.metadata", runMetadataDownload);
    add("host.views", runViewDownload);
    // Runs on the main queue like every start of a call, so that later lines read what it wrote.
    registry.addOperation<PopulateRequest>("host.populateLookupColumn", [&host](PopulateRequest, const CallPtr& call) {
        if (!host.database()) return call->refuse("no database is open");
        PopulateRelatedModulesDM::make(Stores::current())->populateLookupColumn();
        call->done();
    });
}

}  // namespace tarvo::host
