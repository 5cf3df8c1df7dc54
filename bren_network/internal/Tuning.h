#pragma once

#include <chrono>
#include <cstddef>

/// Limits and delays of the HTTP client, in one place.
namespace bren::tuning {

/// Requests that run at the same time. More wins nothing on a desktop line; fewer lets one slow server hold up others.
inline constexpr std::size_t maximumRunning = 16;
/// Requests that run at the same time towards one host and port, as browsers do over HTTP/1.1. Each may cost the
/// server a connection, and servers begin to refuse well below a dozen a client.
inline constexpr std::size_t maximumRunningPerHost = 6;
/// Name look-up, connection and TLS handshake together. A request with a shorter time-out of its own ends sooner.
inline constexpr std::chrono::milliseconds connectTimeout{30'000};
/// The longest time-out that a request can ask for; sums of times stay far from their limits.
inline constexpr std::chrono::milliseconds longestTimeout = std::chrono::hours(24);
/// Redirections followed for one request. A loop ends here.
inline constexpr long maximumRedirections = 10;
/// Longest sleep of the thread while transfers run, so that a moved `Clock` is noticed, and while none does.
inline constexpr std::chrono::milliseconds longestWaitRunning{1'000};
inline constexpr std::chrono::milliseconds longestWaitIdle{60'000};
/// The same where nothing can wake the thread, since the process has no file descriptor left for it.
inline constexpr std::chrono::milliseconds longestWaitUnwoken{100};
/// A length that a server announces is believed up to here when memory is set aside for a body; beyond it the buffer
/// grows with what really arrives.
inline constexpr std::size_t largestReserve = 16 * 1024 * 1024;
/// The largest body of an answer, unpacked, until `BrenNetworkManager::setMaximumBodyKilobytes` sets another. Pages of
/// records are a few megabytes; a larger attachment belongs into a download of its own.
inline constexpr std::size_t maximumBody = 256 * 1024 * 1024;
/// Size of a piece read from or written to a connection.
inline constexpr long transferBuffer = 64 * 1024;
/// Until the service layer sets its own: see `BrenNetworkManager::setMaximumBufferedKilobytes`.
inline constexpr int bufferedKilobytes = 100'000;

}  // namespace bren::tuning
