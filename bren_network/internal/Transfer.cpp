#include "bren_network/internal/Transfer.h"

#include <openssl/x509_vfy.h>

#include <algorithm>

#include "bren_network/internal/Tuning.h"
#include "platform/Text.h"

namespace bren {

using Kind = NetworkError::Kind;
namespace text = tarvo::platform::text;

namespace {

Kind kindOf(CURLcode code) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_CONNECT:
        case CURLE_SSL_CONNECT_ERROR:
            return Kind::cannotConnect;
        case CURLE_OPERATION_TIMEDOUT:
            return Kind::timeout;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CRL_BADFILE:
        case CURLE_SSL_INVALIDCERTSTATUS:
            return Kind::certificate;
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
        case CURLE_GOT_NOTHING:
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
            return Kind::connectionLost;
        case CURLE_READ_ERROR:
        case CURLE_FILE_COULDNT_READ_FILE:
            return Kind::file;
        case CURLE_URL_MALFORMAT:
            return Kind::invalidURL;
        default:
            return Kind::other;
    }
}

/// Says what is wrong with a certificate: OpenSSL's verdict, which stays unspecified for a certificate of another host.
std::string_view certificateFault(long verdict) {
    switch (verdict) {
        case X509_V_OK:
        case X509_V_ERR_UNSPECIFIED:
        case X509_V_ERR_HOSTNAME_MISMATCH:
        case X509_V_ERR_IP_ADDRESS_MISMATCH:
            return "certificate of another host";
        case X509_V_ERR_CERT_HAS_EXPIRED:
            return "certificate expired";
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return "certificate not yet valid";
        case X509_V_ERR_CERT_REVOKED:
            return "certificate revoked";
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
            return "certificate of an unknown authority";
        default:
            return kindName(Kind::certificate);
    }
}

/// "HTTP/1.1 200 OK" or "HTTP/2 200".
int statusCodeOf(std::string_view statusLine) {
    auto blank = statusLine.find(' ');
    if (blank == statusLine.npos) return 0;
    return static_cast<int>(text::toInteger(statusLine.substr(blank + 1, 3)).value_or(0));
}

bool append(curl_slist*& list, const std::string& line) {
    auto* longer = curl_slist_append(list, line.c_str());
    if (longer) list = longer;
    return longer != nullptr;
}

}  // namespace

Transfer::Transfer(PreparedRequest request, TransferSettings settings, std::shared_ptr<Delivery> delivery)
    : request_(std::move(request)), settings_(std::move(settings)), delivery_(std::move(delivery)) {}

Transfer::~Transfer() {
    curl_easy_cleanup(easy_);
    curl_mime_free(form_);
    curl_slist_free_all(headerLines_);
}

bool Transfer::begin() {
    easy_ = curl_easy_init();
    if (!easy_) return false;
    noteProgress();
    setConnectionOptions();
    setTrust();
    curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &onHeader);
    curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &onBody);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy_, CURLOPT_PREREQFUNCTION, &onAboutToSend);
    curl_easy_setopt(easy_, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy_, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(easy_, CURLOPT_XFERINFOFUNCTION, &onMoved);
    curl_easy_setopt(easy_, CURLOPT_XFERINFODATA, this);
    return setRequest() && setHeaders();
}

void Transfer::setConnectionOptions() {
    bool isSecure = text::asciiLowercase(request_.url.substr(0, 6)) == "https:";
    auto connect = std::clamp(request_.timeout, std::chrono::milliseconds(1), tuning::connectTimeout);
    curl_easy_setopt(easy_, CURLOPT_URL, request_.url.c_str());
    curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connect.count()));
    // Without it the thread would wait for a name look-up that hangs; the look-up's own thread tidies up after itself.
    curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    // Over TLS it is known after the handshake whether the connection can carry several requests: wait for that.
    curl_easy_setopt(easy_, CURLOPT_PIPEWAIT, isSecure ? 1L : 0L);
    curl_easy_setopt(easy_, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy_, CURLOPT_BUFFERSIZE, tuning::transferBuffer);
    curl_easy_setopt(easy_, CURLOPT_UPLOAD_BUFFERSIZE, tuning::transferBuffer);
    curl_easy_setopt(easy_, CURLOPT_USERAGENT, settings_.userAgent.c_str());
    curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
    // A redirection never leaves TLS. libcurl itself keeps "Authorization" from every other host, port and protocol.
    curl_easy_setopt(easy_, CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https");
    curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy_, CURLOPT_MAXREDIRS, tuning::maximumRedirections);
}

