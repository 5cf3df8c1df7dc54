#include "sandbox/HttpsServer.h"

#include <httplib.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <set>
#include <thread>

#include "platform/Log.h"
#include "platform/ThreadSafety.h"

namespace tarvo::sandbox {
namespace {

// A connection that a client keeps open holds one of these threads.
constexpr std::size_t threads = 64;
constexpr std::size_t requestsPerConnection = 1'000'000;
constexpr time_t idleSeconds = 30;
constexpr std::size_t largestBody = 256u << 20;

/// Knows the sockets of the open connections, so that a server that ends need not wait until they time out.
class Connections {
public:
    /// Follows every connection of a context from its handshake to its end. The context must not outlive this object.
    void follow(SSL_CTX* context) {
        SSL_CTX_set_app_data(context, this);
        SSL_CTX_set_info_callback(context, [](const SSL* ssl, int where, int) {
            if (where & SSL_CB_HANDSHAKE_START) began(const_cast<SSL*>(ssl));
        });
    }

    void endAll() {
        platform::MutexLock lock(mutex_);
        for (int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
    }

private:
    struct Entry {
        Connections* all;
        int socket;
    };

    static int slot() {
        static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr,
                                                      [](void*, void* held, CRYPTO_EX_DATA*, int, long, void*) {
                                                          if (held) ended(static_cast<Entry*>(held));
                                                      });
        return index;
    }

    static void began(SSL* ssl) {
        auto* all = static_cast<Connections*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
        if (SSL_get_ex_data(ssl, slot())) return;
        SSL_set_ex_data(ssl, slot(), new Entry{all, SSL_get_fd(ssl)});
        platform::MutexLock lock(all->mutex_);
        all->sockets_.insert(SSL_get_fd(ssl));
    }

    // Runs before the socket is closed, so the number cannot belong to another connection.
    static void ended(Entry* entry) {
        std::unique_ptr<Entry> owned(entry);
        platform::MutexLock lock(owned->all->mutex_);
        owned->all->sockets_.erase(owned->socket);
    }

