// The proxy against a direct connection, in the same run: a bulk answer
// relayed piece by piece, ARTICLE downloads collected and filtered whole,
// round trips of small commands, and 100 channels at once. Client and server
// run on this thread and their own threads with blocking sockets; the proxy
// runs on its own io_context thread, as in the program. Each scenario is
// registered as .../Direct and .../Tunnel; the ratio tunnel/direct of the
// medians is printed at the end.
#include <benchmark/benchmark.h>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench_messages.h"
#include "core/log.h"
#include "proxy/proxy.h"
#include "proxy/tunnel.h"

namespace brindle::bench {
namespace {

using asio::ip::tcp;

// A scripted NNTP server: one thread per connection, answers by command.
class BenchServer {
 public:
  BenchServer() : acceptor_(io_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)) {
    bulk_ = "215 list follows\r\n";
    while (bulk_.size() < (8u << 20))
      bulk_ += "alt.binaries.example.group.number 0012345678 0000000001 y\r\n";
    bulk_ += ".\r\n";
    thread_ = std::thread([this] { AcceptLoop(); });
  }
  uint16_t Port() const { return acceptor_.local_endpoint().port(); }
  const std::string& Article(size_t bytes) {
    auto& text = articles_[bytes];
    if (text.empty()) text = DownloadedArticle(bytes);
    return text;
  }
  size_t BulkSize() const { return bulk_.size(); }
  void Prepare(size_t bytes) { Article(bytes); }

 private:
  void AcceptLoop() {
    for (;;) {
      auto socket = std::make_shared<tcp::socket>(io_);
      std::error_code ec;
      acceptor_.accept(*socket, ec);
      if (ec) return;
      std::thread([this, socket] { Serve(*socket); }).detach();
    }
  }
  void Serve(tcp::socket& socket) {
    std::error_code ec;
    asio::write(socket, asio::buffer(std::string("200 ready\r\n")), ec);
    std::string line;
    char c;
    while (!ec && asio::read(socket, asio::buffer(&c, 1), ec) == 1) {
      line += c;
      if (c != '\n') continue;
      const std::string* answer = &small_;
      if (line.starts_with("LIST")) answer = &bulk_;
      if (line.starts_with("ARTICLE ")) answer = &articles_.at(std::stoul(line.substr(8)));
      asio::write(socket, asio::buffer(*answer), ec);
      line.clear();
    }
  }

  asio::io_context io_;
  tcp::acceptor acceptor_;
  std::string bulk_;
  std::string small_ = "223 0 <a@b>\r\n";
  std::map<size_t, std::string> articles_;  // filled before any client asks
  std::thread thread_;
};

// The proxy on its own thread with one NNTP tunnel to the server.
class BenchProxy {
 public:
  explicit BenchProxy(uint16_t serverPort) : work_(asio::make_work_guard(io_)) {
    thread_ = std::thread([this] { io_.run(); });
    std::promise<uint16_t> port;
    asio::post(io_, [&] {
      ProxyOptions options;
      tcp::acceptor probe(io_, tcp::endpoint(asio::ip::address_v4::loopback(), 0));
      options.companionControlPort = probe.local_endpoint().port();
      const int32_t src = probe.local_endpoint().port();
      probe.close();
      proxy_ = std::make_unique<Proxy>(io_, store_, options);
      proxy_->AddTunnel({"127.0.0.1", src, serverPort, true, false, kTypeNntp});
      port.set_value(static_cast<uint16_t>(src));
    });
    port_ = port.get_future().get();
  }
  uint16_t Port() const { return port_; }

