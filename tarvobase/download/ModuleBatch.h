#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/Setting.h"
#include "tarvobase/download/Downloadable.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

/// The settings of downloads that work module by module: how modules are divided into batches, and which modules each
/// feature covers.
struct ModuleBatchConstant {
    /// Larger batches produce answers that the server may cut off and that are then lost as a whole. More batches at
    /// once take bandwidth from the requests that the user waits for. Values below 1 count as 1.
    Setting<int> moduleCountPerBatch{4};
    Setting<int> parallelBatchCount{2};

    static ModuleBatchConstant& shared();

    /// The kinds of content that are downloaded.
    enum class Feature { metadaInfo, customView, initialRecords };
    using Names = std::span<const std::string_view>;

    /// Returns the step whose raw value is the prefix of the stored flags.
    static Process processOf(Feature feature);
    /// Returns a regular expression over whole names. It says which modules are supported if the server sends no list.
    static std::string_view getPattern(Feature feature);
    /// Returns the modules that are never downloaded.
    static Names removeModule(Feature feature);
    /// Returns the modules that are downloaded whether or not they are supported.
    static Names addModule(Feature feature);
    /// Removes the former from `names` and adds the latter. For metadata it also adds the linking modules.
    static void additionalModules(Feature feature, std::set<std::string>& names, const std::vector<Module>& allModule);
};

/// Does the work of a batch. It is called on the thread that starts the batches or that completes one.
class ModuleBatchDelegate : public virtual platform::Object {
public:
    /// Starts the work and returns. The delegate calls `batchCompleted` when the work has ended, also after a failure.
    virtual void nextBatch(const std::vector<Module>& modules) = 0;
    /// Called once per run, after the last batch.
    virtual void allBatchesCompleted() = 0;
};

/// Determines which modules a download still has to request, divides them into batches and keeps a bounded number of
/// batches in progress. A flag per module and feature, in the settings of the current account, records what is already
/// done, so that a later run requests only the rest. An object serves one run: `initiateBatch`, `start`, then
/// `batchCompleted` for each batch, from any thread.
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

    /// Makes batches of the given modules, or of all stored modules if none is given. Leaves out the modules that the
    /// feature does not cover and those that are already done. The modules keep the order in which they are stored.
    /// Makes no batches if the modules cannot be read.
    virtual const Batches& initiateBatch(const std::vector<Module>& modules,
                                         std::optional<int> moduleCountPerBatch = std::nullopt);
    /// Makes batches of exactly these modules, in their order, whether or not they are already done.
    const Batches& initiateBatchOfAll(const std::vector<Module>& modules,
                                      std::optional<int> moduleCountPerBatch = std::nullopt);

    /// Starts the first batches. Completes the run at once if there are no batches.
    void start();
    /// Names of modules that did not get their content.
    struct Failures {
        std::set<std::string> unstored;  ///< the database did not store it
        std::set<std::string> missing;   ///< the server sent no usable content
    };
    /// Ends a batch and starts the next one. Sets the flags of its modules. The flags of `unstored` modules stay clear,
    /// so the next run requests them again. `missing` modules are flagged and noted, so that a run requests them again
    /// only if it is asked to (`UserDefaultsUtil::requestMissingAgain`).
    void batchCompleted(const std::vector<Module>& modules, const Failures& failures = {});

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
    void setFlags(const std::vector<Module>& modules, const Failures& failures) const;
    std::optional<std::vector<Module>> takeNext();
    void startNext();

    const Feature feature_;
    const int parallelBatchCount_;
    // Two batches may complete while the first ones are still being started.
    mutable platform::Mutex mutex_;
    std::size_t batchIndex_ TARVO_GUARDED_BY(mutex_) = 0;
    std::size_t completedBatchCount_ TARVO_GUARDED_BY(mutex_) = 0;
    int currentParallelCount_ TARVO_GUARDED_BY(mutex_) = 0;
};

/// The batches of the modules that have a default view, with the view of each module.
class CVModuleBatch final : public ModuleBatch {
public:
    CVModuleBatch(Feature feature, Persistance persistance, std::shared_ptr<CustomViewPersistanceDelegate> cvDAO)
        : ModuleBatch(feature, std::move(persistance)), cvDAO_(std::move(cvDAO)) {}

    /// Leaves the batches unchanged if the default views cannot be read.
    const Batches& initiateBatch(const std::vector<Module>& modules,
                                 std::optional<int> moduleCountPerBatch = std::nullopt) override;

    /// Maps module names to views; the later of two default views of a module counts. Filled by `initiateBatch`.
    std::map<std::string, CustomView> moduleCVMap;

private:
    const std::shared_ptr<CustomViewPersistanceDelegate> cvDAO_;
};

/// A module whose records are requested, and the view that selects them.
struct CVRecordsParams {
    Module module;
    CustomView cv;
};

}  // namespace tarvo
