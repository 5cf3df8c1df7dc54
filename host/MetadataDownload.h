#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/value_objects/Module.h"

namespace tarvo::host {

/// How a download of metadata ended, by names of modules.
struct MetadataOutcome {
    std::vector<std::string> stored;
    /// By the notice that a host hears of such a failure; `unableToGetMetadata` when the server refused a module or
    /// left it out.
    std::map<std::string, std::vector<std::string>> failed;
};

/// Downloads the metadata of the given modules, at least one, and stores it. `whenEnded` is called exactly once, on the
/// network queue, when the storing is done. What is returned must be kept until then; when it is dropped before,
/// nothing is called.
std::shared_ptr<void> runMetadataDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                          const std::vector<Module>& modules,
                                          std::function<void(MetadataOutcome)> whenEnded);

}  // namespace tarvo::host
