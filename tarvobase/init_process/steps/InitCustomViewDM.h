#pragma once

#include <memory>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/BatchedDownloadable.h"
#include "tarvobase/init_process/steps/InitCustomViewNS.h"

namespace tarvo {

class BrenNotificationCenter;
class DatabaseAdapter;

/// The step `customviews`: downloads the views of modules in batches and stores them. For each module of an answer
/// `CustomViewChangedObserver` hears the ids of its views once they are stored, on the bus's background queue.
class InitCustomViewDM final : public BatchedDownloadable {
public:
    struct Persistance {
        std::shared_ptr<CustomViewPersistanceDelegate> customViewDAO;
        ModuleBatch::Persistance batches;
    };
    /// `notifier` must outlive the step, as the bus of the process does.
    InitCustomViewDM(Persistance persistance, std::shared_ptr<InitCustomViewNSP> networkService,
                     BrenNotificationCenter& notifier);

    /// A step over the open database, wired together.
    static std::shared_ptr<InitCustomViewDM> make(
        const std::shared_ptr<DatabaseAdapter>& databaseAdapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<InitCustomViewNSP> networkService = std::make_shared<InitCustomViewNS>());

    /// Downloads the views of exactly these modules, whether or not they were downloaded before. `success` and
    /// `failure` as for the metadata: `success` is called once when all batches are done, also those that failed, and
    /// `failure` never. A call during a download waits until that is done.
    void getCustomViews(std::vector<Module> modules, Callback success, Callback failure);

    void allBatchesCompleted() override;

protected:
    std::shared_ptr<ModuleBatch> makeModuleBatch() const override;
    void request(const std::vector<Module>& modules) override;

private:
    void store(const std::vector<CustomView>& views, const std::string& moduleName);

    const Persistance persistance_;
    const std::shared_ptr<InitCustomViewNSP> networkService_;
    BrenNotificationCenter& notifier_;
};

}  // namespace tarvo
