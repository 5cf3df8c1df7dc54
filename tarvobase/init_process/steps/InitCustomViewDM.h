#pragma once

#include <memory>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/BatchedDownloadable.h"
#include "tarvobase/init_process/steps/InitCustomViewNS.h"

namespace tarvo {

class BrenNotificationCenter;
class DatabaseAdapter;

/// The step `customviews`: downloads the views of modules in batches and stores them. After the views of a module are
/// stored, `CustomViewChangedObserver` receives their ids on the bus's background queue.
class InitCustomViewDM final : public BatchedDownloadable {
public:
    struct Persistance {
        std::shared_ptr<CustomViewPersistanceDelegate> customViewDAO;
        Scope scope;
        ModuleBatch::Persistance batches;
    };
    /// `notifier` must outlive the step, as the bus of the process does.
    InitCustomViewDM(Persistance persistance, std::shared_ptr<InitCustomViewNSP> networkService,
                     BrenNotificationCenter& notifier);

    /// Makes a step over the open database.
    static std::shared_ptr<InitCustomViewDM> make(
        const std::shared_ptr<DatabaseAdapter>& databaseAdapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<InitCustomViewNSP> networkService = std::make_shared<InitCustomViewNS>());

    /// Downloads the views of exactly these modules, whether or not they were downloaded before. `success` is called
    /// once when all batches have ended, including failed ones. `failure` is called instead if the database did not
    /// store all views. A call during a download waits until that download has ended.
    void getCustomViews(std::vector<Module> modules, Callback success, Callback failure);

    void allBatchesCompleted() override;

protected:
    std::shared_ptr<ModuleBatch> makeModuleBatch() const override;
    void request(const std::vector<Module>& modules) override;

private:
    Outcome store(const std::vector<CustomView>& views, const std::string& moduleName);

    const Persistance persistance_;
    const std::shared_ptr<InitCustomViewNSP> networkService_;
    BrenNotificationCenter& notifier_;
};

}  // namespace tarvo
