#include "host/MetadataDownload.h"

#include <algorithm>

#include "tarvobase/get_metadata/InitMetadataDM.h"
#include "tarvobase/network_layer/NetworkAccess.h"

namespace tarvo::host {

namespace {

/// The library's service, with a note of what each answer brought: the download itself tells no failure. Its state
/// belongs to the network queue.
class WatchedMetadataNS final : public MetadataNSP {
public:
    void getMetadata(const MetadataNetworkParams& params, Callback callback) override {
        service_->getMetadata(params,
                              [weak = platform::weakSelf(this), callback = std::move(callback)](
                                  Data data, std::optional<NetworkError> error, const MetadataNetworkParams& params) {
                                  if (auto self = weak.lock()) self->note(data, error, params.modules);
                                  callback(std::move(data), std::move(error), params);
                              });
    }

    MetadataOutcome outcome;

private:
    void note(const Data& data, const std::optional<NetworkError>& error, const std::vector<Module>& modules) {
        auto answer = MetadataParser().parse(data);
        auto missing = !answer ? failureOf(error) : "unableToGetMetadata";
        for (auto& module : modules) {
            bool came = answer && std::any_of(answer->result.begin(), answer->result.end(), [&](auto& entry) {
                            return entry && entry->data && entry->info.moduleName == module.moduleName;
                        });
            (came ? outcome.stored : outcome.failed[missing]).push_back(module.moduleName);
        }
    }
    static const char* failureOf(const std::optional<NetworkError>& error) {
        if (!error) return "parsingError";
        return error->kind == NetworkError::Kind::notSent ? "noAuthtoken" : "networkResponseError";
    }

    const std::shared_ptr<MetadataNS> service_ = std::make_shared<MetadataNS>();
};

/// The download and its service: both are held weakly by the work.
struct Run {
    std::shared_ptr<WatchedMetadataNS> service = std::make_shared<WatchedMetadataNS>();
    std::shared_ptr<InitMetadataDM> download;
};

}  // namespace

std::shared_ptr<void> runMetadataDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                          const std::vector<Module>& modules,
                                          std::function<void(MetadataOutcome)> whenEnded) {
    auto run = std::make_shared<Run>();
    run->download = InitMetadataDM::make(database, database, std::make_shared<BrenUserDefaults>(), run->service);
    auto ended = [service = std::weak_ptr(run->service), whenEnded = std::move(whenEnded)] {
        // Behind the answer under way, which has a notice yet to give.
        networkQueue()->async([service, whenEnded] {
            if (auto watched = service.lock()) whenEnded(std::move(watched->outcome));
        });
    };
    run->download->getMetaData(modules, std::move(ended), {});
    return run;
}

}  // namespace tarvo::host
