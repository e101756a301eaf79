// Keeps the TLS companion running for as long as the program needs it. When
// it ends by itself (killed, crashed, or ended by someone else), it is
// started again after a wait that doubles with each failure up to the
// longest, and told every running route again; one that ran a while starts
// the count afresh. Starting the process and noticing its end belong to the
// platform: the keeper is told of both.
#pragma once

#include <chrono>
#include <functional>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include "app/program_services.h"
#include "proxy/proxy.h"

namespace brindle::app {

class CompanionKeeper {
 public:
  static constexpr std::chrono::seconds kRestartFirst{1};
  static constexpr std::chrono::seconds kRestartLongest{30};
  static constexpr std::chrono::seconds kRanLongEnough{60};

  // `launch` starts the companion (calling Started when it did) and returns
  // false when it could not.
  CompanionKeeper(asio::io_context& io, ProgramServices& services, Proxy& proxy,
                  std::function<bool()> launch)
      : services_(services), proxy_(proxy), launch_(std::move(launch)), timer_(io) {}

  void Started() { started_ = std::chrono::steady_clock::now(); }
  // The companion ended; `status` as the platform reports it.
  void Ended(int status);
  // The program is closing: a companion that ends now is not started again.
  void Stop();

 private:
  ProgramServices& services_;
  Proxy& proxy_;
  std::function<bool()> launch_;
  asio::steady_timer timer_;
  std::chrono::seconds wait_ = kRestartFirst;
  std::chrono::steady_clock::time_point started_;
  bool stopped_ = false;
};

}  // namespace brindle::app
