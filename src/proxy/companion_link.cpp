#include "proxy/companion_link.h"

#include <array>

#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include "core/log.h"
#include "core/settings.h"
#include "localnet/control_key.h"
#include "localnet/peer_owner.h"

namespace brindle {

using asio::ip::tcp;

// One connection: connect within the limit, make sure the port is held by
// this user's program, send, then read the answer until the companion closes
// (at most kCloseWait).
class CompanionLink::Exchange : public std::enable_shared_from_this<Exchange> {
 public:
  Exchange(asio::io_context& io, uint16_t port, Job job,
           std::function<void(bool, const std::string&)> finished)
      : socket_(io),
        timer_(io),
        port_(port),
        job_(std::move(job)),
        finished_(std::move(finished)) {}

  void Run() {
    timer_.expires_after(job_.connectLimit);
    timer_.async_wait([self = shared_from_this()](std::error_code ec) {
      if (ec || self->connected_) return;
      self->timedOut_ = true;
      std::error_code ignored;
      self->socket_.close(ignored);
    });
    socket_.async_connect(tcp::endpoint(asio::ip::address_v4::loopback(), port_),
                          [self = shared_from_this()](std::error_code ec) { self->Connected(ec); });
  }

 private:
  void Connected(std::error_code ec) {
    if (ec || timedOut_) {
      // A probe at start-up asks repeatedly until the companion listens.
      const std::string text = "Companion not reached on port " + std::to_string(port_) +
                               (timedOut_ ? std::string(": time limit") : ": " + ec.message());
      job_.message.empty() ? log::Debug(text) : log::Warning(text);
      return Finish(false);
    }
    connected_ = true;
    timer_.cancel();
    if (localnet::OwnerOfPeer(socket_) == localnet::PeerOwner::kOtherUser) {
      log::Warning("The companion's control port 127.0.0.1:" + std::to_string(port_) +
                   " is held by another user's program: nothing sent to it");
      return Finish(false);
    }
    if (job_.message.empty()) return Finish(true);  // a probe only
    asio::async_write(socket_, asio::buffer(job_.message),
                      [self = shared_from_this()](std::error_code ec, size_t) {
                        if (ec) {
                          log::Warning("Companion command not sent: " + ec.message());
                          return self->Finish(false);
                        }
                        self->AwaitClose();
                      });
  }

  void AwaitClose() {
    timer_.expires_after(kCloseWait);
    timer_.async_wait([self = shared_from_this()](std::error_code ec) {
      if (ec) return;
      std::error_code ignored;
      self->socket_.close(ignored);  // the companion kept it open: go on anyway
    });
    ReadUntilClosed();
  }

  void ReadUntilClosed() {
    socket_.async_read_some(asio::buffer(scratch_),
                            [self = shared_from_this()](std::error_code ec, size_t n) {
                              if (self->answer_.size() < 512)
                                self->answer_.append(self->scratch_.data(), n);
                              if (!ec) return self->ReadUntilClosed();
                              self->timer_.cancel();
                              self->Finish(true);
                            });
  }

  void Finish(bool ok) {
    std::error_code ignored;
    socket_.close(ignored);
    const size_t end = answer_.find_first_of("\r\n");
    if (end != std::string::npos) answer_.resize(end);
    if (auto finished = std::move(finished_)) finished(ok, answer_);
  }

  tcp::socket socket_;
  asio::steady_timer timer_;
  uint16_t port_;
  Job job_;
  std::function<void(bool, const std::string&)> finished_;
  std::array<char, 256> scratch_;
  std::string answer_;
  bool connected_ = false;
  bool timedOut_ = false;
};

CompanionLink::CompanionLink(asio::io_context& io, uint16_t controlPort, std::string key)
    : io_(io), controlPort_(controlPort), key_(std::move(key)) {}

void CompanionLink::Send(std::string message, std::chrono::milliseconds connectLimit, Done done) {
  if (!key_.empty()) message = localnet::ControlKeyLine(key_) + message;
  Enqueue({std::move(message), connectLimit, std::move(done)});
}

void CompanionLink::Probe(std::function<void(bool up)> done) {
  Enqueue({std::string(), kProbeConnectLimit, [done = std::move(done)](bool up, const auto&) {
             if (done) done(up);
           }});
}

std::string CompanionLink::AddRoute(uint16_t sslPort, std::string_view server, int32_t destPort) {
  return "a:" + std::to_string(sslPort) + ":" + std::string(server) + ":" +
         std::to_string(destPort) + "\r\nEND";
}

std::string CompanionLink::AddUpgradedRoute(uint16_t sslPort, std::string_view server,
                                            int32_t destPort, int32_t type) {
  const char* protocol = type == kTypeNntp ? "nntp" : type == kTypePop3 ? "pop3" : "smtp";
  return "s:" + std::string(protocol) + ":" + std::to_string(sslPort) + ":" + std::string(server) +
         ":" + std::to_string(destPort) + "\r\nEND";
}

std::string CompanionLink::DeleteRoute(uint16_t sslPort) {
  return "d:" + std::to_string(sslPort) + "\r\nEND";
}

std::string CompanionLink::Quit() {
  return "QUIT\r\nEND";
}

void CompanionLink::Enqueue(Job job) {
  queue_.push_back(std::move(job));
  if (!busy_) RunNext();
}

void CompanionLink::RunNext() {
  if (queue_.empty()) return;
  busy_ = true;
  Job job = std::move(queue_.front());
  queue_.pop_front();
  auto done = std::move(job.done);
  auto exchange = std::make_shared<Exchange>(
      io_, controlPort_, std::move(job),
      [self = shared_from_this(), done = std::move(done)](bool ok, const std::string& answer) {
        if (done) done(ok, answer);
        self->Finished();
      });
  exchange->Run();
}

void CompanionLink::Finished() {
  busy_ = false;
  // The next exchange starts from the loop, not from inside this one's handler.
  asio::post(io_, [self = shared_from_this()] {
    if (!self->busy_) self->RunNext();
  });
}

}  // namespace brindle