void Transfer::setTrust() {
    curl_easy_setopt(easy_, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy_, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(easy_, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (settings_.authorities) {
        // Connections are matched by this text too, so none is reused under another trust than it was made with.
        curl_blob blob{const_cast<char*>(settings_.authorities->data()), settings_.authorities->size(),
                       CURL_BLOB_NOCOPY};
        curl_easy_setopt(easy_, CURLOPT_CAINFO_BLOB, &blob);
        return;
    }
    // The system's bundle holds all that its folder does. Without the folder libcurl keeps the parsed bundle between
    // connections; parsing it each time takes longer than a handshake.
    char* bundle = nullptr;
    if (curl_easy_getinfo(easy_, CURLINFO_CAINFO, &bundle) == CURLE_OK && bundle)
        curl_easy_setopt(easy_, CURLOPT_CAPATH, nullptr);
}

bool Transfer::setRequest() {
    if (!request_.files.empty() || !request_.fields.empty()) return setForm();
    auto& method = request_.method;
    if (request_.body || method == "POST") {
        auto bytes = request_.body ? request_.body->view() : std::string_view();
        curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(bytes.size()));
        curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, bytes.empty() ? "" : bytes.data());
    }
    // A method that is set by name would outlive a redirection that turns a POST into a GET.
    if (method == "HEAD")
        curl_easy_setopt(easy_, CURLOPT_NOBODY, 1L);
    else if (method != "POST" && (method != "GET" || request_.body))
        curl_easy_setopt(easy_, CURLOPT_CUSTOMREQUEST, method.c_str());
    return true;
}

bool Transfer::setForm() {
    form_ = curl_mime_init(easy_);
    if (!form_) return false;
    for (auto& [name, value] : request_.fields) {
        auto* part = curl_mime_addpart(form_);
        if (!part || curl_mime_name(part, name.c_str()) || curl_mime_data(part, value.data(), value.size()))
            return false;
    }
    for (auto& file : request_.files) {
        auto* part = curl_mime_addpart(form_);
        if (!part || curl_mime_name(part, file.fileParamName.c_str())) return false;
        if (auto* onDisk = std::get_if<BrenFileUploadInfo::FileURL>(&file.source)) {
            if (curl_mime_filedata(part, onDisk->path.c_str())) return false;
        } else {
            auto bytes = std::get<Data>(file.source).view();
            if (curl_mime_data(part, bytes.empty() ? "" : bytes.data(), bytes.size())) return false;
        }
        curl_mime_filename(part, file.fileName.c_str());
        curl_mime_type(part, file.fileType.empty() ? "application/octet-stream" : file.fileType.c_str());
    }
    return curl_easy_setopt(easy_, CURLOPT_MIMEPOST, form_) == CURLE_OK;
}

bool Transfer::setHeaders() {
    // Waiting for "100 Continue" costs a second with servers that never send it.
    bool isComplete = request_.headers.find("Expect") || append(headerLines_, "Expect:");
    for (auto& [name, value] : request_.headers) {
        // The length is for libcurl to state: a wrong one would let the next request be read as part of this one.
        if (text::equalsIgnoringAsciiCase(name, "Content-Length")) continue;
        isComplete = isComplete && append(headerLines_, value.empty() ? name + ";" : name + ": " + value);
    }
    return isComplete && curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, headerLines_) == CURLE_OK;
}

std::optional<URLResponse> Transfer::takeResponse() {
    if (response_.statusCode == 0) return std::nullopt;
    char* url = nullptr;
    if (curl_easy_getinfo(easy_, CURLINFO_EFFECTIVE_URL, &url) == CURLE_OK && url) response_.url = url;
    return std::move(response_);
}

Outcome Transfer::finish(CURLcode code) {
    if (code != CURLE_OK) return {Data(), takeResponse(), errorOf(code)};
    if (delivery_->wantsProgress() && !form_ && !lengthKnown_) tellWholeLength();
    return {Data(std::move(body_)), takeResponse(), std::nullopt};
}

NetworkError Transfer::errorOf(CURLcode code) const {
    if (ownFailure_) return networkError(*ownFailure_, request_.host);
    if (wasRepeated_) return networkError(Kind::connectionLost, request_.host);
    auto kind = kindOf(code);
    long verdict = 0;
    if (code != CURLE_PEER_FAILED_VERIFICATION ||
        curl_easy_getinfo(easy_, CURLINFO_SSL_VERIFYRESULT, &verdict) != CURLE_OK)
        return networkError(kind, request_.host);
    return {kind, std::string(certificateFault(verdict)) + ": " + request_.host};
}

