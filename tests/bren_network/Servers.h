#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace bren::test {

/// A request as a server saw it; header names in lower case.
struct Seen {
    std::string method;
    std::string target;
    std::string body;
    std::map<std::string, std::string> headers;
    /// For a multipart form: field name to "file name|content type|content".
    std::map<std::string, std::string> parts;
};

struct Reply {
    int status = 200;
    std::string body;
    std::map<std::string, std::string> headers;
};

/// HTTPS on 127.0.0.1 with a certificate of a test authority, for 127.0.0.1 and localhost.
class SecureServer {
public:
    using Handler = std::function<Reply(const Seen&)>;
    explicit SecureServer(Handler handler);
    ~SecureServer();

    std::string url(const std::string& path) const;
    int port() const;
    int connections() const;
    /// What the last connection offered to speak, as on the wire.
    std::string offeredProtocols() const;
    /// The authority's certificate in PEM form.
    static std::string authorityFile();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Plain TCP on 127.0.0.1. Each connection is handed to the script, which may do anything to it and need not close it.
class RawServer {
public:
    using Script = std::function<void(int socket)>;
    explicit RawServer(Script script);
    ~RawServer();
    std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }
    int port() const { return port_; }

    /// Reads until the blank line after the header; false if the other side has closed.
    static bool readHeader(int socket);
    static void write(int socket, const std::string& bytes);
    /// Returns when the other side has closed or the server is ended.
    static void waitForClose(int socket);
    /// Reads a request and answers it with these bytes.
    static Script answering(std::string bytes) {
        return [bytes = std::move(bytes)](int socket) { readHeader(socket), write(socket, bytes); };
    }
    /// Closes in a way that the other side sees as "connection reset".
    static void reset(int socket);
    /// A whole request of its own, past the client under test. Returns when the answer is there.
    static void askDirectly(int port);

private:
    void accept();
    Script script_;
    int listener_ = -1;
    int port_ = 0;
    std::thread acceptor_;
    std::mutex mutex_;
    std::vector<int> sockets_;
    std::vector<std::thread> scripts_;
};

/// A port of 127.0.0.1 where nobody listens.
int unusedPort();

}  // namespace bren::test
