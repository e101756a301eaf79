#include "sslbridge/control_command.h"

#include <gtest/gtest.h>

#include "sslbridge/bridge_options.h"

namespace brindle::sslbridge {
namespace {

TEST(ControlCommand, ReadsTheThreeCommands) {
  auto add = ParseControlCommand("a:1025:news.example.org:563");
  ASSERT_TRUE(add);
  EXPECT_EQ(add->kind, ControlCommand::Kind::kAddRoute);
  EXPECT_EQ(add->port, 1025);
  EXPECT_EQ(add->host, "news.example.org");
  EXPECT_EQ(add->destPort, 563);
  EXPECT_FALSE(add->upgrade);

  auto upgraded = ParseControlCommand("s:smtp:1026:::1:587");
  ASSERT_TRUE(upgraded);
  EXPECT_EQ(upgraded->kind, ControlCommand::Kind::kAddRoute);
  EXPECT_EQ(upgraded->upgrade, UpgradeProtocol::kSmtp);
  EXPECT_EQ(upgraded->host, "::1");
  EXPECT_EQ(upgraded->destPort, 587);

  // An address literal with colons stays whole between the two ports.
  auto v6 = ParseControlCommand("a:2000:::1:995");
  ASSERT_TRUE(v6);
  EXPECT_EQ(v6->host, "::1");
  EXPECT_EQ(v6->destPort, 995);

  auto del = ParseControlCommand("d:65535");
  ASSERT_TRUE(del);
  EXPECT_EQ(del->kind, ControlCommand::Kind::kDeleteRoute);
  EXPECT_EQ(del->port, 65535);

  auto quit = ParseControlCommand("QUIT");
  ASSERT_TRUE(quit);
  EXPECT_EQ(quit->kind, ControlCommand::Kind::kQuit);
}

TEST(ControlCommand, RejectsMalformedCommands) {
  for (const char* bad : {"",
                          "a",
                          "a:",
                          "a:1025",
                          "a:1025:host",
                          "a:1025::563",
                          "a:0:host:563",
                          "a:65536:host:563",
                          "a:1025:host:",
                          "a:-1:host:563",
                          "a: 1025:host:563",
                          "a:1025:ho st:563",
                          "d:",
                          "d:abc",
                          "d:1025x",
                          "d:99999",
                          "x:1025",
                          "quit",
                          "QUIT ",
                          "a;1025;host;563",
                          "s:1025:host:587",
                          "s:imap:1025:host:587",
                          "s:smtp:1025"}) {
    EXPECT_FALSE(ParseControlCommand(bad)) << '"' << bad << '"';
  }
}

TEST(ControlCommand, WaitsForTheEndLine) {
  EXPECT_FALSE(ExamineControlText("a:1:h:2", false).complete);
  EXPECT_FALSE(ExamineControlText("a:1:h:2\r\n", false).complete);
  EXPECT_FALSE(ExamineControlText("a:1:h:2\r\nEN", false).complete);
  auto whole = ExamineControlText("a:1:h:2\r\nEND", false);
  EXPECT_TRUE(whole.complete);
  EXPECT_EQ(whole.command, "a:1:h:2");
  EXPECT_FALSE(whole.key);
  // The program's key comes first; the command is the line after it.
  EXPECT_FALSE(ExamineControlText("k:abc\r\n", true).complete);
  auto keyed = ExamineControlText("k:abc\r\nd:7\r\nEND", false);
  EXPECT_TRUE(keyed.complete);
  EXPECT_EQ(keyed.key, "abc");
  EXPECT_EQ(keyed.command, "d:7");
  EXPECT_TRUE(ExamineControlText("QUIT\nEND\n", false).complete);
  // A peer that closes after a whole line has said all it will say.
  EXPECT_TRUE(ExamineControlText("d:7\r\n", true).complete);
  EXPECT_FALSE(ExamineControlText("d:7", true).complete);
}

TEST(ControlCommand, LogTextShowsOnlyPrintableBytes) {
  EXPECT_EQ(EscapeForLog("a:1\r\n\x1b[2J\x7f\xff ok"), "a:1\\x0D\\x0A\\x1B[2J\\x7F\\xFF ok");
  EXPECT_EQ(EscapeForLog(std::string(300, 'x'), 4), "xxxx...");
}

TEST(BridgeOptions, ConfigFileKeysAndProblems) {
  BridgeOptions options;
  auto problems = ApplyConfigText(
      "# trust our own CA\r\n"
      "ca-file = /etc/ssl/private-ca.pem\r\n"
      "  Insecure-Host=News.Example.ORG  \n"
      "; comment\n"
      "insecure-host = 10.0.0.1\n"
      "control-port = 6000\n"
      "control-port = 70000\n"
      "verify = off\n"
      "ca-file =\n",
      options);
  EXPECT_EQ(options.caFiles, std::vector<std::string>{"/etc/ssl/private-ca.pem"});
  EXPECT_TRUE(options.IsInsecureHost("news.example.org"));
  EXPECT_TRUE(options.IsInsecureHost("NEWS.example.org"));
  EXPECT_TRUE(options.IsInsecureHost("10.0.0.1"));
  EXPECT_FALSE(options.IsInsecureHost("mail.example.org"));
  EXPECT_EQ(options.controlPort, 6000);
  ASSERT_EQ(problems.size(), 3u);
  EXPECT_NE(problems[0].find("line 7"), std::string::npos);
  EXPECT_NE(problems[1].find("verify = off"), std::string::npos);
}

TEST(BridgeOptions, CommandLine) {
  const char* argv[] = {"SslBridge",    "--control-port",  "0",
                        "--ca-file",    "a.pem",           "--insecure-host",
                        "Host.Example", "--insecure-host", "other"};
  CommandLine cl = ParseCommandLine(9, argv);
  EXPECT_TRUE(cl.error.empty());
  EXPECT_EQ(cl.controlPort, 0);
  EXPECT_EQ(cl.caFiles, std::vector<std::string>{"a.pem"});
  EXPECT_EQ(cl.insecureHosts, (std::vector<std::string>{"host.example", "other"}));

  const char* bad1[] = {"SslBridge", "--control-port", "x"};
  EXPECT_FALSE(ParseCommandLine(3, bad1).error.empty());
  const char* bad2[] = {"SslBridge", "--ca-file"};
  EXPECT_FALSE(ParseCommandLine(2, bad2).error.empty());
  const char* bad3[] = {"SslBridge", "--verify", "off"};
  EXPECT_FALSE(ParseCommandLine(3, bad3).error.empty());
}

}  // namespace
}  // namespace brindle::sslbridge
