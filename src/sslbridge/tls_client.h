// The companion's side of TLS: one client context that verifies servers
// against the system trust store (plus any CA files the user named) and
// makes one session per relayed connection.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <openssl/ssl.h>

#include "sslbridge/bridge_options.h"

namespace brindle::sslbridge {

struct SslDeleter {
  void operator()(SSL* ssl) const { SSL_free(ssl); }
};
using SslPtr = std::unique_ptr<SSL, SslDeleter>;

class TlsClientContext {
 public:
  // Problems with the trust setup (an unreadable CA file) go to `problems`;
  // the context still works with whatever could be loaded.
  TlsClientContext(const BridgeOptions& options, std::vector<std::string>& problems);
  ~TlsClientContext();
  TlsClientContext(const TlsClientContext&) = delete;
  TlsClientContext& operator=(const TlsClientContext&) = delete;

  // A session for `host` on the connected socket `fd`: SNI set (for names,
  // not addresses), the certificate checked against `host` unless the user
  // switched verification off for it. Null only when OpenSSL fails outright.
  SslPtr NewSession(const std::string& host, int fd) const;

 private:
  SSL_CTX* ctx_;
  const BridgeOptions& options_;
};

// Why a handshake failed, for the log: the certificate verdict when the
// certificate was the cause, otherwise OpenSSL's reason (protocol, version)
// or the socket's error.
std::string DescribeHandshakeFailure(SSL* ssl, int sslError, int savedErrno);

// The OpenSSL error queue as text (emptied).
std::string TakeOpenSslErrors();

}  // namespace brindle::sslbridge
