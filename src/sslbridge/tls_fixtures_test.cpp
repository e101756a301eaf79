#include "sslbridge/tls_fixtures.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace brindle::sslbridge::testing {
namespace {

KeyPtr NewKey() {
  return KeyPtr(EVP_EC_gen("P-256"));
}

void AddExtension(X509* cert, X509* issuer, int nid, const char* value) {
  X509V3_CTX ctx;
  X509V3_set_ctx_nodb(&ctx);
  X509V3_set_ctx(&ctx, issuer, cert, nullptr, nullptr, 0);
  X509_EXTENSION* ext = X509V3_EXT_conf_nid(nullptr, &ctx, nid, value);
  X509_add_ext(cert, ext, -1);
  X509_EXTENSION_free(ext);
}

CertPtr NewCert(EVP_PKEY* key, const std::string& cn, long serial) {
  CertPtr cert(X509_new());
  X509_set_version(cert.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), serial);
  X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600);
  X509_gmtime_adj(X509_getm_notAfter(cert.get()), 86400L * 30);
  X509_set_pubkey(cert.get(), key);
  X509_NAME* name = X509_get_subject_name(cert.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(cn.c_str()), -1, -1, 0);
  return cert;
}

sockaddr_in LoopbackAddress(uint16_t port) {
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(port);
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return addr;
}

void SetReadLimit(int fd, int seconds) {
  timeval tv{seconds, 0};
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &tv, sizeof tv);
}

int ConnectLoopback(uint16_t port) {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in addr = LoopbackAddress(port);
  if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
    close(fd);
    return -1;
  }
  SetReadLimit(fd, 5);
  return fd;
}

}  // namespace

