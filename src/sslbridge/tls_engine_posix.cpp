// The POSIX engine: OpenSSL over memory buffers. Verifies against the system
// store (OpenSSL honours SSL_CERT_FILE and SSL_CERT_DIR) plus the user's CA
// files, and keeps the newest session of each route for resumption.
#include <arpa/inet.h>

#include <cstring>

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "sslbridge/tls_engine.h"

namespace brindle::sslbridge {
namespace {

bool IsAddressLiteral(const std::string& host) {
  unsigned char buf[16];
  return inet_pton(AF_INET, host.c_str(), buf) == 1 || inet_pton(AF_INET6, host.c_str(), buf) == 1;
}

// The OpenSSL error queue as text (emptied).
std::string TakeErrors() {
  std::string text;
  while (unsigned long e = ERR_get_error()) {
    char buf[256];
    ERR_error_string_n(e, buf, sizeof buf);
    if (!text.empty()) text += "; ";
    text += buf;
  }
  return text;
}

struct SessionFree {
  void operator()(SSL_SESSION* s) const { SSL_SESSION_free(s); }
};
using SessionPtr = std::unique_ptr<SSL_SESSION, SessionFree>;

class OpenSslRouteCache : public TlsRouteCache {
 public:
  SessionPtr session;
};

// Where the new-session callback finds the route of a connection.
int RouteCacheIndex() {
  static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

// TLS 1.3 tickets arrive after the handshake, 1.2 sessions with it; both
// come here. Keeping the newest means a ticket that was used once is
// replaced by the one the server sends on the resumed connection.
int OnNewSession(SSL* ssl, SSL_SESSION* session) {
  auto* cache = static_cast<OpenSslRouteCache*>(SSL_get_ex_data(ssl, RouteCacheIndex()));
  if (!cache) return 0;
  cache->session.reset(session);
  return 1;  // the cache now owns the reference
}

class OpenSslSession : public TlsSession {
 public:
  OpenSslSession(SSL* ssl, std::shared_ptr<TlsRouteCache> cache)
      : ssl_(ssl), cache_(std::move(cache)) {
    in_ = BIO_new(BIO_s_mem());
    out_ = BIO_new(BIO_s_mem());
    // The end of the fed bytes is "wait for more", not the end of the stream.
    BIO_set_mem_eof_return(in_, -1);
    SSL_set_bio(ssl_, in_, out_);
    SSL_set_connect_state(ssl_);
    SSL_set_ex_data(ssl_, RouteCacheIndex(), cache_.get());
  }
  ~OpenSslSession() override {
    SSL_set_ex_data(ssl_, RouteCacheIndex(), nullptr);
    SSL_free(ssl_);
  }

  void Feed(const char* data, size_t size) override {
    BIO_write(in_, data, static_cast<int>(size));
  }

  void TakeOutgoing(std::string& out) override {
    size_t pending = BIO_ctrl_pending(out_);
    if (pending == 0) return;
    size_t old = out.size();
    out.resize(old + pending);
    int n = BIO_read(out_, out.data() + old, static_cast<int>(pending));
    out.resize(old + static_cast<size_t>(n > 0 ? n : 0));
  }

  TlsStatus Handshake() override {
    ERR_clear_error();
    int rc = SSL_do_handshake(ssl_);
    if (rc == 1) return TlsStatus::kDone;
    int err = SSL_get_error(ssl_, rc);
    if (err == SSL_ERROR_WANT_READ) return TlsStatus::kWantMore;
    failure_ = DescribeHandshakeFailure(err);
    return TlsStatus::kFailed;
  }

  TlsStatus Read(std::string& plain) override {
    // One call gives at most one record's 16 KiB; growing the string by
    // more than that would zero memory that is cut off again right after.
    constexpr size_t kPiece = 16 * 1024;
    size_t start = plain.size();
    for (;;) {
      size_t old = plain.size();
      plain.resize(old + kPiece);
      ERR_clear_error();
      int rc = SSL_read(ssl_, plain.data() + old, static_cast<int>(kPiece));
      plain.resize(old + static_cast<size_t>(rc > 0 ? rc : 0));
      if (rc > 0) continue;
      int err = SSL_get_error(ssl_, rc);
      if (err == SSL_ERROR_WANT_READ) {
        return plain.size() > start ? TlsStatus::kDone : TlsStatus::kWantMore;
      }
      if (err == SSL_ERROR_ZERO_RETURN) return TlsStatus::kClosed;
      failure_ = "TLS error: " + TakeErrors();
      return TlsStatus::kFailed;
    }
  }

  bool Write(const char* data, size_t size) override {
    ERR_clear_error();
    // Memory buffers take everything at once: no partial writes.
    if (size == 0 || SSL_write(ssl_, data, static_cast<int>(size)) > 0) return true;
    failure_ = "TLS error: " + TakeErrors();
    return false;
  }

  void Close() override {
    SSL_shutdown(ssl_);
    TakeErrors();
  }

  std::string Failure() const override { return failure_; }

  std::string Description() const override {
    return std::string(SSL_get_version(ssl_)) + ", " + SSL_get_cipher_name(ssl_);
  }

  bool Resumed() const override { return SSL_session_reused(ssl_) == 1; }

 private:
  std::string DescribeHandshakeFailure(int err) {
    long verdict = SSL_get_verify_result(ssl_);
    if (verdict != X509_V_OK) {
      std::string text = "certificate rejected: ";
      text += X509_verify_cert_error_string(verdict);
      if (verdict == X509_V_ERR_HOSTNAME_MISMATCH || verdict == X509_V_ERR_IP_ADDRESS_MISMATCH) {
        text += " (the certificate is not for this server name)";
      }
      TakeErrors();
      return text;
    }
    std::string errors = TakeErrors();
    if (!errors.empty()) return "TLS error: " + errors;
    if (err == SSL_ERROR_ZERO_RETURN)
      return "the server closed the connection during the handshake";
    return "TLS handshake failed (error " + std::to_string(err) + ")";
  }

  SSL* ssl_;
  BIO* in_;
  BIO* out_;
  std::shared_ptr<TlsRouteCache> cache_;  // kept alive for the new-session callback
  std::string failure_;
};

class OpenSslEngine : public TlsEngine {
 public:
  OpenSslEngine(const BridgeOptions& options, std::vector<std::string>& problems)
      : ctx_(SSL_CTX_new(TLS_client_method())), options_(options) {
    SSL_CTX_set_min_proto_version(ctx_, TLS1_2_VERSION);
    SSL_CTX_set_verify(ctx_, SSL_VERIFY_PEER, nullptr);
    // Many mail and news servers drop the connection without close_notify;
    // that is an ordinary end of their data, not an attack on it (the
    // protocols carry their own terminators).
    SSL_CTX_set_options(ctx_, SSL_OP_IGNORE_UNEXPECTED_EOF);
    // The fed bytes are taken in large pieces rather than record by record.
    SSL_CTX_set_read_ahead(ctx_, 1);
    // Sessions live in the route caches, not in OpenSSL's own store.
    SSL_CTX_set_session_cache_mode(ctx_, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL_STORE);
    SSL_CTX_sess_set_new_cb(ctx_, OnNewSession);
    if (SSL_CTX_set_default_verify_paths(ctx_) != 1) {
      problems.push_back("system certificate store not loaded: " + TakeErrors());
    }
    for (const auto& file : options.caFiles) {
      if (SSL_CTX_load_verify_locations(ctx_, file.c_str(), nullptr) != 1) {
        problems.push_back("CA file " + file + " not loaded: " + TakeErrors());
      }
    }
  }
  ~OpenSslEngine() override { SSL_CTX_free(ctx_); }

  std::shared_ptr<TlsRouteCache> NewRouteCache() override {
    return std::make_shared<OpenSslRouteCache>();
  }

  std::unique_ptr<TlsSession> NewSession(const std::string& host,
                                         const std::shared_ptr<TlsRouteCache>& cache,
                                         std::string& failure) override {
    SSL* ssl = SSL_new(ctx_);
    if (!ssl) {
      failure = "TLS session not created: " + TakeErrors();
      return nullptr;
    }
    bool literal = IsAddressLiteral(host);
    if (!literal) SSL_set_tlsext_host_name(ssl, host.c_str());
    if (options_.IsInsecureHost(host)) {
      SSL_set_verify(ssl, SSL_VERIFY_NONE, nullptr);
    } else if (literal) {
      X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ssl), host.c_str());
    } else {
      SSL_set_hostflags(ssl, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
      SSL_set1_host(ssl, host.c_str());
    }
    auto* routeCache = static_cast<OpenSslRouteCache*>(cache.get());
    if (routeCache && routeCache->session && SSL_SESSION_is_resumable(routeCache->session.get())) {
      SSL_set_session(ssl, routeCache->session.get());
    }
    return std::make_unique<OpenSslSession>(ssl, cache);
  }

 private:
  SSL_CTX* ctx_;
  const BridgeOptions& options_;
};

}  // namespace

std::unique_ptr<TlsEngine> TlsEngine::Create(const BridgeOptions& options,
                                             std::vector<std::string>& problems) {
  return std::make_unique<OpenSslEngine>(options, problems);
}

}  // namespace brindle::sslbridge
