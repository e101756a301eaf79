// The control link to the TLS companion: one short command per connection to
// its control port on 127.0.0.1, "END" after it, and the companion closes the
// connection once it has read the command. Exchanges run one after the other
// from a queue, so routes are added and withdrawn in the order asked for;
// one control connection used to be shared and a command started during
// another's wait cut that one short, which the queue no longer does.
// A companion that is down costs each command its connect wait and nothing
// else; that is logged as a warning. The link proves itself to the companion
// it started with that companion's key, and sends nothing to a control port
// that another user's program holds.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <asio/io_context.hpp>

namespace brindle {

class CompanionLink : public std::enable_shared_from_this<CompanionLink> {
 public:
  static constexpr std::chrono::seconds kRouteConnectLimit{1};
  static constexpr std::chrono::seconds kQuitConnectLimit{3};
  static constexpr std::chrono::seconds kProbeConnectLimit{3};
  static constexpr std::chrono::seconds kCloseWait{3};

  // `key`: what the companion was started with; empty for none.
  CompanionLink(asio::io_context& io, uint16_t controlPort, std::string key = {});

  // What the companion said before it closed: "OK", "ERR ..." or nothing
  // (a companion that answers nothing).
  using Done = std::function<void(bool sent, const std::string& answer)>;
  // Queues one command; `done` once its exchange has ended.
  void Send(std::string message, std::chrono::milliseconds connectLimit, Done done = {});
  // Queues a connection test; `done(up)`.
  void Probe(std::function<void(bool up)> done);

  static std::string AddRoute(uint16_t sslPort, std::string_view server, int32_t destPort);
  // A route whose server switches to TLS inside its protocol ("s:"): the
  // companion speaks the plain opening, then TLS, and keeps the client plain.
  static std::string AddUpgradedRoute(uint16_t sslPort, std::string_view server, int32_t destPort,
                                      int32_t type);
  static std::string DeleteRoute(uint16_t sslPort);
  static std::string Quit();

 private:
  struct Job {
    std::string message;  // empty: only see whether the companion answers
    std::chrono::milliseconds connectLimit;
    Done done;
  };
  class Exchange;

  void Enqueue(Job job);
  void RunNext();
  void Finished();

  asio::io_context& io_;
  uint16_t controlPort_;
  std::string key_;
  std::deque<Job> queue_;
  bool busy_ = false;
};

}  // namespace brindle
