// Loopback helpers for the proxy's tests: an event loop that runs until a
// condition or a deadline, scripted peers (servers and clients) on ephemeral
// ports, a fake companion that records its control exchanges, and message
// steps that record their calls.
#pragma once

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include "proxy/message_steps.h"

namespace brindle::proxytest {

using asio::ip::tcp;
using namespace std::chrono_literals;

// Runs the loop until `done` holds (true) or `limit` passes (false).
inline bool RunUntil(asio::io_context& io, const std::function<bool()>& done,
                     std::chrono::milliseconds limit = 10s) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  io.restart();
  while (!done()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    io.run_for(5ms);
    io.restart();
  }
  return true;
}

// Lets the loop work for a while: for checking that something does NOT happen.
inline void RunFor(asio::io_context& io, std::chrono::milliseconds span) {
  RunUntil(
      io, [] { return false; }, span);
}

// One end of a test connection: collects what it receives, sends in order.
class Peer : public std::enable_shared_from_this<Peer> {
 public:
  explicit Peer(tcp::socket socket) : socket_(std::move(socket)) {}

  void Start() { Read(); }
  void Send(std::string data) {
    outbox_.push_back(std::move(data));
    if (outbox_.size() == 1) WriteNext();
  }
  void Close() {
    std::error_code ignored;
    socket_.close(ignored);
    closed = true;
  }

  std::string received;
  bool closed = false;  // the other end closed, or we did

 private:
  void Read() {
    socket_.async_read_some(asio::buffer(buffer_),
                            [self = shared_from_this()](std::error_code ec, size_t n) {
                              if (ec) {
                                self->closed = true;
                                return;
                              }
                              self->received.append(self->buffer_.data(), n);
                              self->Read();
                            });
  }
  void WriteNext() {
    asio::async_write(socket_, asio::buffer(outbox_.front()),
                      [self = shared_from_this()](std::error_code ec, size_t) {
                        self->outbox_.pop_front();
                        if (!ec && !self->outbox_.empty()) self->WriteNext();
                      });
  }

  tcp::socket socket_;
  std::array<char, 65536> buffer_;
  std::deque<std::string> outbox_;
};

inline std::shared_ptr<Peer> Connect(asio::io_context& io, uint16_t port) {
  auto socket = std::make_shared<tcp::socket>(io);
  std::shared_ptr<Peer> peer;
  socket->async_connect(tcp::endpoint(asio::ip::address_v4::loopback(), port),
                        [&, socket](std::error_code ec) {
                          if (ec) return;
                          peer = std::make_shared<Peer>(std::move(*socket));
                          peer->Start();
                        });
  RunUntil(io, [&] { return peer != nullptr; });
  return peer;
}

// Accepts on a loopback port (ephemeral unless given); greets every connection.
class ScriptedServer {
 public:
  ScriptedServer(asio::io_context& io, std::string greeting, uint16_t port = 0)
      : acceptor_(io, tcp::endpoint(asio::ip::address_v4::loopback(), port)),
        greeting_(std::move(greeting)) {
    Accept();
  }
  uint16_t Port() const { return acceptor_.local_endpoint().port(); }
  std::vector<std::shared_ptr<Peer>> peers;

 private:
  void Accept() {
    acceptor_.async_accept([this](std::error_code ec, tcp::socket socket) {
      if (ec) return;
      auto peer = std::make_shared<Peer>(std::move(socket));
      peer->Start();
      if (!greeting_.empty()) peer->Send(greeting_);
      peers.push_back(peer);
      Accept();
    });
  }
  tcp::acceptor acceptor_;
  std::string greeting_;
};

// A port with nobody listening on it (taken from the system, then let go).
inline uint16_t UnusedPort(asio::io_context& io) {
  tcp::acceptor probe(io, tcp::endpoint(asio::ip::address_v4::loopback(), 0));
  return probe.local_endpoint().port();
}

// Stands in for the TLS companion's control port: records every exchange
// (the text up to and including "END") and closes after it, or never.
class FakeCompanion {
 public:
  FakeCompanion(asio::io_context& io, bool closes)
      : acceptor_(io, tcp::endpoint(asio::ip::address_v4::loopback(), 0)), closes_(closes) {
    Accept();
  }
  uint16_t Port() const { return acceptor_.local_endpoint().port(); }
  std::vector<std::string> exchanges;
  int connections = 0;

 private:
  struct Link {
    explicit Link(tcp::socket s) : socket(std::move(s)) {}
    tcp::socket socket;
    std::string text;
    std::array<char, 256> buffer;
  };
  void Accept() {
    acceptor_.async_accept([this](std::error_code ec, tcp::socket socket) {
      if (ec) return;
      ++connections;
      auto link = std::make_shared<Link>(std::move(socket));
      links_.push_back(link);
      Read(link);
      Accept();
    });
  }
  void Read(const std::shared_ptr<Link>& link) {
    link->socket.async_read_some(asio::buffer(link->buffer),
                                 [this, link](std::error_code ec, size_t n) {
                                   if (ec) return;
                                   link->text.append(link->buffer.data(), n);
                                   if (link->text.ends_with("END")) {
                                     exchanges.push_back(link->text);
                                     if (closes_) return link->socket.close();
                                   }
                                   Read(link);
                                 });
  }
  tcp::acceptor acceptor_;
  bool closes_;
  std::vector<std::shared_ptr<Link>> links_;
};

// Message steps that record their calls and leave a mark "{Name}" before
// the final "\r\n.\r\n"; one of them can be made to fail.
class RecordingSteps : public MessageSteps {
 public:
  std::vector<std::string> calls;
  std::string failIn;

  std::string AppendSignature(std::string&& t, const Settings&) override {
    return Mark(t, "AppendSignature");
  }
  std::string CutReferences(std::string&& t, int limit) override {
    return Mark(t, "CutReferences" + std::to_string(limit));
  }
  std::string ChangeNewsHeaders(std::string&& t, const Settings&) override {
    return Mark(t, "ChangeNewsHeaders");
  }
  std::string InsertNewsCustomHeaders(std::string&& t, const Settings&) override {
    return Mark(t, "InsertNewsCustomHeaders");
  }
  std::string ChangeMailHeaders(std::string&& t, const Settings&) override {
    return Mark(t, "ChangeMailHeaders");
  }
  std::string InsertMailCustomHeaders(std::string&& t, const Settings&) override {
    return Mark(t, "InsertMailCustomHeaders");
  }
  std::string FilterBegin(std::string&& t) override { return Mark(t, "FilterBegin"); }
  std::string FilterChars(std::string&& t, int16_t mode) override {
    return Mark(t, "FilterChars" + std::to_string(mode));
  }
  std::string MarkAsianSpam(std::string&& t, int16_t percentage, int16_t minimum) override {
    return Mark(t, "MarkAsianSpam" + std::to_string(percentage) + "/" + std::to_string(minimum));
  }
  std::string FixBoundary(std::string&& t) override { return Mark(t, "FixBoundary"); }

 private:
  std::string Mark(std::string& text, const std::string& name) {
    calls.push_back(name);
    if (name == failIn) throw std::bad_alloc();
    size_t at = text.ends_with("\r\n.\r\n") ? text.size() - 5 : text.size();
    text.insert(at, "{" + name + "}");
    return std::move(text);
  }
};

}  // namespace brindle::proxytest
