#include "sslbridge/relay.h"

#include <cerrno>
#include <cstring>

#include <openssl/err.h>
#include <asio/connect.hpp>
#include <asio/write.hpp>

#include "core/log.h"

namespace brindle::sslbridge {

using asio::ip::tcp;

namespace {
// After close_notify the server gets this long to finish its side.
constexpr std::chrono::seconds kCloseLinger{30};
}  // namespace

Relay::Relay(tcp::socket client, RelayTarget target, const TlsClientContext& tls,
             std::chrono::milliseconds handshakeLimit, ClosedHandler onClosed)
    : client_(std::move(client)),
      server_(client_.get_executor()),
      resolver_(client_.get_executor()),
      timer_(client_.get_executor()),
      target_(std::move(target)),
      tls_(tls),
      handshakeLimit_(handshakeLimit),
      onClosed_(std::move(onClosed)) {}

Relay::~Relay() = default;

std::string Relay::Name() const {
  return "route " + std::to_string(target_.routePort) + " (" + target_.host + ":" +
         std::to_string(target_.port) + ")";
}

void Relay::ArmTimer(std::chrono::milliseconds limit, const char* what) {
  timer_.expires_after(limit);
  timer_.async_wait([self = shared_from_this(), what](std::error_code ec) {
    if (!ec && !self->closed_) self->Fail(what);
  });
}

void Relay::Start() {
  ArmTimer(handshakeLimit_, "connect and TLS handshake took too long");
  resolver_.async_resolve(
      target_.host, std::to_string(target_.port),
      [self = shared_from_this()](std::error_code ec, tcp::resolver::results_type results) {
        if (self->closed_) return;
        if (ec) return self->Fail("cannot resolve the server name: " + ec.message());
        asio::async_connect(self->server_, results,
                            [self](std::error_code ec, const tcp::endpoint&) {
                              if (self->closed_) return;
                              if (ec)
                                return self->Fail("cannot connect to the server: " + ec.message());
                              self->OnConnected();
                            });
      });
}

void Relay::OnConnected() {
  std::error_code ignored;
  server_.set_option(tcp::no_delay(true), ignored);
  client_.set_option(tcp::no_delay(true), ignored);
  server_.native_non_blocking(true, ignored);
  ssl_ = tls_.NewSession(target_.host, server_.native_handle());
  if (!ssl_) return Fail("TLS session not created: " + TakeOpenSslErrors());
  Handshake();
}

void Relay::WaitServer(Wait wait, void (Relay::*next)()) {
  auto type = wait == Wait::kRead ? tcp::socket::wait_read : tcp::socket::wait_write;
  server_.async_wait(type, [self = shared_from_this(), next](std::error_code ec) {
    if (self->closed_) return;
    if (ec) return self->Fail("server socket: " + ec.message());
    ((*self).*next)();
  });
}

void Relay::Handshake() {
  ERR_clear_error();
  int rc = SSL_connect(ssl_.get());
  if (rc == 1) {
    established_ = true;
    timer_.cancel();
    log::Info(Name() + ": connected, " + SSL_get_version(ssl_.get()) + ", " +
              SSL_get_cipher_name(ssl_.get()));
    return StartPumps();
  }
  int savedErrno = errno;
  int err = SSL_get_error(ssl_.get(), rc);
  if (err == SSL_ERROR_WANT_READ) return WaitServer(Wait::kRead, &Relay::Handshake);
  if (err == SSL_ERROR_WANT_WRITE) return WaitServer(Wait::kWrite, &Relay::Handshake);
  Fail("TLS handshake failed: " + DescribeHandshakeFailure(ssl_.get(), err, savedErrno));
}

void Relay::StartPumps() {
  ReadClient();
  ReadServer();
}

// Client -> server.

void Relay::ReadClient() {
  client_.async_read_some(asio::buffer(up_),
                          [self = shared_from_this()](std::error_code ec, size_t n) {
                            if (self->closed_) return;
                            if (ec == asio::error::eof) {
                              self->clientDone_ = true;
                              self->SendCloseNotify();
                              return;
                            }
                            if (ec) return self->Fail("client connection: " + ec.message());
                            self->WriteServer(0, n);
                          });
}

void Relay::WriteServer(size_t offset, size_t length) {
  pendingUpOffset_ = offset;
  pendingUp_ = length;
  while (pendingUp_ > 0) {
    ERR_clear_error();
    int rc = SSL_write(ssl_.get(), up_.data() + pendingUpOffset_, static_cast<int>(pendingUp_));
    if (rc > 0) {
      pendingUpOffset_ += static_cast<size_t>(rc);
      pendingUp_ -= static_cast<size_t>(rc);
      continue;
    }
    int err = SSL_get_error(ssl_.get(), rc);
    auto retry = [](Relay& r) { r.WriteServer(r.pendingUpOffset_, r.pendingUp_); };
    if (err == SSL_ERROR_WANT_WRITE || err == SSL_ERROR_WANT_READ) {
      auto type = err == SSL_ERROR_WANT_WRITE ? tcp::socket::wait_write : tcp::socket::wait_read;
      server_.async_wait(type, [self = shared_from_this(), retry](std::error_code ec) {
        if (self->closed_) return;
        if (ec) return self->Fail("server socket: " + ec.message());
        retry(*self);
      });
      return;
    }
    return Fail("sending to the server failed: " + TakeOpenSslErrors());
  }
  ReadClient();
}

void Relay::SendCloseNotify() {
  if (closed_) return;
  ERR_clear_error();
  int rc = SSL_shutdown(ssl_.get());
  if (rc < 0) {
    int err = SSL_get_error(ssl_.get(), rc);
    if (err == SSL_ERROR_WANT_WRITE) return WaitServer(Wait::kWrite, &Relay::SendCloseNotify);
    // The server may already be gone; nothing more to tell it.
    TakeOpenSslErrors();
  }
  if (!serverDone_) ArmTimer(kCloseLinger, "the server did not close after close_notify");
  MaybeFinish();
}

// Server -> client. Collects what the TLS layer already holds before writing,
// so a bulk download goes to the client in large pieces.

void Relay::ReadServer() {
  size_t filled = 0;
  while (filled < down_.size()) {
    ERR_clear_error();
    int rc = SSL_read(ssl_.get(), down_.data() + filled, static_cast<int>(down_.size() - filled));
    if (rc > 0) {
      filled += static_cast<size_t>(rc);
      continue;
    }
    int savedErrno = errno;
    int err = SSL_get_error(ssl_.get(), rc);
    if (filled > 0 && (err == SSL_ERROR_WANT_READ || err == SSL_ERROR_WANT_WRITE)) break;
    if (err == SSL_ERROR_WANT_READ) return WaitServer(Wait::kRead, &Relay::ReadServer);
    if (err == SSL_ERROR_WANT_WRITE) return WaitServer(Wait::kWrite, &Relay::ReadServer);
    if (filled > 0) break;  // deliver what came before the end; the end shows again
    if (err == SSL_ERROR_ZERO_RETURN) return ServerFinished();
    if (err == SSL_ERROR_SYSCALL && savedErrno == 0) return ServerFinished();
    std::string why = TakeOpenSslErrors();
    if (why.empty()) why = std::strerror(savedErrno);
    return Fail("receiving from the server failed: " + why);
  }
  WriteClient(filled);
}

void Relay::WriteClient(size_t length) {
  asio::async_write(client_, asio::buffer(down_.data(), length),
                    [self = shared_from_this()](std::error_code ec, size_t) {
                      if (self->closed_) return;
                      if (ec) return self->Fail("client connection: " + ec.message());
                      self->ReadServer();
                    });
}

void Relay::ServerFinished() {
  serverDone_ = true;
  std::error_code ignored;
  client_.shutdown(tcp::socket::shutdown_send, ignored);
  MaybeFinish();
}

void Relay::MaybeFinish() {
  if (!clientDone_ || !serverDone_) return;
  log::Debug(Name() + ": connection ended");
  Abort();
}

void Relay::Fail(const std::string& why) {
  if (closed_) return;
  if (established_) {
    log::Info(Name() + ": connection dropped: " + why);
  } else {
    log::Error(Name() + ": " + why);
  }
  Abort();
}

void Relay::Abort() {
  if (closed_) return;
  closed_ = true;
  std::error_code ignored;
  timer_.cancel();
  resolver_.cancel();
  client_.close(ignored);
  ssl_.reset();
  server_.close(ignored);
  if (onClosed_) onClosed_(this);
}

}  // namespace brindle::sslbridge
