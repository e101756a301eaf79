// The companion's TLS as the relay sees it: a client session that works on
// byte buffers only. The relay does every socket read and write itself, so
// the same relay runs over OpenSSL on POSIX and over the system's SChannel
// on Windows.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "sslbridge/bridge_options.h"

namespace brindle::sslbridge {

enum class TlsStatus {
  kDone,      // the step is complete (handshake finished; data decrypted)
  kWantMore,  // more bytes from the server are needed first
  kClosed,    // the server sent close_notify
  kFailed,    // see Failure()
};

class TlsSession {
 public:
  virtual ~TlsSession() = default;

  // Bytes that arrived from the server.
  virtual void Feed(const char* data, size_t size) = 0;
  // Appends the bytes due to the server to `out`. Every step below may leave
  // some; the relay sends them after each step.
  virtual void TakeOutgoing(std::string& out) = 0;

  // Advances the handshake over what has been fed so far. Bytes fed beyond
  // the handshake stay for Read.
  virtual TlsStatus Handshake() = 0;
  // Appends what the fed bytes decrypt to: kDone when `plain` grew, kWantMore
  // when nothing complete has arrived yet, kClosed at close_notify (after
  // any data that came before it).
  virtual TlsStatus Read(std::string& plain) = 0;
  // Encrypts the bytes into the outgoing bytes.
  virtual bool Write(const char* data, size_t size) = 0;
  // Puts close_notify into the outgoing bytes.
  virtual void Close() = 0;

  // Why the last step failed, for the log: the certificate verdict when the
  // certificate was the cause.
  virtual std::string Failure() const = 0;
  // Protocol version and cipher suite, for the log.
  virtual std::string Description() const = 0;
  // Whether the handshake resumed an earlier session of the route.
  virtual bool Resumed() const = 0;
};

// What the connections of one route share: the TLS session the server last
// gave out, so the next connection resumes it instead of a full handshake.
class TlsRouteCache {
 public:
  virtual ~TlsRouteCache() = default;
};

class TlsEngine {
 public:
  // Problems with the trust setup (an unreadable CA file) go to `problems`;
  // the engine still works with whatever could be loaded.
  static std::unique_ptr<TlsEngine> Create(const BridgeOptions& options,
                                           std::vector<std::string>& problems);
  virtual ~TlsEngine() = default;

  virtual std::shared_ptr<TlsRouteCache> NewRouteCache() = 0;
  // A session for `host`: SNI set (for names, not addresses), the
  // certificate checked against `host` unless the user switched verification
  // off for it. Null with `failure` set when the engine cannot make one.
  virtual std::unique_ptr<TlsSession> NewSession(const std::string& host,
                                                 const std::shared_ptr<TlsRouteCache>& cache,
                                                 std::string& failure) = 0;
};

}  // namespace brindle::sslbridge