/// The last word on a body whose length the server did not announce.
void Transfer::tellWholeLength() {
    curl_off_t arrived = 0;
    curl_easy_getinfo(easy_, CURLINFO_SIZE_DOWNLOAD_T, &arrived);
    delivery_->progressed(arrived, arrived, {});
}

Outcome Transfer::fail(Kind kind) { return {Data(), takeResponse(), networkError(kind, request_.host)}; }

void Transfer::headerArrived(std::string_view line) {
    noteProgress();
    line = text::trimmed(line);
    if (line.starts_with("HTTP/")) {
        response_ = URLResponse();
        response_.statusCode = statusCodeOf(line);
        isUnanswered_ = false;
        return;
    }
    auto colon = line.find(':');
    if (colon == line.npos || colon == 0) return;
    response_.headers.add(line.substr(0, colon), text::trimmed(line.substr(colon + 1)));
}

/// Returns false, which ends the transfer, if the body has become too large.
bool Transfer::bodyArrived(std::string_view piece) {
    if (piece.size() > settings_.maximumBody - body_.size()) {
        std::string().swap(body_);
        ownFailure_ = Kind::tooLarge;
        return false;
    }
    curl_off_t announced = 0;
    curl_easy_getinfo(easy_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (body_.empty()) {
        auto believed = std::min(static_cast<std::size_t>(std::max<curl_off_t>(announced, 0)), tuning::largestReserve);
        body_.reserve(std::max(believed, piece.size()) + Data::padding);
    }
    body_ += piece;
    noteProgress();
    if (form_ || !delivery_->wantsProgress()) return true;
    // Bytes on the wire, as the announced length counts them; the piece itself is decoded.
    curl_off_t arrived = 0;
    curl_easy_getinfo(easy_, CURLINFO_SIZE_DOWNLOAD_T, &arrived);
    lengthKnown_ = announced > 0;
    delivery_->progressed(arrived, announced, delivery_->wantsPieces() ? piece : std::string_view());
    return true;
}

/// Called before the request goes out, again after each redirection, and again when libcurl would quietly repeat it
/// because a reused connection ended without an answer. The server may have done the work by then, so only requests
/// that change nothing are repeated.
bool Transfer::isAboutToSend() {
    noteProgress();
    if (request_.isStillWanted && !request_.isStillWanted()) {
        ownFailure_ = Kind::outdated;
        return false;
    }
    wasRepeated_ = std::exchange(isUnanswered_, true) && !isRepeatable();
    return !wasRepeated_;
}

void Transfer::moved(std::int64_t down, std::int64_t up, std::int64_t upTotal) {
    if (down == down_ && up == up_) return;
    bool hasSent = up != up_;
    down_ = down;
    up_ = up;
    noteProgress();
    if (form_ && hasSent && delivery_->wantsProgress()) delivery_->progressed(up, upTotal, {});
}

/// Runs a callback of libcurl, through which no exception may pass: memory that runs out fails this request alone.
template <class F>
std::size_t Transfer::guarded(std::size_t size, F&& take) noexcept {
    try {
        if (take()) return size;
    } catch (const std::bad_alloc&) {
        std::string().swap(body_);
        ownFailure_ = Kind::other;
    }
    return CURL_WRITEFUNC_ERROR;
}

std::size_t Transfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto* transfer = static_cast<Transfer*>(self);
    return transfer->guarded(size * count, [&] { return transfer->headerArrived({bytes, size * count}), true; });
}

std::size_t Transfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto* transfer = static_cast<Transfer*>(self);
    return transfer->guarded(size * count, [&] { return transfer->bodyArrived({bytes, size * count}); });
}

int Transfer::onAboutToSend(void* self, char*, char*, int, int) {
    auto* transfer = static_cast<Transfer*>(self);
    bool goesOn = transfer->guarded(1, [&] { return transfer->isAboutToSend(); }) == 1;
    return goesOn ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

int Transfer::onMoved(void* self, curl_off_t, curl_off_t down, curl_off_t upTotal, curl_off_t up) {
    auto* transfer = static_cast<Transfer*>(self);
    return transfer->guarded(1, [&] { return transfer->moved(down, up, upTotal), true; }) == 1 ? 0 : 1;
}

}  // namespace bren
