#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/Host.h"
#include "platform/MainQueue.h"
#include "platform/Result.h"
#include "tarvobase/get_metadata/GetLayoutModuleInfo.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/view/ColumnFilter.h"
#include "tarvobase/value_objects/view/CustomView.h"

/// What the commands for people have in common. Main thread; the main queue runs while a step waits.
namespace tarvo::host {

/// Longer than a request may take; the library answers before.
constexpr std::chrono::seconds patience{150};

/// Gives what `start` hands to its callback, from any thread; nothing when it does not come in time. `start` returns
/// what must live until then.
template <class T, class Start>
std::optional<T> awaited(Start start) {
    auto answer = std::make_shared<std::optional<T>>();
    auto kept = start(
        [answer](T value) { MainQueue::shared()->async([answer, value = std::move(value)] { *answer = value; }); });
    bool came = MainQueue::shared()->runUntil([&] { return answer->has_value(); }, patience);
    return came ? std::move(*answer) : std::nullopt;
}

/// Opens the database of the account and gives its path. When it cannot be opened, says why in one line on standard
/// error and gives the exit status.
Result<std::string, int> openDatabase(Host& host, const Arguments& arguments);
/// The names of the stored modules; none when modules were never fetched.
std::vector<std::string> storedModuleNames(const std::shared_ptr<DatabaseAdapter>& database);
/// Makes the init call. Gives one line that says why it could not be done, or nothing.
std::optional<std::string> fetchModules(Host& host);
/// Sees to it that the module of the arguments is stored, after an init call where no modules are. Nothing when it is,
/// otherwise the exit status; `tokenNeeded` is what is said where the call cannot be made for want of a token.
std::optional<int> findModule(Host& host, const Arguments& arguments, const char* tokenNeeded);
/// Nothing when no metadata of the module is stored.
std::optional<FieldList> storedFields(const std::string& module);
/// The same for its layouts, which may be lacking where its fields are stored.
using StoredLayouts = std::vector<Layout<OrderedLayoutFieldList>>;
StoredLayouts storedLayouts(const std::string& module);
/// The fields of the module of the arguments, or its views by the name that people read, after a fetch where none are
/// stored or where one is asked for; otherwise the exit status.
Result<FieldList, int> neededFields(Host& host, const Arguments& arguments, const char* tokenNeeded);
Result<std::vector<CustomView>, int> neededViews(Host& host, const Arguments& arguments, const char* tokenNeeded);
/// A field by its identifier, or by its name in the other naming; null when there is none.
const FieldMetadata* fieldNamed(const FieldList& fields, const std::string& name);
/// The name of what a filter compares.
std::string comparatorOf(const ColumnFilter& filter);
/// Why the metadata, or the views, of a stored module could not be fetched, or nothing.
std::optional<std::string> fetchMetadata(Host& host, const std::string& moduleName);
std::optional<std::string> fetchViews(Host& host, const std::string& moduleName);
/// The reason of a failed fetch as part of a line.
std::string explanationOf(CommonError error);
/// Writes to standard output and gives the exit status.
int print(const std::string& text);

}  // namespace tarvo::host
