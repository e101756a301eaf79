#include "sslbridge/bridge.h"

#include <array>
#include <vector>

#include <asio/steady_timer.hpp>

#include "core/log.h"
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
  if (!ec) acceptor.set_option(tcp::acceptor::reuse_address(true), ec);
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
  explicit Route(asio::io_context& io) : acceptor(io) {}
  uint16_t port = 0;
  std::string host;
  uint16_t destPort = 0;
  std::optional<UpgradeProtocol> upgrade;
  tcp::acceptor acceptor;
  std::shared_ptr<RouteTarget> target;  // shared with the route's relays
};

// Reads one command up to "END" within the read limit, then closes.
class Bridge::ControlSession : public std::enable_shared_from_this<ControlSession> {
 public:
  ControlSession(Bridge& bridge, tcp::socket socket)
      : bridge_(bridge), socket_(std::move(socket)), timer_(socket_.get_executor()) {}

  void Start() {
    timer_.expires_after(bridge_.options_.controlReadLimit);
    timer_.async_wait([self = shared_from_this()](std::error_code ec) {
      if (ec || self->done_) return;
      log::Warning("control: no complete command in time, ignored: " + Printable(self->text_));
      self->Close();
    });
    Read();
  }

 private:
  static std::string Printable(const std::string& text) {
    std::string out;
    for (char c : text.substr(0, 200)) {
      if (c == '\r')
        out += "\\r";
      else if (c == '\n')
        out += "\\n";
      else if (static_cast<unsigned char>(c) < ' ')
        out += '?';
      else
        out += c;
    }
    return out;
  }

  void Read() {
    socket_.async_read_some(
        asio::buffer(chunk_), [self = shared_from_this()](std::error_code ec, size_t n) {
          if (self->done_) return;
          self->text_.append(self->chunk_.data(), n);
          bool eof = static_cast<bool>(ec);
          ControlMessage msg = ExamineControlText(self->text_, eof);
          if (msg.complete) return self->Finish(msg.firstLine);
          if (eof && self->text_.empty()) {
            // The program probes whether the companion is up by connecting only.
            log::Debug("control: connection closed without a command");
            return self->Close();
          }
          if (eof || self->text_.size() > kMaxControlText) {
            log::Warning("control: incomplete command ignored: " + Printable(self->text_));
            return self->Close();
          }
          self->Read();
        });
  }

  // The command is carried out before the connection closes, so a sender
  // that waits for the close finds its route listening.
  void Finish(const std::string& line) {
    auto command = ParseControlCommand(line);
    if (command) {
      bridge_.Execute(*command);
    } else {
      log::Warning("control: malformed command ignored: " + Printable(line));
    }
    Close();
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
  bool done_ = false;
};

Bridge::Bridge(asio::io_context& io, BridgeOptions options)
    : io_(io),
      options_(std::move(options)),
      tls_(TlsEngine::Create(options_, trustProblems_)),
      control_(io) {
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
    if (!ec) std::make_shared<ControlSession>(*this, std::move(socket))->Start();
    AcceptControl();
  });
}

void Bridge::Execute(const ControlCommand& command) {
  if (stopped_) return;
  switch (command.kind) {
    case ControlCommand::Kind::kAddRoute:
      return AddRoute(command);
    case ControlCommand::Kind::kDeleteRoute:
      return DeleteRoute(command.port);
    case ControlCommand::Kind::kQuit:
      log::Info("QUIT received, ending");
      return Stop();
  }
}

void Bridge::AddRoute(const ControlCommand& command) {
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
    return;
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
    return;
  }
  routes_[command.port] = route;
  log::Info("route " + std::to_string(command.port) + " to " + where + " added");
  if (options_.IsInsecureHost(command.host)) {
    log::Warning("route " + std::to_string(command.port) + ": certificate checks are off for " +
                 command.host + " (insecure-host)");
  }
  AcceptOn(route);
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

void Bridge::DeleteRoute(uint16_t port) {
  auto it = routes_.find(port);
  if (it == routes_.end()) {
    log::Info("route " + std::to_string(port) + " not known, nothing to delete");
    return;
  }
  std::error_code ignored;
  it->second->acceptor.close(ignored);
  routes_.erase(it);
  log::Info("route " + std::to_string(port) + " deleted");
}

void Bridge::AcceptOn(const std::shared_ptr<Route>& route) {
  route->acceptor.async_accept([this, route](std::error_code ec, tcp::socket socket) {
    if (ec == asio::error::operation_aborted || !route->acceptor.is_open()) return;
    if (!ec) {
      auto relay =
          std::make_shared<Relay>(std::move(socket), route->target, *tls_, options_.handshakeLimit,
                                  [this](Relay* r) { relays_.erase(r); });
      relays_[relay.get()] = relay;
      relay->Start();
    }
    AcceptOn(route);
  });
}

void Bridge::Stop() {
  if (stopped_) return;
  stopped_ = true;
  std::error_code ignored;
  control_.close(ignored);
  for (auto& [port, route] : routes_) route->acceptor.close(ignored);
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
