// The plain opening before a route's TLS: each protocol's exchange with a
// scripted server, and the refusals that must stop the route.
#include "sslbridge/starttls_prelude.h"

#include <gtest/gtest.h>

#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace brindle::sslbridge {
namespace {

using asio::ip::tcp;

// A server on its own thread that answers each line it reads with the next
// scripted answer, and records the lines.
struct ScriptedServer {
  ScriptedServer(std::string greeting, std::vector<std::string> answers)
      : acceptor(io, tcp::endpoint(asio::ip::address_v4::loopback(), 0)) {
    thread = std::thread([this, greeting, answers] {
      tcp::socket s(io);
      acceptor.accept(s);
      asio::write(s, asio::buffer(greeting));
      std::string input;
      for (const std::string& answer : answers) {
        std::error_code ec;
        const size_t n = asio::read_until(s, asio::dynamic_buffer(input), '\n', ec);
        if (ec) return;
        heard += input.substr(0, n);
        input.erase(0, n);
        asio::write(s, asio::buffer(answer), ec);
      }
      char c;
      std::error_code ec;
      s.read_some(asio::buffer(&c, 1), ec);  // until the other side goes
    });
  }
  ~ScriptedServer() { thread.join(); }

  asio::io_context io;
  tcp::acceptor acceptor;
  std::string heard;
  std::thread thread;
};

struct Outcome {
  std::string error, greeting;
};

Outcome Opening(UpgradeProtocol protocol, ScriptedServer& server) {
  asio::io_context io;
  tcp::socket socket(io);
  socket.connect(server.acceptor.local_endpoint());
  Outcome outcome{"not finished", {}};
  std::make_shared<StartTlsPrelude>(socket, protocol, [&](const std::string& e, std::string g) {
    outcome = {e, std::move(g)};
  })->Start();
  io.run_for(std::chrono::seconds(10));
  socket.close();
  return outcome;
}

TEST(StartTlsPreludeTest, EachProtocolSwitchesAfterItsGreetingAndKeepsItForTheClient) {
  {
    ScriptedServer smtp("220-mx ready\r\n220 go on\r\n",
                        {"250-mx\r\n250-STARTTLS\r\n250 8BITMIME\r\n", "220 ready for TLS\r\n"});
    const Outcome o = Opening(UpgradeProtocol::kSmtp, smtp);
    EXPECT_EQ(o.error, "");
    EXPECT_EQ(o.greeting, "220-mx ready\r\n220 go on\r\n");
    EXPECT_TRUE(smtp.heard.starts_with("EHLO "));
    EXPECT_TRUE(smtp.heard.ends_with("\r\nSTARTTLS\r\n"));
  }
  {
    ScriptedServer pop3("+OK pop\r\n", {"+OK begin TLS\r\n"});
    const Outcome o = Opening(UpgradeProtocol::kPop3, pop3);
    EXPECT_EQ(o.error, "");
    EXPECT_EQ(o.greeting, "+OK pop\r\n");
    EXPECT_EQ(pop3.heard, "STLS\r\n");
  }
  {
    ScriptedServer nntp("200 news\r\n", {"382 continue\r\n"});
    const Outcome o = Opening(UpgradeProtocol::kNntp, nntp);
    EXPECT_EQ(o.error, "");
    EXPECT_EQ(nntp.heard, "STARTTLS\r\n");
  }
}

TEST(StartTlsPreludeTest, ARefusalAtAnyStepStopsTheRoute) {
  ScriptedServer noOffer("220 mx\r\n", {"250-mx\r\n250 8BITMIME\r\n"});
  EXPECT_EQ(Opening(UpgradeProtocol::kSmtp, noOffer).error, "the server does not offer STARTTLS");
  ScriptedServer refused("+OK pop\r\n", {"-ERR not now\r\n"});
  EXPECT_NE(Opening(UpgradeProtocol::kPop3, refused).error.find("-ERR not now"), std::string::npos);
  ScriptedServer busy("400 busy\r\n", {});
  EXPECT_NE(Opening(UpgradeProtocol::kNntp, busy).error.find("400 busy"), std::string::npos);
}

}  // namespace
}  // namespace brindle::sslbridge
