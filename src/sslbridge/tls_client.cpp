#include "sslbridge/tls_client.h"

#include <arpa/inet.h>

#include <cstring>

#include <openssl/err.h>
#include <openssl/x509v3.h>

namespace brindle::sslbridge {
namespace {

bool IsAddressLiteral(const std::string& host) {
  unsigned char buf[16];
  return inet_pton(AF_INET, host.c_str(), buf) == 1 || inet_pton(AF_INET6, host.c_str(), buf) == 1;
}

}  // namespace

std::string TakeOpenSslErrors() {
  std::string text;
  while (unsigned long e = ERR_get_error()) {
    char buf[256];
    ERR_error_string_n(e, buf, sizeof buf);
    if (!text.empty()) text += "; ";
    text += buf;
  }
  return text;
}

TlsClientContext::TlsClientContext(const BridgeOptions& options, std::vector<std::string>& problems)
    : ctx_(SSL_CTX_new(TLS_client_method())), options_(options) {
  SSL_CTX_set_min_proto_version(ctx_, TLS1_2_VERSION);
  SSL_CTX_set_verify(ctx_, SSL_VERIFY_PEER, nullptr);
  // Many mail and news servers drop the connection without close_notify; that
  // is an ordinary end of their data, not an attack on it (the protocols
  // carry their own terminators).
  SSL_CTX_set_options(ctx_, SSL_OP_IGNORE_UNEXPECTED_EOF);
  SSL_CTX_set_mode(ctx_, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER |
                             SSL_MODE_RELEASE_BUFFERS);
  // Fewer, larger socket reads for bulk downloads.
  SSL_CTX_set_read_ahead(ctx_, 1);
  // The system store; OpenSSL honours SSL_CERT_FILE and SSL_CERT_DIR here.
  if (SSL_CTX_set_default_verify_paths(ctx_) != 1) {
    problems.push_back("system certificate store not loaded: " + TakeOpenSslErrors());
  }
  for (const auto& file : options.caFiles) {
    if (SSL_CTX_load_verify_locations(ctx_, file.c_str(), nullptr) != 1) {
      problems.push_back("CA file " + file + " not loaded: " + TakeOpenSslErrors());
    }
  }
}

TlsClientContext::~TlsClientContext() {
  SSL_CTX_free(ctx_);
}

SslPtr TlsClientContext::NewSession(const std::string& host, int fd) const {
  SslPtr ssl(SSL_new(ctx_));
  if (!ssl || SSL_set_fd(ssl.get(), fd) != 1) return nullptr;
  bool literal = IsAddressLiteral(host);
  if (!literal) SSL_set_tlsext_host_name(ssl.get(), host.c_str());
  if (options_.IsInsecureHost(host)) {
    SSL_set_verify(ssl.get(), SSL_VERIFY_NONE, nullptr);
  } else if (literal) {
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ssl.get()), host.c_str());
  } else {
    SSL_set_hostflags(ssl.get(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    SSL_set1_host(ssl.get(), host.c_str());
  }
  return ssl;
}

std::string DescribeHandshakeFailure(SSL* ssl, int sslError, int savedErrno) {
  long verdict = SSL_get_verify_result(ssl);
  if (verdict != X509_V_OK) {
    std::string text = "certificate rejected: ";
    text += X509_verify_cert_error_string(verdict);
    if (verdict == X509_V_ERR_HOSTNAME_MISMATCH || verdict == X509_V_ERR_IP_ADDRESS_MISMATCH) {
      text += " (the certificate is not for this server name)";
    }
    TakeOpenSslErrors();
    return text;
  }
  std::string errors = TakeOpenSslErrors();
  if (!errors.empty()) return "TLS error: " + errors;
  if (sslError == SSL_ERROR_SYSCALL && savedErrno != 0) {
    return std::string("connection error: ") + std::strerror(savedErrno);
  }
  if (sslError == SSL_ERROR_SYSCALL || sslError == SSL_ERROR_ZERO_RETURN) {
    return "the server closed the connection during the handshake";
  }
  return "TLS handshake failed (error " + std::to_string(sslError) + ")";
}

}  // namespace brindle::sslbridge
