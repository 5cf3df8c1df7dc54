#pragma once

#include "sandbox/Message.h"

namespace tarvo::sandbox {

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
    Reply state(const Request& request);
    Reply stop(const Request& request);

    Sandbox& sandbox_;
};

}  // namespace tarvo::sandbox
