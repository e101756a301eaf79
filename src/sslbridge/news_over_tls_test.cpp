// A news tunnel over TLS, whole: a plain client on the tunnel's port, the
// proxy, the companion, and a TLS news server with a certificate of a test
// authority. The settings file never makes a news tunnel TLS, but the proxy
// and the companion do not care which protocol they carry, and this is the
// road an article takes when one is made so.
#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include "core/log.h"
#include "core/settings_store.h"
#include "proxy/proxy.h"
#include "sslbridge/bridge.h"
#include "sslbridge/tls_fixtures.h"

namespace brindle::sslbridge {
namespace {

using namespace std::chrono_literals;

constexpr char kSignedArticle[] =
    "220 1 <signed@news.test> article\r\n"
    "From: Signer <signer@news.test>\r\n"
    "Newsgroups: local.test\r\n"
    "Subject: signed\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/signed; protocol=\"application/pgp-signature\";\r\n"
    "\tboundary=\"sig-b1\"\r\n"
    "\r\n"
    "--sig-b1\r\n"
    "Content-Type: multipart/signed; boundary=\"inner\"\r\n"
    "\r\n"
    "body\r\n"
    "--sig-b1--\r\n"
    ".\r\n";

std::string AnswerLikeANewsServer(const std::string& piece) {
  if (piece.starts_with("ARTICLE ")) return kSignedArticle;
  return "500 what?\r\n";
}

TEST(NewsOverTls, AnArticleReachesTheClientThroughTheCompanionFiltered) {
  log::SetMinimumLevel(log::Level::kWarning);
  const testing::Identity ca = testing::MakeCa("Brindle News CA");
  const testing::Identity cert = testing::MakeServerCert(ca, {"localhost"});
  const std::string caFile = testing::WritePemFile(ca.cert.get());
  testing::TlsEchoServer server(cert, {"200 news over TLS\r\n", AnswerLikeANewsServer});

  asio::io_context io;
  BridgeOptions bridgeOptions;
  bridgeOptions.controlPort = 0;
  bridgeOptions.caFiles.push_back(caFile);
  Bridge bridge(io, bridgeOptions);
  ASSERT_FALSE(bridge.Open());

  SettingsStore settings;
  ProxyOptions proxyOptions;
  proxyOptions.companionControlPort = bridge.ControlPort();
  proxyOptions.firstSslPort = testing::FreePort();
  Proxy proxy(io, settings, proxyOptions);
  const uint16_t tunnelPort = testing::FreePort();
  std::atomic<int> started{-1};
  proxy.AddTunnel({"localhost", tunnelPort, server.Port(), true, true, kTypeNntp},
                  [&](int error) { started = error; });
  std::thread runner([&] { io.run(); });
  for (auto until = std::chrono::steady_clock::now() + 10s;
       started < 0 && std::chrono::steady_clock::now() < until;) {
    std::this_thread::sleep_for(10ms);
  }
  ASSERT_EQ(started, 0) << "the tunnel and its route did not come up";

  {
    testing::LoopbackClient client(tunnelPort);
    ASSERT_TRUE(client.Connected());
    EXPECT_EQ(client.ReadUntil("\r\n"), "200 news over TLS\r\n");
    ASSERT_TRUE(client.Send("ARTICLE 1\r\n"));
    const std::string article = client.ReadUntil("\r\n.\r\n");
    // Relabelled on the way: the header and the first part's header.
    EXPECT_NE(article.find("Content-Type: multipart/mixed; protocol="), std::string::npos)
        << article;
    EXPECT_NE(article.find("--sig-b1\r\nContent-Type: multipart/mixed; boundary=\"inner\""),
              std::string::npos)
        << article;
    EXPECT_EQ(article.find("multipart/signed"), std::string::npos);
    EXPECT_TRUE(article.ends_with("body\r\n--sig-b1--\r\n.\r\n"));
  }

  // Program end: routes withdrawn, the companion told to quit.
  asio::post(io, [&] { proxy.CloseDown([&] { io.stop(); }); });
  runner.join();
  EXPECT_EQ(server.ServerNamesSeen(), std::vector<std::string>{"localhost"});
  std::remove(caFile.c_str());
}

}  // namespace
}  // namespace brindle::sslbridge
