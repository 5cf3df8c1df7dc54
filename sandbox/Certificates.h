#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace tarvo::sandbox {

/// Files that a TLS server and its clients need.
struct CertificateFiles {
    /// The authority's certificate, for clients to trust.
    std::string authority;
    /// The server's key and certificate in one file, readable by its owner alone.
    std::string server;
};

/// The names that the certificate always holds: localhost, its two addresses, and one host below ".localhost" for every
/// label that clients put in front of a domain. Clients refuse "*.localhost", so each is listed.
std::vector<std::string> defaultHostNames();

/// Whether a text may stand in a certificate as a name or an address.
bool isHost(const std::string& text);

/// Makes what is missing in the folder: an authority, kept for years so that clients need to trust it once, and a
/// server certificate for exactly these hosts (names or addresses). What is there is kept while it is valid, belongs
/// together and covers all the names. Several processes may share a folder. Otherwise says what failed.
Result<CertificateFiles, std::string> ensureCertificates(const std::string& folder,
                                                         const std::vector<std::string>& hosts);

}  // namespace tarvo::sandbox
