#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/module/Module.h"

/// Downloads of given modules into the database. `whenEnded` is called exactly once, on the network queue, after the
/// answers are stored. The caller keeps the returned object until then; if it is released before, nothing is called.
namespace tarvo::host {

/// The outcome of a download, by names of modules.
struct DownloadOutcome {
    std::vector<std::string> stored;
    /// The modules that failed, by the notice of the failure; `unableToGetMetadata` if the server refused a module or
    /// left it out.
    std::map<CommonError, std::vector<std::string>> failed;
    /// Why a request got no answer, in words; that of the last one. Empty if all were answered.
    std::string cause;
    /// The modules whose answer came, but was not stored by the database.
    std::vector<std::string> notStored;
};
using DownloadEnd = std::function<void(DownloadOutcome)>;

/// Downloads the metadata of the given modules, at least one.
std::shared_ptr<void> runMetadataDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                          const std::vector<Module>& modules, DownloadEnd whenEnded);
/// Downloads the views of the given modules, at least one.
std::shared_ptr<void> runViewDownload(const std::shared_ptr<DatabaseAdapter>& database,
                                      const std::vector<Module>& modules, DownloadEnd whenEnded);

}  // namespace tarvo::host
