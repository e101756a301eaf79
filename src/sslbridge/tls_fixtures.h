// Test helpers: certificates made on the spot with the OpenSSL API, a TLS
// echo server on an ephemeral loopback port, and a blocking loopback client.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace brindle::sslbridge::testing {

struct KeyDeleter {
  void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
};
struct CertDeleter {
  void operator()(X509* c) const { X509_free(c); }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, KeyDeleter>;
using CertPtr = std::unique_ptr<X509, CertDeleter>;

struct Identity {
  KeyPtr key;
  CertPtr cert;
};

Identity MakeCa(const std::string& commonName);
// A server certificate for the given DNS names, signed by `ca`.
Identity MakeServerCert(const Identity& ca, const std::vector<std::string>& dnsNames);
// Writes the certificate as PEM into a fresh temporary file; returns its path.
std::string WritePemFile(X509* cert);

// Echoes whatever it receives. A received line "BYE" is answered with
// "bye\r\n", after which the server drops the connection without close_notify.
// A non-empty `greeting` is sent first, as a server's opening line.
class TlsEchoServer {
 public:
  explicit TlsEchoServer(const Identity& identity, std::string greeting = {});
  ~TlsEchoServer();
  uint16_t Port() const { return port_; }
  std::vector<std::string> ServerNamesSeen() const;
  int CloseNotifiesReceived() const { return closeNotifies_; }

 private:
  void AcceptLoop();
  void Serve(int fd);

  std::string greeting_;
  void* ctx_;  // SSL_CTX
  int listenFd_ = -1;
  uint16_t port_ = 0;
  std::thread acceptor_;
  std::vector<std::thread> workers_;
  mutable std::mutex mutex_;
  std::vector<std::string> names_;
  std::atomic<int> closeNotifies_{0};
  std::atomic<bool> stopping_{false};
};

// A blocking loopback client whose reads give up after a few seconds, so a
// fault makes a test fail instead of hang.
class LoopbackClient {
 public:
  explicit LoopbackClient(uint16_t port);
  ~LoopbackClient();
  bool Connected() const { return fd_ >= 0; }
  bool Send(const std::string& data);
  void ShutdownWrite();
  // Reads until `needle` has arrived (or end, error, time-out); returns all read.
  std::string ReadUntil(const std::string& needle);
  // Reads until the peer closes; `closed` says whether it did in time.
  std::string ReadToEnd(bool* closed);

 private:
  int fd_ = -1;
};

// One control exchange: sends `text`, then waits for the companion to close.
// Returns true when it closed the connection in time.
bool SendControl(uint16_t controlPort, const std::string& text);

// A loopback port that was free a moment ago.
uint16_t FreePort();

}  // namespace brindle::sslbridge::testing