Identity MakeCa(const std::string& commonName) {
  Identity id{NewKey(), nullptr};
  id.cert = NewCert(id.key.get(), commonName, 1);
  X509_set_issuer_name(id.cert.get(), X509_get_subject_name(id.cert.get()));
  AddExtension(id.cert.get(), id.cert.get(), NID_basic_constraints, "critical,CA:TRUE");
  AddExtension(id.cert.get(), id.cert.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
  AddExtension(id.cert.get(), id.cert.get(), NID_subject_key_identifier, "hash");
  X509_sign(id.cert.get(), id.key.get(), EVP_sha256());
  return id;
}

Identity MakeServerCert(const Identity& ca, const std::vector<std::string>& dnsNames) {
  static long serial = 100;
  Identity id{NewKey(), nullptr};
  id.cert = NewCert(id.key.get(), dnsNames.front(), ++serial);
  X509_set_issuer_name(id.cert.get(), X509_get_subject_name(ca.cert.get()));
  std::string san;
  for (const auto& name : dnsNames) san += (san.empty() ? "DNS:" : ",DNS:") + name;
  AddExtension(id.cert.get(), ca.cert.get(), NID_subject_alt_name, san.c_str());
  AddExtension(id.cert.get(), ca.cert.get(), NID_ext_key_usage, "serverAuth");
  AddExtension(id.cert.get(), ca.cert.get(), NID_authority_key_identifier, "keyid");
  X509_sign(id.cert.get(), ca.key.get(), EVP_sha256());
  return id;
}

std::string WritePemFile(X509* cert) {
  char path[] = "/tmp/sslbridge_ca_XXXXXX";
  int fd = mkstemp(path);
  FILE* f = fdopen(fd, "w");
  PEM_write_X509(f, cert);
  fclose(f);
  return path;
}

TlsEchoServer::TlsEchoServer(const Identity& identity, std::string greeting)
    : greeting_(std::move(greeting)) {
  SSL_CTX* ctx = SSL_CTX_new(TLS_server_method());
  SSL_CTX_use_certificate(ctx, identity.cert.get());
  SSL_CTX_use_PrivateKey(ctx, identity.key.get());
  ctx_ = ctx;
  listenFd_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in addr = LoopbackAddress(0);
  bind(listenFd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
  listen(listenFd_, 16);
  socklen_t len = sizeof addr;
  getsockname(listenFd_, reinterpret_cast<sockaddr*>(&addr), &len);
  port_ = ntohs(addr.sin_port);
  acceptor_ = std::thread([this] { AcceptLoop(); });
}

TlsEchoServer::~TlsEchoServer() {
  stopping_ = true;
  shutdown(listenFd_, SHUT_RDWR);
  acceptor_.join();
  close(listenFd_);
  for (auto& t : workers_) t.join();
  SSL_CTX_free(static_cast<SSL_CTX*>(ctx_));
}

void TlsEchoServer::AcceptLoop() {
  while (!stopping_) {
    pollfd p{listenFd_, POLLIN, 0};
    if (poll(&p, 1, 100) <= 0) continue;
    int fd = accept(listenFd_, nullptr, nullptr);
    if (fd < 0) continue;
    SetReadLimit(fd, 10);
    std::lock_guard lock(mutex_);
    workers_.emplace_back([this, fd] { Serve(fd); });
  }
}

std::vector<std::string> TlsEchoServer::ServerNamesSeen() const {
  std::lock_guard lock(mutex_);
  return names_;
}

void TlsEchoServer::Serve(int fd) {
  SSL* ssl = SSL_new(static_cast<SSL_CTX*>(ctx_));
  SSL_set_fd(ssl, fd);
  if (SSL_accept(ssl) == 1) {
    if (const char* sni = SSL_get_servername(ssl, TLSEXT_NAMETYPE_host_name)) {
      std::lock_guard lock(mutex_);
      names_.push_back(sni);
    }
    if (!greeting_.empty()) {
      SSL_write(ssl, greeting_.data(), static_cast<int>(greeting_.size()));
    }
    char buf[16384];
    for (;;) {
      int n = SSL_read(ssl, buf, sizeof buf);
      if (n <= 0) {
        if (SSL_get_error(ssl, n) == SSL_ERROR_ZERO_RETURN) {
          ++closeNotifies_;
          SSL_shutdown(ssl);
        }
        break;
      }
      std::string piece(buf, static_cast<size_t>(n));
      if (piece.find("BYE\r\n") != std::string::npos) {
        SSL_write(ssl, "bye\r\n", 5);
        break;  // drop the line without close_notify, as many servers do
      }
      if (SSL_write(ssl, piece.data(), static_cast<int>(piece.size())) <= 0) break;
    }
  }
  SSL_free(ssl);
  close(fd);
}

LoopbackClient::LoopbackClient(uint16_t port) : fd_(ConnectLoopback(port)) {}
LoopbackClient::~LoopbackClient() {
  if (fd_ >= 0) close(fd_);
}

bool LoopbackClient::Send(const std::string& data) {
  size_t done = 0;
  while (done < data.size()) {
    ssize_t n = send(fd_, data.data() + done, data.size() - done, MSG_NOSIGNAL);
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

void LoopbackClient::ShutdownWrite() {
  shutdown(fd_, SHUT_WR);
}

std::string LoopbackClient::ReadUntil(const std::string& needle) {
  std::string got;
  char buf[65536];
  while (got.find(needle) == std::string::npos) {
    ssize_t n = recv(fd_, buf, sizeof buf, 0);
    if (n <= 0) break;
    got.append(buf, static_cast<size_t>(n));
  }
  return got;
}

std::string LoopbackClient::ReadToEnd(bool* closed) {
  std::string got;
  char buf[65536];
  for (;;) {
    ssize_t n = recv(fd_, buf, sizeof buf, 0);
    if (n > 0) {
      got.append(buf, static_cast<size_t>(n));
      continue;
    }
    // A reset counts as closed too: the companion may abort the client side.
    *closed = n == 0 || errno == ECONNRESET;
    return got;
  }
}

bool SendControl(uint16_t controlPort, const std::string& text) {
  LoopbackClient control(controlPort);
  if (!control.Connected() || !control.Send(text)) return false;
  bool closed = false;
  control.ReadToEnd(&closed);
  return closed;
}

uint16_t FreePort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in addr = LoopbackAddress(0);
  bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
  socklen_t len = sizeof addr;
  getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len);
  close(fd);
  return ntohs(addr.sin_port);
}

}  // namespace brindle::sslbridge::testing
