#include "host/serve/ModuleDownloads.h"

#include <algorithm>
#include <set>
#include <utility>

#include "tarvobase/init_process/steps/InitCustomViewDM.h"
#include "tarvobase/init_process/steps/InitMetadataDM.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/metadata/wire/MetadataParser.h"
#include "tarvobase/network_layer/NetworkAccess.h"
#include "tarvobase/sync/wire/CVSyncParser.h"

namespace tarvo::host {

namespace {

/// Notes what each answer brought, since the downloads themselves report no failure. Network queue.
class Notes {
public:
    DownloadOutcome outcome;

protected:
    template <class Parser>
    void note(const NetworkAnswer& answer, Parser&& parser, const std::vector<Module>& modules) {
        auto parsed = parser.parse(answer.body);
        if (answer.error) outcome.cause = answer.error->message;
        auto missing = !parsed ? failureOf(answer.error) : CommonError::unableToGetMetadata;
        for (auto& module : modules) {
            bool came = parsed && std::any_of(parsed->result.begin(), parsed->result.end(), [&](auto& entry) {
                            return entry && entry->data && entry->info.moduleName == module.moduleName;
                        });
            (came ? outcome.stored : outcome.failed[missing]).push_back(module.moduleName);
        }
    }

private:
    static CommonError failureOf(const std::optional<NetworkError>& error) {
        if (!error) return CommonError::parsingError;
        bool wasSent = error->kind != NetworkError::Kind::notSent;
        return wasSent ? CommonError::networkResponseError : CommonError::noAuthtoken;
    }
};

/// The library's services, with notes of their answers.
class WatchedMetadataNS final : public MetadataNSP, public Notes {
public:
    void getMetadata(const MetadataNetworkParams& params, NetworkCompletion callback) override {
        service_->getMetadata(params, [weak = platform::weakSelf(this), modules = params.modules,
                                       callback = std::move(callback)](NetworkAnswer answer) {
            if (auto self = weak.lock()) self->note(answer, MetadataParser(), modules);
            callback(std::move(answer));
        });
    }

private:
    const std::shared_ptr<MetadataNS> service_ = std::make_shared<MetadataNS>();
};

class WatchedViewNS final : public InitCustomViewNSP, public Notes {
public:
    void getCustomViews(const std::vector<Module>& modules, NetworkCompletion callback) override {
        service_->getCustomViews(
            modules, [weak = platform::weakSelf(this), modules, callback = std::move(callback)](NetworkAnswer answer) {
                if (auto self = weak.lock()) self->note(answer, CVSyncParser(), modules);
                callback(std::move(answer));
            });
    }

private:
    const std::shared_ptr<InitCustomViewNS> service_ = std::make_shared<InitCustomViewNS>();
};

DownloadOutcome withoutUnstored(DownloadOutcome outcome, const std::set<std::string>& unstored) {
    std::erase_if(outcome.stored, [&](auto& name) { return unstored.contains(name); });
    outcome.notStored.assign(unstored.begin(), unstored.end());
    return outcome;
}

/// Starts a step over its service. The work holds both weakly; the returned object holds them.
template <class Step, class Service, class Start>
std::shared_ptr<void> run(std::shared_ptr<Step> step, std::shared_ptr<Service> service, Start start,
                          const std::vector<Module>& modules, DownloadEnd whenEnded) {
    auto ended = [weakStep = std::weak_ptr(step), watched = std::weak_ptr(service), whenEnded = std::move(whenEnded)] {
        // After the answer under way, whose notice is still to come.
        networkQueue()->async([weakStep, watched, whenEnded] {
            auto step = weakStep.lock();
            auto service = watched.lock();
            if (step && service) whenEnded(withoutUnstored(std::move(service->outcome), step->unstoredModules()));
        });
    };
    std::invoke(start, *step, modules, ended, ended);
    return std::make_shared<std::pair<std::shared_ptr<Step>, std::shared_ptr<Service>>>(step, service);
}

}  // namespace

std::shared_ptr<void> runMetadataDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                          const std::vector<Module>& modules, DownloadEnd whenEnded) {
    auto service = std::make_shared<WatchedMetadataNS>();
    return run(InitMetadataDM::make(database, database, BrenUserDefaults::ofCurrentAccount(), service), service,
               &InitMetadataDM::getMetaData, modules, std::move(whenEnded));
}

std::shared_ptr<void> runViewDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                      const std::vector<Module>& modules, DownloadEnd whenEnded) {
    auto service = std::make_shared<WatchedViewNS>();
    return run(InitCustomViewDM::make(database, BrenUserDefaults::ofCurrentAccount(), service), service,
               &InitCustomViewDM::getCustomViews, modules, std::move(whenEnded));
}

}  // namespace tarvo::host
