#pragma once

#include <string>
#include <string_view>

#include "sandbox/Message.h"

namespace tarvo::sandbox {

class DataSet;
class Sandbox;

/// Handles the calls below "/control/", with which tests and scripts steer the server. They need no token, since the
/// server listens only on loopback.
class Control {
public:
    explicit Control(Sandbox& sandbox) : sandbox_(sandbox) {}

    Reply handle(const Request& request);

private:
    Reply addFault(const Request& request);
    Reply faults(const Request& request);
    Reply clearFaults(const Request& request);
    Reply release(const Request& request);
    Reply requests(const Request& request);
    Reply clearRequests(const Request& request);
    Reply setTags(const Request& request);
    Reply setClock(const Request& request);
    Reply changeRecords(const Request& request);
    Reply changeViews(const Request& request);
    Reply changeAtRandom(const Request& request);
    Reply setSync(const Request& request);
    Reply records(const Request& request);
    Reply changes(const Request& request);
    Reply files(const Request& request);
    Reply file(const Request& request);
    Reply setRules(const Request& request);
    Reply state(const Request& request);
    Reply stop(const Request& request);

    /// Returns the data set of an account and its organisation, the shared one for empty names; null for an unknown
    /// account. The caller holds the server's lock.
    DataSet* dataFor(const std::string& account, const std::string& organisation);

    Sandbox& sandbox_;
};

/// Refuses a control call.
Reply refusedControl(int status, std::string_view message);

}  // namespace tarvo::sandbox
