// Pass-through speed: one bulk answer (a news server's LIST) through the
// program's tunnel, through other relays started by relay_peers.sh, and
// direct, interleaved round by round in one run. Prints each route's median
// throughput and its ratio to direct and to the program's tunnel.
//   relay_bench --server-port P [--peer NAME=PORT]... [--mib N] [--rounds R]
#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "core/log.h"
#include "core/settings_store.h"
#include "proxy/proxy.h"

namespace {

using asio::ip::tcp;
using Clock = std::chrono::steady_clock;

const std::string kGreeting = "200 ready\r\n";
const std::string kListHead = "215 list follows\r\n";

// Greets, and answers "LIST" with its status line, `bytes` of group lines
// and the terminator.
void Serve(uint16_t port, size_t bytes) {
  static asio::io_context io;
  static tcp::acceptor acceptor(io, tcp::endpoint(asio::ip::address_v4::loopback(), port));
  std::string block;
  while (block.size() < (1u << 20))
    block += "alt.binaries.example.group 0012345678 0000000001 y\r\n";
  block.resize(1u << 20);
  for (;;) {
    auto socket = std::make_shared<tcp::socket>(io);
    acceptor.accept(*socket);
    std::thread([socket, block, bytes] {
      std::error_code ec;
      asio::write(*socket, asio::buffer(kGreeting), ec);
      std::string command;
      char c;
      while (!ec && command.find("\r\n") == std::string::npos) {
        socket->read_some(asio::buffer(&c, 1), ec);
        command += c;
      }
      asio::write(*socket, asio::buffer(kListHead), ec);
      for (size_t sent = 0; !ec && sent < bytes; sent += block.size())
        asio::write(*socket, asio::buffer(block.data(), std::min(block.size(), bytes - sent)), ec);
      asio::write(*socket, asio::buffer(std::string(".\r\n")), ec);
      socket->read_some(asio::buffer(&c, 1), ec);  // until the client goes
    }).detach();
  }
}

// Seconds from the command to the answer's last byte.
double Fetch(uint16_t port, size_t bytes) {
  asio::io_context io;
  tcp::socket socket(io);
  socket.connect(tcp::endpoint(asio::ip::address_v4::loopback(), port));
  std::vector<char> buffer(1u << 20);
  size_t got = 0;
  while (got < kGreeting.size()) got += socket.read_some(asio::buffer(buffer));
  const auto start = Clock::now();
  asio::write(socket, asio::buffer(std::string("LIST\r\n")));
  got = 0;
  while (got < kListHead.size() + bytes + 3) got += socket.read_some(asio::buffer(buffer));
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Route {
  std::string name;
  uint16_t port;
  std::vector<double> gbps;
};

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  using namespace brindle;
  log::SetMinimumLevel(log::Level::kError);
  uint16_t serverPort = 0;
  size_t mib = 512;
  int rounds = 5;
  std::vector<Route> routes;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string key = argv[i], value = argv[i + 1];
    if (key == "--server-port") serverPort = static_cast<uint16_t>(std::atoi(value.c_str()));
    if (key == "--mib") mib = std::strtoul(value.c_str(), nullptr, 10);
    if (key == "--rounds") rounds = std::atoi(value.c_str());
    if (key == "--peer") {
      const size_t eq = value.find('=');
      routes.push_back(
          {value.substr(0, eq), static_cast<uint16_t>(std::atoi(value.c_str() + eq + 1)), {}});
    }
  }
  if (serverPort == 0) {
    std::fprintf(stderr, "usage: relay_bench --server-port P [--peer NAME=PORT]...\n");
    return 2;
  }
  const size_t bytes = mib << 20;
  std::thread(Serve, serverPort, bytes).detach();

  // The program's tunnel on its own loop thread, as in the program.
  asio::io_context io;
  auto work = asio::make_work_guard(io);
  std::thread loop([&] { io.run(); });
  SettingsStore store;
  std::unique_ptr<Proxy> proxy;
  uint16_t tunnelPort = 0;
  std::promise<void> started;
  asio::post(io, [&] {
    tcp::acceptor probe(io, tcp::endpoint(asio::ip::address_v4::loopback(), 0));
    tunnelPort = probe.local_endpoint().port();
    probe.close();
    proxy = std::make_unique<Proxy>(io, store, ProxyOptions{});
    proxy->AddTunnel({"127.0.0.1", tunnelPort, serverPort, true, false, kTypeNntp},
                     [&](int) { started.set_value(); });
  });
  started.get_future().wait();
  routes.insert(routes.begin(), {"brindle", tunnelPort, {}});
  routes.insert(routes.begin(), {"direct", serverPort, {}});

  for (int r = 0; r < rounds; ++r)
    for (Route& route : routes)
      route.gbps.push_back(static_cast<double>(bytes) / Fetch(route.port, bytes) / 1e9);

  const double direct = Median(routes[0].gbps), ours = Median(routes[1].gbps);
  std::printf("%-10s %10s %10s %12s   (%zu MiB, median of %d)\n", "route", "GB/s", "x direct",
              "brindle / it", mib, rounds);
  for (const Route& route : routes) {
    const double m = Median(route.gbps);
    std::printf("%-10s %10.2f %10.2f %12.2f\n", route.name.c_str(), m, m / direct, ours / m);
  }
  std::fflush(stdout);
  std::_Exit(0);  // the server threads block for the process's life
}
