#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace tarvo::sandbox {

/// Names the files that a TLS server and its clients need.
struct CertificateFiles {
    /// The authority's certificate, for clients to trust.
    std::string authority;
    /// The server's key and certificate in one file, readable only by its owner.
    std::string server;
};

/// Returns the names that the certificate always holds: localhost, its two addresses, and one host below ".localhost"
/// for every label that clients put in front of a domain. Clients refuse "*.localhost", so each is listed.
std::vector<std::string> defaultHostNames();

/// Returns whether a text may stand in a certificate as a name or an address.
bool isHost(const std::string& text);

/// Makes what is missing in the folder: an authority, kept for years so that clients need to trust it once, and a
/// server certificate for exactly these hosts (names or addresses). Existing files are kept while they are valid,
/// belong together and cover all the names. Several processes may share a folder. A failure says what went wrong.
Result<CertificateFiles, std::string> ensureCertificates(const std::string& folder,
                                                         const std::vector<std::string>& hosts);

}  // namespace tarvo::sandbox
