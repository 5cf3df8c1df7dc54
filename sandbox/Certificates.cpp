#include "sandbox/Certificates.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Random.h"
#include "platform/Text.h"

namespace tarvo::sandbox {
namespace {

constexpr long daySeconds = 24 * 60 * 60;
constexpr long authorityLife = 3650 * daySeconds;
// Clients limit the life of a server's certificate to 398 days.
constexpr long serverLife = 390 * daySeconds;
constexpr long renewBefore = 30 * daySeconds;
// A client whose clock is a little slow must not refuse a fresh certificate.
constexpr long startsBefore = 60 * 60;

template <auto release>
struct Release {
    void operator()(auto* pointer) const { release(pointer); }
};
using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Release<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Release<X509_EXTENSION_free>>;
using Bio = std::unique_ptr<BIO, Release<BIO_free_all>>;

/// Holds a key and its certificate.
struct Identity {
    Key key;
    Certificate certificate;
    explicit operator bool() const { return key && certificate; }
};

/// Locks the folder against other processes for as long as it lives.
class FolderLock {
public:
    explicit FolderLock(const std::string& folder)
        : file_(::open((folder + "/lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)) {
        if (file_ >= 0) ::flock(file_, LOCK_EX);
    }
    ~FolderLock() {
        if (file_ >= 0) ::close(file_);
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int file_;
};

Identity readIdentity(const std::string& path) {
    if (!files::exists(path)) return {};
    auto content = files::read(path);
    if (!content) return {};
    Bio bio(BIO_new_mem_buf(content->view().data(), static_cast<int>(content->size())));
    Identity identity;
    identity.key.reset(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr));
    identity.certificate.reset(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
    if (!identity || X509_check_private_key(identity.certificate.get(), identity.key.get()) != 1) return {};
    return identity;
}

std::string contentOf(BIO* bio) {
    char* start = nullptr;
    auto size = BIO_get_mem_data(bio, &start);
    return std::string(start, static_cast<std::size_t>(size));
}

std::string pemOf(X509* certificate) {
    Bio bio(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(bio.get(), certificate);
    return contentOf(bio.get());
}

std::string pemOf(const Identity& identity) {
    Bio bio(BIO_new(BIO_s_mem()));
    PEM_write_bio_PrivateKey(bio.get(), identity.key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    return contentOf(bio.get()) + pemOf(identity.certificate.get());
}

bool isValidForAWhile(X509* certificate) {
    auto now = static_cast<time_t>(platform::Clock::secondsSince1970());
    auto later = now + renewBefore;
    return X509_cmp_time(X509_get0_notBefore(certificate), &now) < 0 &&
           X509_cmp_time(X509_get0_notAfter(certificate), &later) > 0;
}

bool isAddress(const std::string& host) {
    std::unique_ptr<ASN1_OCTET_STRING, Release<ASN1_OCTET_STRING_free>> address(a2i_IPADDRESS(host.c_str()));
    return address != nullptr;
}

bool covers(X509* certificate, const std::vector<std::string>& hosts) {
    return std::all_of(hosts.begin(), hosts.end(), [&](const std::string& host) {
        return isAddress(host) ? X509_check_ip_asc(certificate, host.c_str(), 0) == 1
                               : X509_check_host(certificate, host.data(), host.size(), 0, nullptr) == 1;
    });
}

bool addExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    Extension extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

bool setSerial(X509* certificate) {
    auto bytes = platform::Random::bytes(16);
    // A serial number is positive and at most twenty bytes long.
    bytes[0] = static_cast<char>((bytes[0] & 0x3f) | 0x40);
    std::unique_ptr<BIGNUM, Release<BN_free>> number(
        BN_bin2bn(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()), nullptr));
    return number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate));
}

/// Makes a key and a certificate for it that still lacks its issuer, extensions and signature.
Identity beginIdentity(const char* commonName, long life) {
    Identity identity{Key(EVP_EC_gen("P-256")), Certificate(X509_new())};
    if (!identity) return {};
    auto* certificate = identity.certificate.get();
    auto now = static_cast<time_t>(platform::Clock::secondsSince1970());
    X509_time_adj_ex(X509_getm_notBefore(certificate), 0, -startsBefore, &now);
    X509_time_adj_ex(X509_getm_notAfter(certificate), static_cast<int>(life / daySeconds), 0, &now);
    auto* name = X509_get_subject_name(certificate);
    bool made = X509_set_version(certificate, X509_VERSION_3) == 1 && setSerial(certificate) &&
                X509_set_pubkey(certificate, identity.key.get()) == 1 &&
                X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                           reinterpret_cast<const unsigned char*>(commonName), -1, -1, 0) == 1;
    return made ? std::move(identity) : Identity{};
}

Identity makeAuthority() {
    auto authority = beginIdentity("Tarvo Sandbox Authority", authorityLife);
    if (!authority) return {};
    auto* certificate = authority.certificate.get();
    bool made = X509_set_issuer_name(certificate, X509_get_subject_name(certificate)) == 1 &&
                addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0") &&
                addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign,cRLSign") &&
                addExtension(certificate, certificate, NID_subject_key_identifier, "hash") &&
                X509_sign(certificate, authority.key.get(), EVP_sha256()) > 0;
    return made ? std::move(authority) : Identity{};
}

std::string alternativeNames(const std::vector<std::string>& hosts) {
    std::vector<std::string> names;
    for (const auto& host : hosts) names.push_back((isAddress(host) ? "IP:" : "DNS:") + host);
    return text::join(names, ",");
}

Identity makeServer(const Identity& authority, const std::vector<std::string>& hosts) {
    auto server = beginIdentity("localhost", serverLife);
    if (!server) return {};
    auto* certificate = server.certificate.get();
    auto* issuer = authority.certificate.get();
    bool made = X509_set_issuer_name(certificate, X509_get_subject_name(issuer)) == 1 &&
                addExtension(certificate, issuer, NID_basic_constraints, "critical,CA:FALSE") &&
                addExtension(certificate, issuer, NID_key_usage, "critical,digitalSignature") &&
                addExtension(certificate, issuer, NID_ext_key_usage, "serverAuth") &&
                addExtension(certificate, issuer, NID_subject_key_identifier, "hash") &&
                addExtension(certificate, issuer, NID_authority_key_identifier, "keyid:always") &&
                addExtension(certificate, issuer, NID_subject_alt_name, alternativeNames(hosts)) &&
                X509_sign(certificate, authority.key.get(), EVP_sha256()) > 0;
    return made ? std::move(server) : Identity{};
}

}  // namespace

// Host names go into OpenSSL's own little language, so only the characters of a host name may pass.
bool isHost(const std::string& host) {
    auto allowed = [](unsigned char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.';
    };
    return isAddress(host) || (!host.empty() && host.size() <= 253 && std::all_of(host.begin(), host.end(), allowed));
}

std::vector<std::string> defaultHostNames() {
    std::vector<std::string> hosts{"localhost", "127.0.0.1", "::1"};
    for (auto label : {"sandbox", "mproxy", "premproxy", "labmproxy", "devmproxy", "accounts", "contacts", "crm"})
        hosts.push_back(std::string(label) + ".localhost");
    return hosts;
}

Result<CertificateFiles, std::string> ensureCertificates(const std::string& folder,
                                                         const std::vector<std::string>& hosts) {
    using Ensured = Result<CertificateFiles, std::string>;
    for (const auto& host : hosts)
        if (!isHost(host)) return Ensured::failure("\"" + host + "\" is no host name");
    if (!files::createDirectories(folder)) return Ensured::failure("cannot create " + folder);
    FolderLock lock(folder);
    CertificateFiles paths{folder + "/authority.pem", folder + "/server.pem"};
    auto authorityKeyPath = folder + "/authority-key.pem";

    auto authority = readIdentity(authorityKeyPath);
    bool isNew = !authority || !isValidForAWhile(authority.certificate.get());
    if (isNew) authority = makeAuthority();
    if (!authority) return Ensured::failure("cannot make an authority");
    if (isNew && !files::writeAtomically(authorityKeyPath, pemOf(authority), true))
        return Ensured::failure("cannot write " + authorityKeyPath);
    if ((isNew || !files::exists(paths.authority)) &&
        !files::writeAtomically(paths.authority, pemOf(authority.certificate.get())))
        return Ensured::failure("cannot write " + paths.authority);

    auto server = readIdentity(paths.server);
    bool isUsable = server && isValidForAWhile(server.certificate.get()) && covers(server.certificate.get(), hosts) &&
                    X509_verify(server.certificate.get(), authority.key.get()) == 1;
    if (isUsable) return Ensured::success(paths);
    server = makeServer(authority, hosts);
    if (!server) return Ensured::failure("cannot make a server certificate");
    if (!files::writeAtomically(paths.server, pemOf(server), true))
        return Ensured::failure("cannot write " + paths.server);
    return Ensured::success(paths);
}

}  // namespace tarvo::sandbox
