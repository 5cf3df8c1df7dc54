#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "bren_network/URLRequest.h"
#include "platform/DispatchQueue.h"
#include "platform/Value.h"

namespace bren {

enum class BrenTaskPriority { low, normal, high };

/// A file for a multipart form: the field's name, the file's name towards the server, and where its bytes are.
struct BrenFileUploadInfo {
    struct FileURL {
        std::string path;
    };
    using Source = std::variant<FileURL, Data>;

    std::string fileParamName;
    std::string fileName;
    Source source;
    /// Content type of the part; "application/octet-stream" when empty.
    std::string fileType;
};

/// The HTTP client of the process, on libcurl's multi interface with a thread of its own. Connections are reused,
/// HTTP/2 is spoken where the server offers it, certificates are always verified.
///
/// Completions come one at a time on the network queue: none may wait for another. Each request has exactly one
/// completion, whatever happens to it. Handlers are owned by the manager until then. An HTTP status is no failure: its
/// body comes as data. Requests wait in three priorities for a free place; a running one is not displaced.
class BrenNetworkManager {
public:
    /// Body (empty on failure), what the server said before it, the failure, and the number of the request.
    using CompletionHandler =
        std::function<void(Data data, std::optional<URLResponse> response, std::optional<NetworkError> error, int taskNumber)>;
    /// Part done from 0 to 1, bytes done, bytes in all (-1 when the server does not tell), identifier, number.
    using ProgressPercentHandler =
        std::function<void(float part, std::int64_t done, std::int64_t total, std::optional<std::string> identifier, int taskNumber)>;
    /// Piece that has arrived, part done from 0 to 1, identifier, number.
    using ProgressDataHandler =
        std::function<void(Data piece, double part, std::optional<std::string> identifier, int taskNumber)>;

    struct Task {
        URLRequest request;
        /// Value of the "Authorization" header.
        std::optional<std::string> authorization;
        /// Encoded into the query of a GET or of a request with a body, else sent as a form.
        std::optional<tarvo::ValueMap> params;
        BrenTaskPriority priority = BrenTaskPriority::normal;
        std::optional<std::string> identifier;
        ProgressPercentHandler progressPercent;
        ProgressDataHandler progressData;
        CompletionHandler completion;
    };

    static BrenNetworkManager& sharedInstance();
    ~BrenNetworkManager();

    void send(Task task);
    /// As `send`, and tells progress of the body that comes.
    void download(Task task);
    /// A multipart POST of the files and the parameters; progress is that of the body that goes.
    void sendUploadRequest(Task task, std::vector<BrenFileUploadInfo> files);

    /// "name=value" pairs joined by "&", both percent-escaped. A Bool is "true" or "false", a list or a map its JSON text,
    /// null the empty text; an object of the program is left out and logged by kind.
    static std::string formattedParamString(const tarvo::ValueMap& params);

    /// A file of certificates in PEM form that are trusted beside those of the system; the empty text takes it back.
    /// Counts for connections made afterwards. False when the file cannot be read.
    bool setFurtherAuthorityFile(const std::string& path);
    /// Most answers whose bodies may be held in memory at once waiting for their completion, in kilobytes.
    void setMaximumBufferedKilobytes(int kilobytes);
    void setUserAgent(const std::string& userAgent);

    /// Completions run here.
    const std::shared_ptr<tarvo::DispatchQueue>& queue() const;

    /// Ends every request with the failure `shutDown`, then refuses further ones the same way. May be called twice.
    /// `restart` makes it usable again, for tests.
    void shutDown();
    void restart();

private:
    BrenNetworkManager();
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace bren
