#include "sslbridge/bridge.h"

#include <array>
#include <vector>

#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include "core/log.h"
#include "localnet/control_key.h"
#include "localnet/listener_options.h"
#include "localnet/peer_owner.h"
#include "sslbridge/relay.h"

namespace brindle::sslbridge {

using asio::ip::tcp;

namespace {

constexpr size_t kMaxControlText = 4096;

tcp::endpoint Loopback(uint16_t port) {
  return {asio::ip::address_v4::loopback(), port};
}

std::error_code Listen(tcp::acceptor& acceptor, uint16_t port) {
  std::error_code ec;
  acceptor.open(tcp::v4(), ec);
  if (!ec) localnet::PrepareListener(acceptor);
  if (!ec) acceptor.bind(Loopback(port), ec);
  if (!ec) acceptor.listen(asio::socket_base::max_listen_connections, ec);
  if (ec) {
    std::error_code ignored;
    acceptor.close(ignored);
  }
  return ec;
}

}  // namespace

struct Bridge::Route {
  explicit Route(asio::io_context& io) : acceptor(io), retry(io) {}
  uint16_t port = 0;
  std::string host;
  uint16_t destPort = 0;
  std::optional<UpgradeProtocol> upgrade;
  tcp::acceptor acceptor;
  asio::steady_timer retry;
  localnet::AcceptBackoff backoff;
  std::shared_ptr<RouteTarget> target;  // shared with the route's relays
};

// One control connection: the peer's owner is checked when it connects, then
// one command is read up to "END" within the read limit, carried out when
// the connection proves itself, answered with one line, and the connection
// closed. The proof covers the connection, whatever command it carries.
class Bridge::ControlSession : public std::enable_shared_from_this<ControlSession> {
 public:
  ControlSession(Bridge& bridge, tcp::socket socket)
      : bridge_(bridge), socket_(std::move(socket)), timer_(socket_.get_executor()) {}

  void Start() {
    const localnet::PeerOwner owner = localnet::OwnerOfPeer(socket_);
    if (owner == localnet::PeerOwner::kOtherUser) {
      bridge_.ControlWarning("control: connection from another user refused");
      return Answer("ERR refused");
    }
    timer_.expires_after(bridge_.options_.controlReadLimit);
    timer_.async_wait([self = shared_from_this()](std::error_code ec) {
      if (ec || self->done_) return;
      self->bridge_.ControlWarning("control: no complete command in time, ignored: " +
                                   EscapeForLog(self->text_));
      self->Close();
    });
    Read();
  }

 private:
  void Read() {
    socket_.async_read_some(
        asio::buffer(chunk_), [self = shared_from_this()](std::error_code ec, size_t n) {
          if (self->done_) return;
          self->text_.append(self->chunk_.data(), n);
          bool eof = static_cast<bool>(ec);
          ControlMessage msg = ExamineControlText(self->text_, eof);
          if (msg.complete) return self->Finish(msg);
          if (eof && self->text_.empty()) {
            // The program probes whether the companion is up by connecting only.
            log::Debug("control: connection closed without a command");
            return self->Close();
          }
          if (eof || self->text_.size() > kMaxControlText) {
            self->bridge_.ControlWarning("control: incomplete command ignored: " +
                                         EscapeForLog(self->text_));
            return self->Close();
          }
          self->Read();
        });
  }

  // The command is carried out before the answer, so a sender that waits for
  // the close finds its route listening.
  void Finish(const ControlMessage& msg) {
    const std::string& key = bridge_.options_.controlKey;
    if (!key.empty() && !(msg.key && localnet::SameKey(*msg.key, key))) {
      bridge_.ControlWarning("control: command without the program's key refused: " +
                             EscapeForLog(msg.command));
      return Answer("ERR refused");
    }
    auto command = ParseControlCommand(msg.command);
    if (!command) {
      bridge_.ControlWarning("control: malformed command ignored: " + EscapeForLog(msg.command));
      return Answer("ERR malformed command");
    }
    Answer(bridge_.Execute(*command));
  }

