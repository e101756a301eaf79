#include "sslbridge/relay.h"

#include <asio/connect.hpp>
#include <asio/write.hpp>

#include "core/log.h"
#include "sslbridge/starttls_prelude.h"

namespace brindle::sslbridge {

using asio::ip::tcp;

namespace {
// After close_notify the server gets this long to finish its side.
constexpr std::chrono::seconds kCloseLinger{30};
}  // namespace

Relay::Relay(tcp::socket client, std::shared_ptr<RouteTarget> target, TlsEngine& tls,
             std::chrono::milliseconds handshakeLimit, ClosedHandler onClosed)
    : client_(std::move(client)),
      server_(client_.get_executor()),
      resolver_(client_.get_executor()),
      timer_(client_.get_executor()),
      target_(std::move(target)),
      tls_(tls),
      handshakeLimit_(handshakeLimit),
      onClosed_(std::move(onClosed)),
      fromClient_(std::make_unique_for_overwrite<char[]>(kBufferSize)),
      fromServer_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

Relay::~Relay() = default;

std::string Relay::Name() const {
  return "route " + std::to_string(target_->routePort) + " (" + target_->host + ":" +
         std::to_string(target_->port) + ")";
}

void Relay::ArmTimer(std::chrono::milliseconds limit, const char* what) {
  timer_.expires_after(limit);
  timer_.async_wait([self = shared_from_this(), what](std::error_code ec) {
    if (!ec && !self->closed_) self->Fail(what);
  });
}

// The route's server name is looked up once; the addresses serve every later
// connection until one of them cannot be reached.
void Relay::Start() {
  ArmTimer(handshakeLimit_, "connect and TLS handshake took too long");
  if (target_->addresses) return Connect(*target_->addresses);
  resolver_.async_resolve(
      target_->host, std::to_string(target_->port),
      [self = shared_from_this()](std::error_code ec, tcp::resolver::results_type results) {
        if (self->closed_) return;
        if (ec) return self->Fail("cannot resolve the server name: " + ec.message());
        self->target_->addresses = results;
        self->Connect(results);
      });
}

void Relay::Connect(const tcp::resolver::results_type& addresses) {
  asio::async_connect(server_, addresses,
                      [self = shared_from_this()](std::error_code ec, const tcp::endpoint&) {
                        if (self->closed_) return;
                        if (ec) {
                          self->target_->addresses.reset();  // look the name up again next time
                          return self->Fail("cannot connect to the server: " + ec.message());
                        }
                        self->OnConnected();
                      });
}

void Relay::OnConnected() {
  std::error_code ignored;
  server_.set_option(tcp::no_delay(true), ignored);
  client_.set_option(tcp::no_delay(true), ignored);
  if (!target_->upgrade) return StartTls();
  std::make_shared<StartTlsPrelude>(
      server_, *target_->upgrade,
      [self = shared_from_this()](const std::string& error, std::string greeting) {
        if (self->closed_) return;
        if (!error.empty()) return self->Fail(error);
        self->greeting_ = std::move(greeting);
        self->StartTls();
      })
      ->Start();
}

// The TLS handshake starts on a connected server socket; anything a route
// has to say in the clear first belongs before this.
void Relay::StartTls() {
  std::string failure;
  session_ = tls_.NewSession(target_->host, target_->tls, failure);
  if (!session_) return Fail(failure);
  HandshakeStep();
  if (!closed_ && !established_) ReadServer();
}

void Relay::HandshakeStep() {
  TlsStatus status = session_->Handshake();
  FlushServer();
  if (status == TlsStatus::kFailed) return Fail("TLS handshake failed: " + session_->Failure());
  if (status != TlsStatus::kDone) return;
  established_ = true;
  timer_.cancel();
  log::Info(Name() + ": connected, " + session_->Description() +
            (session_->Resumed() ? ", resumed" : ""));
  if (greeting_.empty()) return ReadClient();
  // The client side is plain: it gets the greeting the server gave in the
  // clear, and speaks its first command over TLS.
  asio::async_write(client_, asio::buffer(greeting_),
                    [self = shared_from_this()](std::error_code ec, size_t) {
                      if (self->closed_) return;
                      if (ec) return self->Fail("client connection: " + ec.message());
                      self->ReadClient();
                    });
}

// Server -> client. Whatever one socket read brings is decrypted as a whole,
// so a bulk download goes to the client in large pieces.

void Relay::ReadServer() {
  server_.async_read_some(asio::buffer(fromServer_.get(), kBufferSize),
                          [self = shared_from_this()](std::error_code ec, size_t n) {
                            if (self->closed_) return;
                            if (ec == asio::error::eof && self->established_) {
                              return self->ServerFinished();
                            }
                            if (ec == asio::error::eof) {
                              return self->Fail(
                                  "TLS handshake failed: the server closed the connection during "
                                  "the handshake");
                            }
                            if (ec) return self->Fail("server connection: " + ec.message());
                            self->OnServerBytes(n);
                          });
}

void Relay::OnServerBytes(size_t n) {
  session_->Feed(fromServer_.get(), n);
  if (!established_) {
    HandshakeStep();
    if (closed_) return;
    if (!established_) return ReadServer();
    // The server may have sent data right behind its last handshake message.
  }
  TlsStatus status = session_->Read(toClient_);
  FlushServer();  // what reading may owe the server (a key update, an alert)
  switch (status) {
    case TlsStatus::kWantMore:
      return ReadServer();
    case TlsStatus::kDone:
      return WriteClient();
    case TlsStatus::kClosed:
      if (!toClient_.empty()) return WriteClient();
      return ServerFinished();
    case TlsStatus::kFailed:
      return Fail("receiving from the server failed: " + session_->Failure());
  }
}

void Relay::WriteClient() {
  asio::async_write(
      client_, asio::buffer(toClient_), [self = shared_from_this()](std::error_code ec, size_t) {
        if (self->closed_) return;
        if (ec) return self->Fail("client connection: " + ec.message());
        self->toClient_.clear();
        // What is still fed and undecrypted (or close_notify) comes first.
        TlsStatus status = self->session_->Read(self->toClient_);
        if (status == TlsStatus::kDone) return self->WriteClient();
        if (status == TlsStatus::kClosed) return self->ServerFinished();
        if (status == TlsStatus::kFailed) {
          return self->Fail("receiving from the server failed: " + self->session_->Failure());
        }
        self->ReadServer();
      });
}

void Relay::ServerFinished() {
  if (serverDone_) return;
  serverDone_ = true;
  std::error_code ignored;
  client_.shutdown(tcp::socket::shutdown_send, ignored);
  MaybeFinish();
}

// Client -> server.

void Relay::ReadClient() {
  client_.async_read_some(
      asio::buffer(fromClient_.get(), kBufferSize),
      [self = shared_from_this()](std::error_code ec, size_t n) {
        if (self->closed_) return;
        if (ec == asio::error::eof) {
          self->clientDone_ = true;
          return self->SendCloseNotify();
        }
        if (ec) return self->Fail("client connection: " + ec.message());
        if (!self->session_->Write(self->fromClient_.get(), n)) {
          return self->Fail("sending to the server failed: " + self->session_->Failure());
        }
        self->upWaiting_ = true;
        self->FlushServer();
      });
}

// One write to the server at a time; what the session produces meanwhile
// goes out with the next one. The client is read again once its piece is out.
void Relay::FlushServer() {
  if (writingServer_ || closed_) return;
  session_->TakeOutgoing(toServer_);
  if (toServer_.empty()) {
    if (clientDone_) return MaybeFinish();
    if (upWaiting_) {
      upWaiting_ = false;
      ReadClient();
    }
    return;
  }
  writingServer_ = true;
  asio::async_write(server_, asio::buffer(toServer_),
                    [self = shared_from_this()](std::error_code ec, size_t) {
                      self->writingServer_ = false;
                      if (self->closed_) return;
                      // After close_notify the server may have gone already.
                      if (ec && self->clientDone_) return self->MaybeFinish();
                      if (ec) return self->Fail("server connection: " + ec.message());
                      self->toServer_.clear();
                      self->FlushServer();
                    });
}

void Relay::SendCloseNotify() {
  if (!serverDone_) ArmTimer(kCloseLinger, "the server did not close after close_notify");
  session_->Close();
  FlushServer();
}

void Relay::MaybeFinish() {
  if (!clientDone_ || !serverDone_ || writingServer_) return;
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
  server_.close(ignored);
  if (onClosed_) onClosed_(this);
}

}  // namespace brindle::sslbridge
