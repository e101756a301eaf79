// The real program with the real companion beside it, run with a settings
// folder of the test's own: the companion must take its SslBridge.conf from
// that folder, so a private CA named there makes the TLS tunnel work.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "sslbridge/tls_fixtures.h"

extern char** environ;

namespace brindle::sslbridge {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string ReadAll(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

TEST(SettingsFolder, TheCompanionReadsItsConfigurationFromTheFolderInUse) {
  char pattern[] = "/tmp/brindle-settings-XXXXXX";
  const fs::path root = mkdtemp(pattern);
  const fs::path settings = root / "settings";
  fs::create_directories(settings);
  fs::create_directories(root / "home");

  testing::Identity ca = testing::MakeCa("Private CA");
  const std::string caFile = testing::WritePemFile(ca.cert.get());
  testing::TlsEchoServer server(testing::MakeServerCert(ca, {"localhost"}),
                                "+OK private server ready\r\n");
  const uint16_t tunnel = testing::FreePort();
  std::ofstream(settings / "OE_Brindle.ini", std::ios::binary)
      << "[POP3Server]\r\nServerName=localhost\r\nSrcPort=" << tunnel
      << "\r\nDestPort=" << server.Port() << "\r\nAutoStart=1\r\nSSL=1\r\n";
  std::ofstream(settings / "SslBridge.conf") << "ca-file = " << caFile << "\n";

  // The user's default settings folder holds nothing.
  setenv("HOME", (root / "home").c_str(), 1);
  unsetenv("XDG_CONFIG_HOME");
  setenv("BRINDLE_COMPANION_PORT", std::to_string(testing::FreePort()).c_str(), 1);
  const fs::path log = root / "stderr.txt";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 2, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::string exe = BRINDLE_EXE, flag = "--settings-dir", dir = settings.string();
  char* argv[] = {exe.data(), flag.data(), dir.data(), nullptr};
  pid_t pid = -1;
  ASSERT_EQ(posix_spawn(&pid, exe.c_str(), &actions, nullptr, argv, environ), 0);
  posix_spawn_file_actions_destroy(&actions);

  // Bounded wait for the tunnel, then one client through it.
  bool up = false;
  for (int i = 0; i < 300 && !up; ++i) {
    up = ReadAll(log).find("companion answering") != std::string::npos &&
         testing::LoopbackClient(tunnel).Connected();
    if (!up) std::this_thread::sleep_for(50ms);
  }
  std::string greeting;
  if (up) {
    testing::LoopbackClient client(tunnel);
    greeting = client.ReadUntil("\r\n");
  }
  kill(pid, SIGTERM);
  int status = 0;
  waitpid(pid, &status, 0);
  const std::string text = ReadAll(log);
  fs::remove_all(root);
  std::remove(caFile.c_str());

  EXPECT_EQ(greeting, "+OK private server ready\r\n") << text;
  EXPECT_NE(text.find("configuration read from " + (settings / "SslBridge.conf").string()),
            std::string::npos)
      << text;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << text;
}

}  // namespace
}  // namespace brindle::sslbridge
