// The companion on the system's TLS against real OpenSSL servers: the test
// script starts `openssl s_server -rev` instances (each answers a line with
// the line reversed) and names their ports and certificate files in the
// environment. The trusted test CA goes into this Wine prefix's user root
// store, never the machine's.
#include <windows.h>
// wincrypt.h needs windows.h first.
#include <wincrypt.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>

#include <asio/read_until.hpp>
#include <asio/streambuf.hpp>
#include <asio/write.hpp>

#include "core/log.h"
#include "sslbridge/bridge.h"

namespace brindle::sslbridge {
namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

uint16_t ServerPort(const char* name) {
  return static_cast<uint16_t>(std::atoi(Env(name).c_str()));
}

// Adds the PEM certificate to the current user's root store.
bool TrustForThisUser(const std::string& pemFile) {
  std::ifstream in(pemFile, std::ios::binary);
  std::string pem((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  DWORD size = 0;
  if (pem.empty() || !CryptStringToBinaryA(pem.c_str(), 0, CRYPT_STRING_BASE64HEADER, nullptr,
                                           &size, nullptr, nullptr)) {
    return false;
  }
  std::string der(size, '\0');
  CryptStringToBinaryA(pem.c_str(), 0, CRYPT_STRING_BASE64HEADER,
                       reinterpret_cast<BYTE*>(der.data()), &size, nullptr, nullptr);
  HCERTSTORE root =
      CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
  if (!root) return false;
  bool ok = CertAddEncodedCertificateToStore(root, X509_ASN_ENCODING,
                                             reinterpret_cast<const BYTE*>(der.data()), size,
                                             CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
  CertCloseStore(root, 0);
  return ok;
}

// A blocking loopback client whose reads give up after a few seconds.
class Client {
 public:
  explicit Client(uint16_t port) : socket_(io_) {
    std::error_code ec;
    socket_.connect({asio::ip::address_v4::loopback(), port}, ec);
    DWORD limit = 10000;
    setsockopt(socket_.native_handle(), SOL_SOCKET, SO_RCVTIMEO,
               reinterpret_cast<const char*>(&limit), sizeof limit);
  }
  void Send(const std::string& text) {
    std::error_code ec;
    asio::write(socket_, asio::buffer(text), ec);
  }
  // The next line, or "" when the connection closed (or timed out) first.
  std::string Line() {
    std::error_code ec;
    size_t n = asio::read_until(socket_, buffer_, '\n', ec);
    if (ec) return "";
    std::string line(asio::buffers_begin(buffer_.data()), asio::buffers_begin(buffer_.data()) + n);
    buffer_.consume(n);
    return line;
  }

 private:
  asio::io_context io_;
  tcp::socket socket_;
  asio::streambuf buffer_;
};

class SchannelBridgeTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_FALSE(Env("TLS_TEST_TRUSTED_CA").empty()) << "run through tls_servers_test.sh";
    ASSERT_TRUE(TrustForThisUser(Env("TLS_TEST_TRUSTED_CA")));
  }

  void StartBridge(std::function<void(BridgeOptions&)> tweak = {}) {
    BridgeOptions options;
    options.controlPort = 0;
    options.handshakeLimit = 10s;
    if (tweak) tweak(options);
    bridge_.emplace(io_, options);
    ASSERT_FALSE(bridge_->Open());
    runner_ = std::async(std::launch::async, [this] { io_.run(); });
  }

  void TearDown() override {
    if (!runner_.valid()) return;
    asio::post(io_, [this] { bridge_->Stop(); });
    ASSERT_EQ(runner_.wait_for(10s), std::future_status::ready);
  }

  // Routes a fresh port to host:port and returns it.
  uint16_t Route(const std::string& host, uint16_t port) {
    tcp::acceptor probe(io_, {asio::ip::address_v4::loopback(), 0});
    uint16_t routePort = probe.local_endpoint().port();
    probe.close();
    std::promise<void> done;
    asio::post(io_, [&] {
      ControlCommand command;
      command.kind = ControlCommand::Kind::kAddRoute;
      command.port = routePort;
      command.host = host;
      command.destPort = port;
      bridge_->Execute(command);
      done.set_value();
    });
    done.get_future().wait();
    return routePort;
  }

  void ExpectReversed(uint16_t routePort) {
    Client client(routePort);
    client.Send("hello\r\n");
    EXPECT_EQ(client.Line(), "olleh\n") << log_.Text();
  }
  void ExpectReversed(const std::string& host, uint16_t port) { ExpectReversed(Route(host, port)); }

  void ExpectRefused(const std::string& host, uint16_t port, const std::string& reason) {
    Client client(Route(host, port));
    client.Send("hello\r\n");
    EXPECT_EQ(client.Line(), "") << host << ":" << port;
    EXPECT_TRUE(log_.Contains(reason)) << log_.Text();
  }

  log::Capture log_;
  asio::io_context io_;
  std::optional<Bridge> bridge_;
  std::future<void> runner_;
};

TEST_F(SchannelBridgeTest, VerifiedRoundTripsAndRefusals) {
  StartBridge();
  // The route's second connection may resume the first one's session; its
  // certificate is checked all the same.
  const uint16_t good = Route("localhost", ServerPort("TLS_TEST_GOOD_PORT"));
  ExpectReversed(good);
  ExpectReversed(good);
  EXPECT_TRUE(log_.Contains("connected, TLSv1.2")) << log_.Text();

  ExpectRefused("localhost", ServerPort("TLS_TEST_UNKNOWN_CA_PORT"),
                "certificate rejected: unable to get local issuer certificate");
  ExpectRefused("localhost", ServerPort("TLS_TEST_OTHER_NAME_PORT"),
                "certificate rejected: hostname mismatch");
  // The private CA is not trusted until it is named.
  ExpectRefused("localhost", ServerPort("TLS_TEST_PRIVATE_CA_PORT"), "certificate rejected");
}

TEST_F(SchannelBridgeTest, CaFileTrustsItsRootOnly) {
  StartBridge([](BridgeOptions& o) { o.caFiles.push_back(Env("TLS_TEST_PRIVATE_CA")); });
  ExpectReversed("localhost", ServerPort("TLS_TEST_PRIVATE_CA_PORT"));
  ExpectRefused("localhost", ServerPort("TLS_TEST_UNKNOWN_CA_PORT"), "certificate rejected");
}

TEST_F(SchannelBridgeTest, InsecureHostSkipsTheChecksForThatHostOnly) {
  StartBridge([](BridgeOptions& o) { o.insecureHosts.push_back("localhost"); });
  ExpectReversed("localhost", ServerPort("TLS_TEST_UNKNOWN_CA_PORT"));
  EXPECT_TRUE(log_.Contains("certificate checks are off for localhost"));
  ExpectRefused("127.0.0.1", ServerPort("TLS_TEST_UNKNOWN_CA_PORT"), "certificate rejected");
}

TEST_F(SchannelBridgeTest, SilentServerTimesOutTheHandshake) {
  asio::io_context quiet;
  tcp::acceptor silent(quiet, {asio::ip::address_v4::loopback(), 0});
  StartBridge([](BridgeOptions& o) { o.handshakeLimit = 500ms; });
  ExpectRefused("localhost", silent.local_endpoint().port(),
                "connect and TLS handshake took too long");
}

}  // namespace
}  // namespace brindle::sslbridge
