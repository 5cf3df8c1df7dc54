#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <memory>

#include "platform/Files.h"
#include "sandbox/Certificates.h"

namespace tarvo::sandbox {
namespace {

class CertificatesTests : public ::testing::Test {
protected:
    void SetUp() override { folder = files::makeTemporaryDirectory("certificates"); }
    void TearDown() override { files::remove(folder); }

    CertificateFiles ensure(const std::vector<std::string>& hosts) {
        auto made = ensureCertificates(folder, hosts);
        EXPECT_TRUE(made);
        return made ? *made : CertificateFiles{};
    }
    std::string content(const std::string& path) { return files::read(path)->text(); }

    static std::shared_ptr<X509> certificate(const std::string& path) {
        std::unique_ptr<BIO, decltype(&BIO_free_all)> file(BIO_new_file(path.c_str(), "r"), BIO_free_all);
        return {PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr), X509_free};
    }
    /// Returns whether OpenSSL verifies the server's certificate by the authority for that host.
    static bool verifies(const CertificateFiles& files, const char* host, bool isAddress) {
        auto authority = certificate(files.authority);
        auto server = certificate(files.server);
        std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(X509_STORE_new(), X509_STORE_free);
        X509_STORE_add_cert(store.get(), authority.get());
        std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> context(X509_STORE_CTX_new(),
                                                                                X509_STORE_CTX_free);
        X509_STORE_CTX_init(context.get(), store.get(), server.get(), nullptr);
        auto* parameters = X509_STORE_CTX_get0_param(context.get());
        X509_VERIFY_PARAM_set_purpose(parameters, X509_PURPOSE_SSL_SERVER);
        X509_VERIFY_PARAM_set_flags(parameters, X509_V_FLAG_X509_STRICT);
        if (isAddress)
            X509_VERIFY_PARAM_set1_ip_asc(parameters, host);
        else
            X509_VERIFY_PARAM_set1_host(parameters, host, 0);
        return X509_verify_cert(context.get()) == 1;
    }

    std::string folder;
};

TEST_F(CertificatesTests, CoverEveryHostThatClientsUse) {
    auto hosts = defaultHostNames();
    hosts.push_back("eu-crm.localhost");
    auto files = ensure(hosts);
    for (std::string name : {"localhost", "sandbox.localhost", "mproxy.localhost", "premproxy.localhost",
                             "crm.localhost", "labmproxy.localhost", "devmproxy.localhost", "accounts.localhost",
                             "contacts.localhost", "eu-crm.localhost", "other.localhost"})
        EXPECT_EQ(verifies(files, name.c_str(), false), name != "other.localhost") << name;
    for (std::string address : {"127.0.0.1", "::1", "127.0.0.2"})
        EXPECT_EQ(verifies(files, address.c_str(), true), address != "127.0.0.2") << address;
}

TEST_F(CertificatesTests, KeepTheAuthorityAndRenewTheServerForNewNames) {
    auto first = ensure(defaultHostNames());
    auto authority = content(first.authority), server = content(first.server);
    ensure(defaultHostNames());
    EXPECT_EQ(content(first.server), server);

    auto more = defaultHostNames();
    more.push_back("eu-mproxy.localhost");
    auto renewed = ensure(more);
    EXPECT_EQ(content(renewed.authority), authority);
    EXPECT_NE(content(renewed.server), server);
    EXPECT_TRUE(verifies(renewed, "eu-mproxy.localhost", false));
    server = content(renewed.server);
    ensure(defaultHostNames());
    EXPECT_EQ(content(renewed.server), server) << "more names than wanted are no reason to renew";
}

TEST_F(CertificatesTests, RepairWhatIsDamagedOrBelongsToAnotherAuthority) {
    auto files = ensure(defaultHostNames());
    auto authority = content(files.authority);
    ASSERT_TRUE(files::writeAtomically(files.server, "-----BEGIN NOTHING-----"));
    ensure(defaultHostNames());
    EXPECT_TRUE(verifies(files, "localhost", false));
    EXPECT_EQ(content(files.authority), authority);

    ASSERT_TRUE(files::writeAtomically(folder + "/authority-key.pem", ""));
    ensure(defaultHostNames());
    EXPECT_NE(content(files.authority), authority);
    EXPECT_TRUE(verifies(files, "localhost", false)) << "the server's certificate follows a new authority";
}

TEST_F(CertificatesTests, KeysAreTheOwnersAlone) {
    ensure(defaultHostNames());
    for (auto name : {"/authority-key.pem", "/server.pem"}) {
        struct stat about {};
        ASSERT_EQ(::stat((folder + name).c_str(), &about), 0);
        EXPECT_EQ(about.st_mode & 0777, 0600u) << name;
    }
}

TEST_F(CertificatesTests, RefuseWhatIsNoHostName) {
    for (auto host : {"", "a b", "x,IP:1.2.3.4", "x\nDNS:evil", "*.localhost"})
        EXPECT_FALSE(ensureCertificates(folder, {host})) << host;
}

}  // namespace
}  // namespace tarvo::sandbox
