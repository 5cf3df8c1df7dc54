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
    /// MIME type of the file; "application/octet-stream" when empty.
    std::string fileType;
};

/// The HTTP client of the process, on libcurl's multi interface with a thread of its own. Connections are reused,
/// HTTP/2 is spoken where the server offers it, certificates are always verified.
///
/// Completions come one at a time on the network queue: none may wait for another. Each request has exactly one
/// completion, whatever happens to it. Handlers are owned by the manager until then. An HTTP status is not a failure:
/// its body comes as data. Requests wait in three priorities for a free place; a running one is not displaced.
class BrenNetworkManager {
public:
    /// Body (empty on failure), what the server said before it, the failure, and the number of the request.
    using CompletionHandler = std::function<void(Data data, std::optional<URLResponse> response,
                                                 std::optional<NetworkError> error, int taskNumber)>;
    /// Part done from 0 to 1, bytes done and in all as they travel, compressed or not (-1 if the server does not
    /// say), identifier, number.
    using ProgressPercentHandler = std::function<void(float part, std::int64_t done, std::int64_t total,
                                                      std::optional<std::string> identifier, int taskNumber)>;
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

    /// Runs a request. Progress, for those who ask for it, is that of the body that comes. The request and its header
    /// fields are looked at before anything is sent: a text that is not a URL, a method or a header value that would
    /// break out of its line end in a failure. Redirections are followed a bounded number of times, never away from
    /// TLS, and never carry "Authorization" to another host. A request that the server may have acted on is not sent
    /// twice.
    void send(Task task);
    /// The same, by the name of its use.
    void download(Task task);
    /// A multipart POST of the files and the parameters; progress is that of the body that goes, with empty pieces.
    /// Files are read from the disk while they are sent. Method and body of the request are not used.
    void sendUploadRequest(Task task, std::vector<BrenFileUploadInfo> files);

    /// "name=value" pairs joined by "&", both percent-escaped. A Bool is "true" or "false", a list or a map its JSON
    /// text, null the empty text, bytes their Base64 text; an object of the program is left out and logged by kind.
    static std::string formattedParamString(const tarvo::ValueMap& params);

    /// A file of certificates in PEM form that are trusted beside those of the system; the empty text takes it back.
    /// Applies to requests given afterwards. Returns false, and changes nothing, if no certificate can be read from it.
    bool setFurtherAuthorityFile(const std::string& path);
    /// No further request begins while the bodies of finished ones that wait for their completion hold more than this,
    /// in kilobytes, so that slow completions bound the memory. 100,000 unless set; 0 or less: one body at a time.
    void setMaximumBufferedKilobytes(int kilobytes);
    /// A body that is larger ends its request with the failure `tooLarge`. It is measured as it is kept, after
    /// unpacking, so that a few compressed megabytes cannot fill the memory. 262,144 (256 MiB) unless set; applies to
    /// requests given afterwards. Must be positive.
    void setMaximumBodyKilobytes(int kilobytes);
    /// "TarvoBase" unless set. A text with a line break is refused and logged.
    void setUserAgent(const std::string& userAgent);
    /// How many requests have been given to it so far.
    int requestCount() const;

    /// Completions run here.
    const std::shared_ptr<tarvo::DispatchQueue>& queue() const;

    /// Ends every request with the failure `shutDown`, then refuses further ones the same way. Returns when no transfer
    /// runs; the completions themselves may still wait on `queue`. May be called twice, and from a completion.
    /// `restart` makes it usable again, for tests. A process may also end without: then requests stay unanswered.
    void shutDown();
    void restart();

private:
    BrenNetworkManager();
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace bren
