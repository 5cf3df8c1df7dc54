#include "tests/sandbox/Client.h"

#include <httplib.h>

namespace tarvo::sandbox::tests {
namespace {

std::optional<ClientAnswer> toAnswer(const httplib::Result& result) {
    if (!result) return std::nullopt;
    return ClientAnswer{result->status, result->body};
}

httplib::Headers toHeaders(const Client::Headers& headers) { return {headers.begin(), headers.end()}; }

}  // namespace

struct Client::Implementation {
    httplib::SSLClient client;
};

Client::Client(const std::string& host, int port, const std::string& authority)
    : implementation_(new Implementation{httplib::SSLClient(host, port)}) {
    implementation_->client.set_ca_cert_path(authority.c_str());
    implementation_->client.enable_server_certificate_verification(true);
    implementation_->client.set_hostname_addr_map({{host, "127.0.0.1"}});
}

Client::~Client() = default;

std::optional<ClientAnswer> Client::post(const std::string& path, const Form& form, const std::string& authorization) {
    httplib::Request request;
    request.method = "POST";
    request.path = path;
    if (!authorization.empty()) request.set_header("Authorization", authorization);
    request.set_header("Content-Type", "application/x-www-form-urlencoded");
    request.body = httplib::detail::params_to_query_str(form);
    std::string body;
    request.content_receiver = [&](const char* bytes, std::size_t size, std::uint64_t, std::uint64_t) {
        body.append(bytes, size);
        return true;
    };
    auto result = implementation_->client.send(request);
    received_ = body.size();
    if (!result) return std::nullopt;
    return ClientAnswer{result->status, body};
}

std::optional<ClientAnswer> Client::postJson(const std::string& path, const std::string& json, const Headers& headers) {
    return toAnswer(implementation_->client.Post(path, toHeaders(headers), json, "application/json"));
}

std::optional<ClientAnswer> Client::upload(const std::string& path, const std::string& fileName,
                                           const std::string& content, const Headers& headers, const Form& parameters) {
    httplib::MultipartFormDataItems parts{{"file", content, fileName, "application/octet-stream"}};
    for (const auto& [name, value] : parameters) parts.push_back({name, value, "", ""});
    return toAnswer(implementation_->client.Post(path, toHeaders(headers), parts));
}

std::optional<ClientAnswer> Client::get(const std::string& path) { return toAnswer(implementation_->client.Get(path)); }

std::optional<ClientAnswer> Client::remove(const std::string& path) {
    return toAnswer(implementation_->client.Delete(path));
}

}  // namespace tarvo::sandbox::tests
