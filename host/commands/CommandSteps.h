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

/// Steps that the commands for people share. Main thread; the main queue runs while a step waits.
namespace tarvo::host {

/// How long a command waits for an answer: longer than a request of the library may take.
constexpr std::chrono::seconds patience{150};

/// Returns what `start` passes to its callback, from any thread; nullopt if it does not come in time. `start` returns
/// what must live until then.
template <class T, class Start>
std::optional<T> awaited(Start start) {
    auto answer = std::make_shared<std::optional<T>>();
    auto kept = start(
        [answer](T value) { MainQueue::shared()->async([answer, value = std::move(value)] { *answer = value; }); });
    bool came = MainQueue::shared()->runUntil([&] { return answer->has_value(); }, patience);
    return came ? std::move(*answer) : std::nullopt;
}

/// Opens the database of the account and returns its path. If it cannot be opened, writes why in one line to standard
/// error and returns the exit status.
Result<std::string, int> openDatabase(Host& host, const Arguments& arguments);
/// Returns the names of the stored modules; an empty list if modules were never fetched.
std::vector<std::string> storedModuleNames(const std::shared_ptr<DatabaseAdapter>& database);
/// Makes the init call. Returns one line with the reason why it failed, or nullopt.
std::optional<std::string> fetchModules(Host& host);
/// Checks that the module of the arguments is stored, after an init call if no modules are. Returns nullopt if it is,
/// otherwise the exit status; `tokenNeeded` is the error if the call cannot be made without a token.
std::optional<int> findModule(Host& host, const Arguments& arguments, const char* tokenNeeded);
/// Returns the stored fields; nullopt if no metadata of the module is stored.
std::optional<FieldList> storedFields(const std::string& module);
/// Returns the stored layouts, which may be missing although the fields are stored.
using StoredLayouts = std::vector<Layout<OrderedLayoutFieldList>>;
StoredLayouts storedLayouts(const std::string& module);
/// These return the fields of the module of the arguments, or its views by the name that people read, after a fetch if
/// none are stored or a fetch is asked for; otherwise the exit status.
Result<FieldList, int> neededFields(Host& host, const Arguments& arguments, const char* tokenNeeded);
Result<std::vector<CustomView>, int> neededViews(Host& host, const Arguments& arguments, const char* tokenNeeded);
/// Returns a field by its identifier, or by its name in the other naming; null if there is none.
const FieldMetadata* fieldNamed(const FieldList& fields, const std::string& name);
/// Returns the name of a filter's comparator.
std::string comparatorOf(const ColumnFilter& filter);
/// These fetch the metadata, or the views, of a stored module. They return why it failed, or nullopt.
std::optional<std::string> fetchMetadata(Host& host, const std::string& moduleName);
std::optional<std::string> fetchViews(Host& host, const std::string& moduleName);
/// Returns the reason of a failed fetch as part of a line. `cause` says why a request got no answer, if it is known.
std::string explanationOf(CommonError error, const std::string& cause);
std::string explanationOf(const CommonErrorNotice& notice);
/// Waits until nothing of the queues of changes is on its way, and nothing can go at the moment.
void waitForRestingQueues(std::chrono::seconds atMost);
/// Writes to standard output and returns the exit status.
int print(const std::string& text);
/// Writes JSON for programs, with such characters escaped that could steer a terminal.
int printForPrograms(const std::string& json);
/// Writes lines for people, without the characters that could steer their terminal.
int printForPeople(const std::string& lines);

}  // namespace tarvo::host
