#include <httplib.h>

#include "bren_network/BrenNetworkManager.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "sandbox/Certificates.h"
#include "tests/bren_network/Servers.h"

namespace bren::test {

namespace {

const tarvo::sandbox::CertificateFiles& certificates() {
    static const auto files = tarvo::sandbox::ensureCertificates(
        tarvo::files::makeTemporaryDirectory("bren-certificates"), {"localhost", "127.0.0.1"});
    return files.value();
}

Seen seenFrom(const httplib::Request& request) {
    Seen seen{request.method, request.target, request.body, {}, {}};
    for (auto& [name, value] : request.headers) {
        auto& held = seen.headers[tarvo::text::asciiLowercase(name)];
        held += (held.empty() ? "" : ",") + value;
    }
    for (auto& [name, part] : request.files)
        seen.parts[name] = part.filename + "|" + part.content_type + "|" + part.content;
    return seen;
}

}  // namespace

struct SecureServer::State {
    explicit State(Handler handler)
        : handler(std::move(handler)), server([this](SSL_CTX& context) { return setUp(context); }) {}

    bool setUp(SSL_CTX& context) {
        auto file = certificates().server.c_str();
        SSL_CTX_set_alpn_select_cb(&context, &onOffer, this);
        return SSL_CTX_use_certificate_file(&context, file, SSL_FILETYPE_PEM) == 1 &&
               SSL_CTX_use_PrivateKey_file(&context, file, SSL_FILETYPE_PEM) == 1;
    }

    static int onOffer(SSL*, const unsigned char**, unsigned char*, const unsigned char* offer, unsigned length,
                       void* self) {
        auto* state = static_cast<State*>(self);
        std::lock_guard lock(state->mutex);
        state->offered.assign(reinterpret_cast<const char*>(offer), length);
        ++state->connections;
        return SSL_TLSEXT_ERR_NOACK;
    }

    void answer(const httplib::Request& request, httplib::Response& response) {
        auto reply = handler(seenFrom(request));
        response.status = reply.status;
        response.set_content(std::move(reply.body), "application/octet-stream");
        for (auto& [name, value] : reply.headers) response.set_header(name, value);
    }

    Handler handler;
    std::mutex mutex;
    std::string offered;
    int connections = 0;
    httplib::SSLServer server;
    int port = 0;
    std::thread thread;
};

SecureServer::SecureServer(Handler handler) : state_(std::make_unique<State>(std::move(handler))) {
    auto& server = state_->server;
    auto answer = [state = state_.get()](auto& request, auto& response) { state->answer(request, response); };
    server.new_task_queue = [] { return new httplib::ThreadPool(24); };
    server.set_keep_alive_max_count(100'000);
    server.set_tcp_nodelay(true);
    server.Get(".*", answer).Post(".*", answer).Put(".*", answer).Delete(".*", answer);
    state_->port = server.bind_to_any_port("127.0.0.1");
    state_->thread = std::thread([&server] { server.listen_after_bind(); });
    while (!server.is_running()) std::this_thread::yield();
}

SecureServer::~SecureServer() {
    // The server waits for open connections, which the client would keep.
    BrenNetworkManager::sharedInstance().shutDown();
    state_->server.stop();
    state_->thread.join();
}

std::string SecureServer::url(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(port()) + path;
}

int SecureServer::port() const { return state_->port; }

int SecureServer::connections() const {
    std::lock_guard lock(state_->mutex);
    return state_->connections;
}

std::string SecureServer::offeredProtocols() const {
    std::lock_guard lock(state_->mutex);
    return state_->offered;
}

std::string SecureServer::authorityFile() { return certificates().authority; }

}  // namespace bren::test