  void Answer(const std::string& line) {
    done_ = true;
    timer_.cancel();
    answer_ = line + "\r\n";
    asio::async_write(socket_, asio::buffer(answer_),
                      [self = shared_from_this()](std::error_code, size_t) { self->Close(); });
  }

  void Close() {
    done_ = true;
    timer_.cancel();
    std::error_code ignored;
    socket_.close(ignored);
  }

  Bridge& bridge_;
  tcp::socket socket_;
  asio::steady_timer timer_;
  std::array<char, 512> chunk_;
  std::string text_;
  std::string answer_;
  bool done_ = false;
};

Bridge::Bridge(asio::io_context& io, BridgeOptions options)
    : io_(io),
      options_(std::move(options)),
      tls_(TlsEngine::Create(options_, trustProblems_)),
      control_(io),
      controlRetry_(io) {
  for (const auto& problem : trustProblems_) log::Error(problem);
}

Bridge::~Bridge() {
  Stop();
}

std::error_code Bridge::Open() {
  std::error_code ec = Listen(control_, options_.controlPort);
  if (ec) {
    log::Error("control port " + std::to_string(options_.controlPort) +
               " cannot be opened: " + ec.message());
    return ec;
  }
  log::Info("listening for commands on 127.0.0.1:" + std::to_string(ControlPort()));
  AcceptControl();
  return {};
}

uint16_t Bridge::ControlPort() const {
  std::error_code ec;
  auto ep = control_.local_endpoint(ec);
  return ec ? 0 : ep.port();
}

void Bridge::AcceptControl() {
  control_.async_accept([this](std::error_code ec, tcp::socket socket) {
    if (ec == asio::error::operation_aborted || stopped_) return;
    if (ec) {
      bool first = false;
      controlRetry_.expires_after(controlBackoff_.Failed(first));
      if (first) log::Warning("control: accept failed, trying again shortly: " + ec.message());
      controlRetry_.async_wait([this](std::error_code ec) {
        if (!ec && !stopped_) AcceptControl();
      });
      return;
    }
    controlBackoff_.Succeeded();
    try {
      std::make_shared<ControlSession>(*this, std::move(socket))->Start();
    } catch (const std::exception& e) {  // out of memory: this connection goes
      log::Warning(std::string("control: connection dropped: ") + e.what());
    }
    AcceptControl();
  });
}

void Bridge::ControlWarning(const std::string& text) {
  constexpr int kPerMinute = 10;
  const auto now = std::chrono::steady_clock::now();
  if (now - warningWindow_ >= std::chrono::minutes(1)) {
    if (warningsSuppressed_ > 0) {
      log::Warning("control: " + std::to_string(warningsSuppressed_) +
                   " more such warnings were not logged");
    }
    warningWindow_ = now;
    warningsInWindow_ = 0;
    warningsSuppressed_ = 0;
  }
  if (++warningsInWindow_ <= kPerMinute) {
    log::Warning(text);
  } else {
    ++warningsSuppressed_;
  }
}

std::string Bridge::Execute(const ControlCommand& command) {
  if (stopped_) return "ERR ending";
  switch (command.kind) {
    case ControlCommand::Kind::kAddRoute:
      return AddRoute(command);
    case ControlCommand::Kind::kDeleteRoute:
      return DeleteRoute(command.port);
    case ControlCommand::Kind::kQuit:
      log::Info("QUIT received, ending");
      Stop();
      return "OK";
  }
  return "ERR unknown command";
}

std::string Bridge::AddRoute(const ControlCommand& command) {
  std::string where = command.host + ":" + std::to_string(command.destPort) +
                      (command.upgrade ? " (plain, then STARTTLS)" : "");
  auto it = routes_.find(command.port);
  if (it != routes_.end()) {
    // The same port again: the newer destination holds for new connections.
    // A different destination means two tunnels were given one port, which
    // the program should never do; say so loudly.
    Route& route = *it->second;
    std::string old = route.host + ":" + std::to_string(route.destPort) +
                      (route.upgrade ? " (plain, then STARTTLS)" : "");
    route.host = command.host;
    route.destPort = command.destPort;
    route.upgrade = command.upgrade;
    if (old != where) route.target = NewTarget(route);
    if (old == where) {
      log::Info("route " + std::to_string(command.port) + " to " + where + " added again");
    } else {
      log::Warning("route " + std::to_string(command.port) + " led to " + old + ", now leads to " +
                   where);
    }
    return "OK";
  }
  auto route = std::make_shared<Route>(io_);
  route->port = command.port;
  route->host = command.host;
  route->destPort = command.destPort;
  route->upgrade = command.upgrade;
  route->target = NewTarget(*route);
  if (std::error_code ec = Listen(route->acceptor, command.port)) {
    log::Error("route " + std::to_string(command.port) + " to " + where +
               ": cannot listen on 127.0.0.1:" + std::to_string(command.port) + ": " +
               ec.message());
    return "ERR cannot listen: " + ec.message();
  }
  routes_[command.port] = route;
  log::Info("route " + std::to_string(command.port) + " to " + where + " added");
  if (options_.IsInsecureHost(command.host)) {
    log::Warning("route " + std::to_string(command.port) + ": certificate checks are off for " +
                 command.host + " (insecure-host)");
  }
  AcceptOn(route);
  return "OK";
}

std::shared_ptr<RouteTarget> Bridge::NewTarget(const Route& route) {
  auto target = std::make_shared<RouteTarget>();
  target->routePort = route.port;
  target->host = route.host;
  target->port = route.destPort;
  target->upgrade = route.upgrade;
  target->tls = tls_->NewRouteCache();
  return target;
}

std::string Bridge::DeleteRoute(uint16_t port) {
  auto it = routes_.find(port);
  if (it == routes_.end()) {
    log::Info("route " + std::to_string(port) + " not known, nothing to delete");
    return "OK";
  }
  std::error_code ignored;
  it->second->acceptor.close(ignored);
  it->second->retry.cancel();
  routes_.erase(it);
  log::Info("route " + std::to_string(port) + " deleted");
  return "OK";
}

void Bridge::AcceptOn(const std::shared_ptr<Route>& route) {
  route->acceptor.async_accept([this, route](std::error_code ec, tcp::socket socket) {
    if (ec == asio::error::operation_aborted || !route->acceptor.is_open()) return;
    if (ec) {
      bool first = false;
      route->retry.expires_after(route->backoff.Failed(first));
      if (first) {
        log::Warning("route " + std::to_string(route->port) +
                     ": accept failed, trying again shortly: " + ec.message());
      }
      route->retry.async_wait([this, route](std::error_code ec) {
        if (!ec && route->acceptor.is_open()) AcceptOn(route);
      });
      return;
    }
    route->backoff.Succeeded();
    try {
      auto relay =
          std::make_shared<Relay>(std::move(socket), route->target, *tls_, options_.handshakeLimit,
                                  [this](Relay* r) { relays_.erase(r); });
      relays_[relay.get()] = relay;
      relay->Start();
    } catch (const std::exception& e) {  // out of memory: this connection goes
      log::Warning("route " + std::to_string(route->port) + ": connection dropped: " + e.what());
    }
    AcceptOn(route);
  });
}

void Bridge::Stop() {
  if (stopped_) return;
  stopped_ = true;
  std::error_code ignored;
  control_.close(ignored);
  controlRetry_.cancel();
  for (auto& [port, route] : routes_) {
    route->acceptor.close(ignored);
    route->retry.cancel();
  }
  routes_.clear();
  std::vector<std::shared_ptr<Relay>> live;
  for (auto& [ptr, weak] : relays_) {
    if (auto relay = weak.lock()) live.push_back(relay);
  }
  for (auto& relay : live) relay->Abort();
  relays_.clear();
  if (auto handler = std::move(onStopped_)) handler();
}

}  // namespace brindle::sslbridge