 private:
  asio::io_context io_;
  asio::executor_work_guard<asio::io_context::executor_type> work_;
  SettingsStore store_;
  std::unique_ptr<Proxy> proxy_;
  uint16_t port_ = 0;
  std::thread thread_;
};

struct World {
  World() : proxy(server.Port()) {
    log::SetMinimumLevel(log::Level::kWarning);
    for (size_t bytes : {1u << 10, 64u << 10, 1u << 20, 10u << 20, 100u << 20}) {
      server.Prepare(bytes);
    }
  }
  BenchServer server;
  BenchProxy proxy;
};

World& TheWorld() {
  static World world;
  return world;
}

uint16_t PortFor(bool tunnel) {
  return tunnel ? TheWorld().proxy.Port() : TheWorld().server.Port();
}

// A blocking client past the greeting.
tcp::socket Client(asio::io_context& io, uint16_t port) {
  tcp::socket socket(io);
  socket.connect(tcp::endpoint(asio::ip::address_v4::loopback(), port));
  socket.set_option(tcp::no_delay(true));
  char greeting[64];
  socket.read_some(asio::buffer(greeting));
  return socket;
}

// Reads until the data received ends with `end`; returns the byte count.
size_t ReadUntilEnd(tcp::socket& socket, std::string_view end, std::vector<char>& buffer) {
  size_t total = 0;
  std::string tail;
  for (;;) {
    size_t n = socket.read_some(asio::buffer(buffer));
    total += n;
    tail.append(buffer.data(), n);
    if (tail.size() > end.size()) tail.erase(0, tail.size() - end.size());
    if (tail == end) return total;
  }
}

void Exchange(benchmark::State& state, const std::string& command, std::string_view end,
              bool tunnel) {
  asio::io_context io;
  tcp::socket socket = Client(io, PortFor(tunnel));
  std::vector<char> buffer(256 * 1024);
  size_t bytes = 0;
  for (auto _ : state) {
    asio::write(socket, asio::buffer(command));
    bytes += ReadUntilEnd(socket, end, buffer);
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
}

void BM_BulkList(benchmark::State& state) {
  Exchange(state, "LIST\r\n", "\r\n.\r\n", state.range(0) == 1);
}

void BM_Article(benchmark::State& state) {
  Exchange(state, "ARTICLE " + std::to_string(state.range(1)) + "\r\n", "\r\n.\r\n",
           state.range(0) == 1);
}

void BM_SmallCommand(benchmark::State& state) {
  Exchange(state, "STAT\r\n", "\r\n", state.range(0) == 1);
}

void BM_HundredChannels(benchmark::State& state) {
  asio::io_context io;
  std::vector<tcp::socket> sockets;
  for (int i = 0; i < 100; ++i) sockets.push_back(Client(io, PortFor(state.range(0) == 1)));
  std::vector<char> buffer(4096);
  for (auto _ : state) {
    for (auto& s : sockets) asio::write(s, asio::buffer(std::string_view("STAT\r\n")));
    for (auto& s : sockets) ReadUntilEnd(s, "\r\n", buffer);
  }
  state.SetItemsProcessed(state.iterations() * 100);
}

// Linux's account of this process's memory, in bytes ("VmHWM", "VmRSS").
int64_t ProcessMemory(const char* field) {
  std::FILE* f = std::fopen("/proc/self/status", "r");
  if (f == nullptr) return -1;
  char line[256];
  int64_t kib = -1;
  const size_t length = std::strlen(field);
  while (std::fgets(line, sizeof line, f) != nullptr) {
    if (std::strncmp(line, field, length) == 0 && line[length] == ':') {
      kib = std::atoll(line + length + 1);
    }
  }
  std::fclose(f);
  return kib * 1024;
}

// Starts a fresh high-water mark of the resident memory.
void ResetPeakMemory() {
  if (std::FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
    std::fputs("5", f);
    std::fclose(f);
  }
}

// One held article through the tunnel on a fresh connection: how much the
// process's resident memory rose at its peak, per byte of the article, and
// how much the open connection still keeps after it and after a small one.
void BM_ArticleMemory(benchmark::State& state) {
  const size_t bytes = static_cast<size_t>(state.range(0));
  const std::string command = "ARTICLE " + std::to_string(bytes) + "\r\n";
  const std::string small = "ARTICLE " + std::to_string(1 << 10) + "\r\n";
  std::vector<char> buffer(256 * 1024);
  double peak = 0, after = 0, afterSmall = 0;
  for (auto _ : state) {
    asio::io_context io;
    tcp::socket socket = Client(io, PortFor(true));
    const int64_t before = ProcessMemory("VmRSS");
    ResetPeakMemory();
    asio::write(socket, asio::buffer(command));
    ReadUntilEnd(socket, "\r\n.\r\n", buffer);
    peak = static_cast<double>(ProcessMemory("VmHWM") - before);
    // The proxy gives the storage back once its last write has completed,
    // which may be just after the client has read the end.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    after = static_cast<double>(ProcessMemory("VmRSS") - before);
    asio::write(socket, asio::buffer(small));
    ReadUntilEnd(socket, "\r\n.\r\n", buffer);
    afterSmall = static_cast<double>(ProcessMemory("VmRSS") - before);
  }
  state.counters["peak_per_byte"] = peak / static_cast<double>(bytes);
  state.counters["kept_MiB"] = after / (1 << 20);
  state.counters["kept_after_small_MiB"] = afterSmall / (1 << 20);
}

void Both(benchmark::internal::Benchmark* b) {
  b->ArgNames({"tunnel"})->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond)->UseRealTime();
}

void ArticleSizes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"tunnel", "bytes"})->Unit(benchmark::kMicrosecond)->UseRealTime();
  for (int64_t bytes : {1 << 10, 64 << 10, 1 << 20, 10 << 20, 100 << 20}) {
    b->Args({0, bytes})->Args({1, bytes});
  }
}

BENCHMARK(BM_BulkList)->Apply(Both);
BENCHMARK(BM_Article)->Apply(ArticleSizes);
BENCHMARK(BM_ArticleMemory)->Arg(100 << 20)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SmallCommand)->Apply(Both);
BENCHMARK(BM_HundredChannels)->Apply(Both);

// Console output as usual, then tunnel/direct for every pair of medians (or
// of single runs without repetitions).
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
      std::string name = run.benchmark_name();
      auto at = name.find("tunnel:");
      if (at == std::string::npos) continue;
      const bool tunnel = name[at + 7] == '1';
      name.erase(at, 8);
      (tunnel ? tunnel_ : direct_)[name] = run.GetAdjustedRealTime();
    }
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%-50s %12s %12s %8s\n", "scenario", "direct", "tunnel", "ratio");
    for (const auto& [name, direct] : direct_) {
      auto t = tunnel_.find(name);
      if (t == tunnel_.end()) continue;
      std::printf("%-50s %12.1f %12.1f %8.2f\n", name.c_str(), direct, t->second,
                  t->second / direct);
    }
  }

 private:
  std::map<std::string, double> direct_, tunnel_;
};

}  // namespace
}  // namespace brindle::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  brindle::bench::TheWorld();
  brindle::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  std::_Exit(0);  // the server and proxy threads block for the process's life
}
