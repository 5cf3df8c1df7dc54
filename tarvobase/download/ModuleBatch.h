#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tarvobase/configuration/Setting.h"
#include "tarvobase/download/Downloadable.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

/// How downloads that go by modules are cut, and which modules each takes.
struct ModuleBatchConstant {
    /// Larger batches make an answer that the server may cut off and that is lost as a whole; more of them at once take
    /// the connection from what the user waits for. Less than 1 counts as 1.
    Setting<int> moduleCountPerBatch{4};
    Setting<int> parallelBatchCount{2};

    static ModuleBatchConstant& shared();

    /// What is downloaded.
    enum class Feature { metadaInfo, customView, initialRecords };
    using Names = std::span<const std::string_view>;

    /// The step whose raw value stands in front of the stored flags.
    static Process processOf(Feature feature);
    /// The names that are supported while the server names none: a regular expression over a whole name.
    static std::string_view getPattern(Feature feature);
    /// Names that never take part, and names that take part whether supported or not.
    static Names removeModule(Feature feature);
    static Names addModule(Feature feature);
    /// Takes the one out and puts the other in; for metadata also the modules that others are linked by.
    static void additionalModules(Feature feature, std::set<std::string>& names, const std::vector<Module>& allModule);
};

/// Does the work of a batch. Called on the thread that starts the batches or that completes one.
class ModuleBatchDelegate : public virtual platform::Object {
public:
    /// Starts the work and returns; `batchCompleted` is called when it is done, well or not.
    virtual void nextBatch(const std::vector<Module>& modules) = 0;
    /// Every batch is done. Once a run.
    virtual void allBatchesCompleted() = 0;
};

/// Works out which modules a download still has to ask for, cuts them into batches and keeps a bounded number of these
/// under way. A flag a module and feature, in the settings of the current account, says what is done, so that a later
/// run asks only for the rest. For one run: `initiateBatch`, `start`, `batchCompleted` for each batch from any thread.
class ModuleBatch : public virtual platform::Object {
public:
    using Feature = ModuleBatchConstant::Feature;
    using Batches = std::vector<std::vector<Module>>;

    struct Persistance {
        std::shared_ptr<ModulesPersistanceDelegate> moduleDAO;
        std::shared_ptr<SettingsPersistanceDelegate> settingDAO;
        UserDefaultsUtil userDefaultsUtil;
    };
    ModuleBatch(Feature feature, Persistance persistance);

    std::weak_ptr<ModuleBatchDelegate> delegate;

    /// The batches of those of the modules that the feature takes and that are not done, in the order in which they are
    /// stored; of all stored modules when none is given. No batches when the modules cannot be read.
    virtual const Batches& initiateBatch(const std::vector<Module>& modules,
                                         std::optional<int> moduleCountPerBatch = std::nullopt);
    /// The batches of exactly these modules, in their order, whether or not they are done.
    const Batches& initiateBatchOfAll(const std::vector<Module>& modules,
                                      std::optional<int> moduleCountPerBatch = std::nullopt);

    /// Starts the first batches. Without any, all are completed at once.
    void start();
    /// What there is of these modules is stored, or given up: sets their flags and starts what comes next.
    void batchCompleted(const std::vector<Module>& modules);

    int completedBatchCount() const;
    int batchCount() const { return static_cast<int>(batch_.size()); }

protected:
    std::vector<std::string> removeUnSupportedModules(const std::vector<Module>& modules) const;
    Batches getModuleBatch(const std::vector<std::string>& names, std::optional<int> count) const;
    std::vector<Module> givenOrStored(const std::vector<Module>& modules) const;

    const Persistance persistance_;
    Batches batch_;

private:
    std::string flagOf(const std::string& moduleName) const;
    std::optional<std::vector<Module>> takeNext();
    void startNext();

    const Feature feature_;
    const int parallelBatchCount_;
    // Two batches may complete while the first ones are still being started.
    mutable std::mutex mutex_;
    std::size_t batchIndex_ = 0;
    std::size_t completedBatchCount_ = 0;
    int currentParallelCount_ = 0;
};

/// The batches of the modules that have a default view, and the view of each.
class CVModuleBatch final : public ModuleBatch {
public:
    CVModuleBatch(Feature feature, Persistance persistance, std::shared_ptr<CustomViewPersistanceDelegate> cvDAO)
        : ModuleBatch(feature, std::move(persistance)), cvDAO_(std::move(cvDAO)) {}

    /// Without an answer about the default views the batches stay as they are.
    const Batches& initiateBatch(const std::vector<Module>& modules,
                                 std::optional<int> moduleCountPerBatch = std::nullopt) override;

    /// By module name; of two default views of a module the later one. Settled by `initiateBatch`.
    std::map<std::string, CustomView> moduleCVMap;

private:
    const std::shared_ptr<CustomViewPersistanceDelegate> cvDAO_;
};

/// A module whose records are asked for, and the view that says which.
struct CVRecordsParams {
    Module module;
    CustomView cv;
};

}  // namespace tarvo
