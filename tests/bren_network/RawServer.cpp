#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/bren_network/Servers.h"

namespace bren::test {

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int boundSocket(int& port) {
    int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    auto address = loopback(0);
    socklen_t length = sizeof address;
    ::bind(socket, reinterpret_cast<sockaddr*>(&address), length);
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);
    return socket;
}

}  // namespace

RawServer::RawServer(Script script) : script_(std::move(script)) {
    listener_ = boundSocket(port_);
    ::listen(listener_, 64);
    acceptor_ = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
    for (auto& script : scripts_) script.join();
    for (int socket : sockets_) ::close(socket);
    ::close(listener_);
}

void RawServer::accept() {
    for (int socket; (socket = ::accept(listener_, nullptr, nullptr)) >= 0;) {
        sockets_.push_back(socket);
        scripts_.emplace_back([this, socket] {
            script_(socket);
            ::shutdown(socket, SHUT_RDWR);
        });
    }
}

bool RawServer::readHeader(int socket) {
    std::string header;
    char byte;
    while (!header.ends_with("\r\n\r\n")) {
        if (::recv(socket, &byte, 1, 0) <= 0) return false;
        header += byte;
    }
    return true;
}

void RawServer::write(int socket, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        auto now = ::send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (now <= 0) return;
        sent += static_cast<std::size_t>(now);
    }
}

void RawServer::waitForClose(int socket) {
    char bytes[4096];
    while (::recv(socket, bytes, sizeof bytes, 0) > 0) {
    }
}

void RawServer::reset(int socket) {
    // Aborts the connection while the descriptor stays ours.
    sockaddr nowhere{};
    nowhere.sa_family = AF_UNSPEC;
    ::connect(socket, &nowhere, sizeof nowhere);
}

void RawServer::askDirectly(int port) {
    int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    auto address = loopback(port);
    ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    write(socket, "GET /direct HTTP/1.1\r\n\r\n");
    readHeader(socket);
    ::close(socket);
}

int unusedPort() {
    int port = 0;
    ::close(boundSocket(port));
    return port;
}

}  // namespace bren::test