    platform::Mutex mutex_;
    std::set<int> sockets_ TARVO_GUARDED_BY(mutex_);
};

bool setUp(SSL_CTX& context, const std::string& serverFile) {
    SSL_CTX_set_min_proto_version(&context, TLS1_2_VERSION);
    return SSL_CTX_use_certificate_chain_file(&context, serverFile.c_str()) == 1 &&
           SSL_CTX_use_PrivateKey_file(&context, serverFile.c_str(), SSL_FILETYPE_PEM) == 1 &&
           SSL_CTX_check_private_key(&context) == 1;
}

Request describe(const httplib::Request& from) {
    Request request;
    request.method = from.method;
    request.path = from.path;
    request.parameters.insert(from.params.begin(), from.params.end());
    request.body = from.body;
    request.authorization = from.get_header_value("Authorization");
    request.organisation = from.get_header_value("X-CRM-ORG");
    request.transactionId = from.get_header_value("x-transaction-id");
    return request;
}

// Forms are read here because the library refuses those of more than eight kilobytes.
Request readWhole(const httplib::Request& from, const httplib::ContentReader& reader) {
    auto request = describe(from);
    // Without either header there is no body, and the library would wait for one until its time-out.
    if (!from.has_header("Content-Length") && !from.has_header("Transfer-Encoding")) return request;
    if (from.is_multipart_form_data()) {
        reader(
            [&](const httplib::MultipartFormData& part) {
                request.files.push_back({part.name, part.filename, part.content_type, ""});
                return true;
            },
            [&](const char* bytes, std::size_t size) {
                request.files.back().content.append(bytes, size);
                return true;
            });
        // A part without a file name is a plain parameter.
        std::erase_if(request.files, [&](const UploadedFile& file) {
            if (file.name.empty()) request.parameters.emplace(file.field, file.content);
            return file.name.empty();
        });
        return request;
    }
    reader([&](const char* bytes, std::size_t size) {
        request.body.append(bytes, size);
        return true;
    });
    if (from.get_header_value("Content-Type").starts_with("application/x-www-form-urlencoded")) {
        httplib::Params parameters;
        httplib::detail::parse_query_text(request.body, parameters);
        request.parameters.insert(parameters.begin(), parameters.end());
        request.body.clear();
    }
    return request;
}

void sendHalf(httplib::Response& response, const Answer& answer) {
    auto body = std::make_shared<std::string>(answer.body);
    response.set_content_provider(body->size(), answer.contentType,
                                  [body](std::size_t, std::size_t, httplib::DataSink& sink) {
                                      sink.write(body->data(), body->size() / 2);
                                      return false;
                                  });
}

void deliver(const Answer& answer, const httplib::Request& request, httplib::Response& response) {
    switch (answer.delivery) {
        case Delivery::none:
            // With its socket shut, whatever the library writes from here on is lost, and it closes the
            // connection.
            ::shutdown(SSL_get_fd(request.ssl), SHUT_RDWR);
            response.status = 500;
            return;
        case Delivery::half:
            response.status = answer.status;
            return sendHalf(response, answer);
        case Delivery::whole:
            response.status = answer.status;
            return response.set_content(answer.body, answer.contentType);
    }
}

}  // namespace

class HttpsServer::Listener {
public:
    Listener(const std::string& serverFile, const Handler& handler)
        : server_([&](SSL_CTX& context) { return setUp(context, serverFile); }), handler_(handler) {
        if (!server_.is_valid()) return;
        connections_.follow(server_.ssl_context());
        server_.new_task_queue = [] { return new httplib::ThreadPool(threads); };
        // Without this the library lets a second server share the port silently.
        server_.set_socket_options([](socket_t socket) {
            int yes = 1;
            ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        server_.set_keep_alive_max_count(requestsPerConnection);
        server_.set_keep_alive_timeout(idleSeconds);
        server_.set_payload_max_length(largestBody);
        server_.set_tcp_nodelay(true);
        addRoutes();
    }
    ~Listener() { stop(); }

    bool isUsable() const { return server_.is_valid(); }

    /// Returns the port, or nullopt when the address is not available.
    std::optional<int> start(const char* address, int port) {
        int bound = port == 0 ? server_.bind_to_any_port(address) : (server_.bind_to_port(address, port) ? port : -1);
        if (bound <= 0) return std::nullopt;
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        return bound;
    }

    void stop() {
        if (!thread_.joinable()) return;
        // The library forgets a stop that comes before its loop runs.
        while (!server_.is_running()) std::this_thread::yield();
        server_.stop();
        connections_.endAll();
        thread_.join();
    }

private:
    void addRoutes() {
        auto plain = [this](const httplib::Request& request, httplib::Response& response) {
            deliver(handler_(describe(request)), request, response);
        };
        auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                               const httplib::ContentReader& reader) {
            deliver(handler_(readWhole(request, reader)), request, response);
        };
        server_.Get(".*", plain);
        server_.Delete(".*", plain);
        server_.Post(".*", withBody);
        server_.set_exception_handler([](const httplib::Request&, httplib::Response& response, std::exception_ptr) {
            platform::log(platform::LogLevel::warning, "sandbox", "A call of the server failed.");
            response.status = 500;
        });
    }

    // Outlives the server's context, whose last connections still report their end.
    Connections connections_;
    httplib::SSLServer server_;
    const Handler& handler_;
    std::thread thread_;
};

HttpsServer::HttpsServer(std::string serverFile, Handler handler)
    : serverFile_(std::move(serverFile)), handler_(std::move(handler)) {}

HttpsServer::~HttpsServer() { stop(); }

Result<int, std::string> HttpsServer::start(int port) {
    using Started = Result<int, std::string>;
    v4_ = std::make_unique<Listener>(serverFile_, handler_);
    if (!v4_->isUsable()) return Started::failure("the server's certificate cannot be used");
    auto bound = v4_->start("127.0.0.1", port);
    if (!bound) return Started::failure("cannot listen on port " + std::to_string(port));
    // Some clients resolve "localhost" to the IPv6 address, so the server listens there too where the machine has it.
    v6_ = std::make_unique<Listener>(serverFile_, handler_);
    if (!v6_->start("::1", *bound)) v6_.reset();
    return Started::success(*bound);
}

void HttpsServer::stop() {
    v4_.reset();
    v6_.reset();
}

}  // namespace tarvo::sandbox
