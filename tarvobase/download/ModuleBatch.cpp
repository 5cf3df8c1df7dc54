#include "tarvobase/download/ModuleBatch.h"

#include <algorithm>
#include <regex>

#include "platform/ProcessState.h"
#include "platform/Text.h"

namespace tarvo {

namespace {

using Feature = ModuleBatchConstant::Feature;
using BatchNames = ModuleBatchConstant::Names;

constexpr std::string_view longPattern =
    "Leads|Contacts|Accounts|Potentials|Deals|Campaigns|Tasks|Events|Activities|Cases|Solutions|Products|PriceBooks|"
    "Vendors|Quotes|SalesOrders|PurchaseOrders|Invoices|Forecasts|PotContacts|Calls|Forecast History|Forecast Details|"
    "Notes|Emails|Attachments|(CustomModule([1-9]|[1-9][0-9]|100))|AdditionalModules|CheckIns|Dashboards|SalesInbox";
constexpr std::string_view shortPattern =
    "Leads|Contacts|Accounts|Potentials|Deals|Campaigns|Activities|Cases|Solutions|Products|PriceBooks|Vendors|Quotes|"
    "SalesOrders|PurchaseOrders|Invoices|Forecasts|PotContacts|Forecast History|Forecast Details|Emails|"
    "(CustomModule([1-9]|[1-9][0-9]|100))|AdditionalModules|CheckIns|SalesInbox";

constexpr std::string_view modulesWithoutMetadata[] = {"Dashboards", "Approvals"};
constexpr std::string_view modulesAlwaysWithMetadata[] = {"Campaigns", "Notes", "Attachments", "Consents"};
constexpr std::string_view modulesWithoutViews[] = {"Calls", "Events", "Tasks", "Dashboards"};
constexpr std::string_view modulesAlwaysWithViews[] = {"Activities"};
constexpr std::string_view modulesWithoutRecords[] = {"Dashboards"};

struct FeatureTraits {
    Process process;
    std::string_view pattern;
    BatchNames removed;
    BatchNames added;
    bool includesLinkingModules;
};

const FeatureTraits& traitsOf(Feature feature) {
    static constexpr FeatureTraits metadata{Process::metadata, longPattern, modulesWithoutMetadata,
                                            modulesAlwaysWithMetadata, true};
    static constexpr FeatureTraits views{Process::customviews, shortPattern, modulesWithoutViews,
                                         modulesAlwaysWithViews, false};
    static constexpr FeatureTraits records{Process::initialRecords, shortPattern, modulesWithoutRecords, {}, false};
    switch (feature) {
        case Feature::metadaInfo:
            return metadata;
        case Feature::customView:
            return views;
        case Feature::initialRecords:
            break;
    }
    return records;
}

/// The patterns contain no repetition, so a long name does not make the match recurse deeply.
std::regex compiled(std::string_view pattern) { return std::regex(pattern.begin(), pattern.end()); }

/// Divides modules into batches of at most `count`. Batches of no modules would never complete a download.
ModuleBatch::Batches batchesOf(const std::vector<Module>& modules, std::optional<int> count) {
    auto wanted = count.value_or(ModuleBatchConstant::shared().moduleCountPerBatch.get());
    auto size = static_cast<std::size_t>(std::max(1, wanted));
    ModuleBatch::Batches batches;
    for (std::size_t from = 0; from < modules.size(); from += size) {
        auto end = std::min(from + size, modules.size());
        batches.emplace_back(modules.begin() + static_cast<std::ptrdiff_t>(from),
                             modules.begin() + static_cast<std::ptrdiff_t>(end));
    }
    return batches;
}

}  // namespace

ModuleBatchConstant& ModuleBatchConstant::shared() {
    return platform::ProcessState::current().get<ModuleBatchConstant>();
}

Process ModuleBatchConstant::processOf(Feature feature) { return traitsOf(feature).process; }
std::string_view ModuleBatchConstant::getPattern(Feature feature) { return traitsOf(feature).pattern; }
BatchNames ModuleBatchConstant::removeModule(Feature feature) { return traitsOf(feature).removed; }
BatchNames ModuleBatchConstant::addModule(Feature feature) { return traitsOf(feature).added; }

void ModuleBatchConstant::additionalModules(Feature feature, std::set<std::string>& names,
                                            const std::vector<Module>& allModule) {
    for (auto name : removeModule(feature)) names.erase(std::string(name));
    for (auto name : addModule(feature)) names.emplace(name);
    if (!traitsOf(feature).includesLinkingModules) return;
    for (auto& module : allModule)
        if (std::ranges::find(supportedLinkingModule, module.type) != supportedLinkingModule.end())
            names.insert(module.moduleName);
}

ModuleBatch::ModuleBatch(Feature feature, Persistance persistance)
    : persistance_(std::move(persistance)),
      feature_(feature),
      parallelBatchCount_(std::max(1, ModuleBatchConstant::shared().parallelBatchCount.get())) {}

const ModuleBatch::Batches& ModuleBatch::initiateBatch(const std::vector<Module>& modules,
                                                       std::optional<int> moduleCountPerBatch) {
    batch_ = getModuleBatch(removeUnSupportedModules(givenOrStored(modules)), moduleCountPerBatch);
    return batch_;
}

std::vector<Module> ModuleBatch::givenOrStored(const std::vector<Module>& modules) const {
    if (!modules.empty()) return modules;
    return persistance_.moduleDAO->getAllModules().success().value_or(std::vector<Module>());
}

std::vector<std::string> ModuleBatch::removeUnSupportedModules(const std::vector<Module>& modules) const {
    std::vector<std::string> names;
    for (auto& module : modules) names.push_back(module.moduleName);
    auto setting = persistance_.settingDAO->getSettingsForModule(std::string(SettingsConstants::applicationModule),
                                                                 SettingName::supportedModules);
    if (setting) {
        auto supported = text::split(setting->defaultSettings, ",");
        std::erase_if(names, [&](auto& name) { return !text::contains(supported, name); });
    } else {
        auto pattern = compiled(ModuleBatchConstant::getPattern(feature_));
        std::erase_if(names, [&](auto& name) { return !std::regex_match(name, pattern); });
    }
    return names;
}

ModuleBatch::Batches ModuleBatch::getModuleBatch(const std::vector<std::string>& names,
                                                 std::optional<int> count) const {
    auto all = persistance_.moduleDAO->getAllModules().success().value_or(std::vector<Module>());
    std::set<std::string> wanted(names.begin(), names.end());
    ModuleBatchConstant::additionalModules(feature_, wanted, all);
    std::erase_if(wanted, [&](auto& name) { return persistance_.userDefaultsUtil.isCompleted(flagOf(name)); });
    std::erase_if(all, [&](auto& module) { return !wanted.contains(module.moduleName); });
    return batchesOf(all, count);
}

const ModuleBatch::Batches& ModuleBatch::initiateBatchOfAll(const std::vector<Module>& modules,
                                                            std::optional<int> moduleCountPerBatch) {
    batch_ = batchesOf(modules, moduleCountPerBatch);
    return batch_;
}

void ModuleBatch::start() {
    if (!batch_.empty()) return startNext();
    if (auto listener = delegate.lock()) listener->allBatchesCompleted();
}

void ModuleBatch::batchCompleted(const std::vector<Module>& modules, const Failures& failures) {
    setFlags(modules, failures);
    bool isLast = false;
    {
        platform::MutexLock lock(mutex_);
        ++completedBatchCount_;
        --currentParallelCount_;
        isLast = completedBatchCount_ == batch_.size() || batch_.empty();
    }
    if (!isLast) return startNext();
    if (auto listener = delegate.lock()) listener->allBatchesCompleted();
}

void ModuleBatch::setFlags(const std::vector<Module>& modules, const Failures& failures) const {
    auto flags = persistance_.userDefaultsUtil;
    std::vector<std::string> flagged;
    std::set<std::string> missing;
    for (auto& module : modules) {
        if (failures.unstored.contains(module.moduleName)) continue;
        flagged.push_back(flagOf(module.moduleName));
        if (failures.missing.contains(module.moduleName)) missing.insert(flagged.back());
    }
    // The note comes first: a flag without it would hide what is missing.
    flags.noteMissing(flagged, missing);
    for (auto& flag : flagged) flags.setCompleted(flag);
}

int ModuleBatch::completedBatchCount() const {
    platform::MutexLock lock(mutex_);
    return static_cast<int>(completedBatchCount_);
}

std::string ModuleBatch::flagOf(const std::string& moduleName) const {
    return std::string(rawText(ModuleBatchConstant::processOf(feature_))) + "_" + moduleName;
}

std::optional<std::vector<Module>> ModuleBatch::takeNext() {
    platform::MutexLock lock(mutex_);
    if (currentParallelCount_ >= parallelBatchCount_ || batchIndex_ == batch_.size()) return std::nullopt;
    ++currentParallelCount_;
    return batch_[batchIndex_++];
}

void ModuleBatch::startNext() {
    auto listener = delegate.lock();
    if (!listener) return;
    while (auto modules = takeNext()) listener->nextBatch(*modules);
}

const ModuleBatch::Batches& CVModuleBatch::initiateBatch(const std::vector<Module>& modules,
                                                         std::optional<int> moduleCountPerBatch) {
    auto names = removeUnSupportedModules(givenOrStored(modules));
    auto views = cvDAO_->getDefaultCustomViews();
    if (!views) return batch_;
    for (auto& view : *views) moduleCVMap.insert_or_assign(view.moduleName, view);
    std::erase_if(names, [&](auto& name) { return !moduleCVMap.contains(name); });
    batch_ = getModuleBatch(names, moduleCountPerBatch);
    return batch_;
}

}  // namespace tarvo
