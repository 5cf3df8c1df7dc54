#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/module/Module.h"

/// Downloads by modules, into the database. `whenEnded` is called exactly once, on the network queue, when the storing
/// is done. What is returned must be kept until then; when it is dropped before, nothing is called.
namespace tarvo::host {

/// How a download ended, by names of modules.
struct DownloadOutcome {
    std::vector<std::string> stored;
    /// By the notice that a host gets of such a failure; `unableToGetMetadata` when the server refused a module or left
    /// it out.
    std::map<CommonError, std::vector<std::string>> failed;
};
using DownloadEnd = std::function<void(DownloadOutcome)>;

/// The metadata of the given modules, at least one.
std::shared_ptr<void> runMetadataDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                          const std::vector<Module>& modules, DownloadEnd whenEnded);
/// Their views.
std::shared_ptr<void> runViewDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                      const std::vector<Module>& modules, DownloadEnd whenEnded);

}  // namespace tarvo::host
