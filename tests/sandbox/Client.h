#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tarvo::sandbox::tests {

struct ClientAnswer {
    int status;
    std::string body;
};

/// Sends requests; it trusts only one authority and checks the name of the host.
class Client {
public:
    Client(const std::string& host, int port, const std::string& authority);
    ~Client();

    using Form = std::multimap<std::string, std::string>;

    /// Returns nullopt when the connection ended before a whole answer.
    std::optional<ClientAnswer> post(const std::string& path, const Form& form, const std::string& authorization = "");
    using Headers = std::multimap<std::string, std::string>;
    std::optional<ClientAnswer> postJson(const std::string& path, const std::string& json, const Headers& headers = {});
    /// Uploads a file under the name "file" in a multipart body.
    std::optional<ClientAnswer> upload(const std::string& path, const std::string& fileName, const std::string& content,
                                       const Headers& headers, const Form& parameters = {});
    std::optional<ClientAnswer> get(const std::string& path);
    std::optional<ClientAnswer> remove(const std::string& path);
    /// Returns how many bytes of the body arrived with the last post, complete or not.
    std::size_t received() const { return received_; }

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
    std::size_t received_ = 0;
};

}  // namespace tarvo::sandbox::tests
