// The brindle executable run as a user runs it: from its own folder with a
// companion beside it (a stand-in that records the control commands), a
// settings folder of the test's own, loopback ports the system hands out.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/testing/loopback_and_files.h"

#include "core/language.h"

extern char** environ;

namespace {

using namespace brindle::app::testing;

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

// A bound on how long any one run may take, so that a hung program fails
// the test instead of hanging it. Not a measure of speed.
constexpr auto kRunLimit = std::chrono::seconds(60);

// One run of the program, its standard error captured.
class ProgramRun {
 public:
  ProgramRun(const fs::path& exe, std::vector<std::string> args) {
    int pipeFds[2];
    EXPECT_EQ(pipe2(pipeFds, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 2);
    args.insert(args.begin(), exe.string());
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    EXPECT_EQ(posix_spawn(&pid_, exe.c_str(), &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    err_ = pipeFds[0];
    start_ = std::chrono::steady_clock::now();
  }
  ~ProgramRun() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    close(err_);
  }

  // Reads standard error until it holds `text` (true) or ends (false).
  bool WaitFor(const std::string& text) {
    while (stderr_.find(text) == std::string::npos)
      if (!ReadSome()) return false;
    return true;
  }

  // Waits for the end; returns the exit status (128 + signal when killed).
  int Wait() {
    while (ReadSome()) {
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  void Signal(int signal) { kill(pid_, signal); }
  const std::string& Stderr() const { return stderr_; }

 private:
  bool ReadSome() {
    const auto left = kRunLimit - (std::chrono::steady_clock::now() - start_);
    const int ms =
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(left).count());
    pollfd p{err_, POLLIN, 0};
    if (ms <= 0 || poll(&p, 1, ms) <= 0) {
      ADD_FAILURE() << "program still running after the run limit; stderr so far:\n" << stderr_;
      return false;
    }
    char buffer[4096];
    const ssize_t n = read(err_, buffer, sizeof buffer);
    if (n <= 0) return false;
    stderr_.append(buffer, static_cast<size_t>(n));
    return true;
  }

  pid_t pid_ = -1;
  int err_ = -1;
  std::string stderr_;
  std::chrono::steady_clock::time_point start_;
};

class ProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/brindle-program-XXXXXX";
    root_ = mkdtemp(pattern);
    programDir_ = root_ / "program";
    settingsDir_ = root_ / "settings";
    fs::create_directories(programDir_);
    fs::copy_file(BRINDLE_EXE, programDir_ / "brindle");
    fs::copy_file(FAKE_COMPANION_EXE, programDir_ / "SslBridge");
    controlPort_ = FreePort();
    setenv("BRINDLE_COMPANION_PORT", std::to_string(controlPort_).c_str(), 1);
    setenv("FAKE_COMPANION_LOG", (root_ / "companion.log").c_str(), 1);
    unsetenv("FAKE_COMPANION_DEAF");
    // The user's own language is English, so that a file's language shows.
    setenv("LANG", "C", 1);
    unsetenv("LC_ALL");
    unsetenv("LC_MESSAGES");
  }
  void TearDown() override { fs::remove_all(root_); }

  std::vector<std::string> Args(std::vector<std::string> extra = {}) {
    std::vector<std::string> args = {"--settings-dir", settingsDir_.string()};
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
  }
  fs::path Exe() const { return programDir_ / "brindle"; }
  std::string CompanionLog() const { return ReadFile(root_ / "companion.log"); }
  // The companion writes its log in a process of its own: its record of a
  // command may land a moment after the program has gone on. Waits (within a
  // bound) until the log ends with `last`, and returns the whole log.
  std::string CompanionLogEndingWith(const std::string& last) const {
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::string log = CompanionLog();
    while (!log.ends_with(last) && std::chrono::steady_clock::now() < give_up) {
      usleep(20'000);
      log = CompanionLog();
    }
    return log;
  }

  // A news tunnel and a TLS mail tunnel that start, and one that does not.
  std::string TunnelSettings(uint16_t news, uint16_t pop, uint16_t smtp) {
    return "[Miscellaneous]\r\nLanguage=EN\r\n"
           "[NNTPServer]\r\nServerName=127.0.0.1\r\nSrcPort=" +
           std::to_string(news) +
           "\r\nDestPort=119\r\nAutoStart=1\r\n"
           "[POP3Server]\r\nServerName=pop.example.invalid\r\nSrcPort=" +
           std::to_string(pop) +
           "\r\nDestPort=995\r\nAutoStart=1\r\nSSL=1\r\n"
           "[SMTPServer]\r\nServerName=smtp.example.invalid\r\nSrcPort=" +
           std::to_string(smtp) + "\r\nDestPort=25\r\nAutoStart=0\r\nSSL=0\r\n";
  }

  fs::path root_, programDir_, settingsDir_;
  uint16_t controlPort_ = 0;
};

TEST_F(ProgramTest, ListensAfterStartUpAndLeavesNothingBehindAfterSigterm) {
  const uint16_t news = FreePort(), pop = FreePort(), smtp = FreePort();
  fs::create_directories(settingsDir_);
  WriteFile(settingsDir_ / "OE_Brindle.ini", TunnelSettings(news, pop, smtp));

  ProgramRun run(Exe(), Args());
  ASSERT_TRUE(run.WaitFor("tunnel SMTP")) << run.Stderr();
  const std::string& err = run.Stderr();
  EXPECT_THAT(err, HasSubstr("settings: " + (settingsDir_ / "OE_Brindle.ini").string() + "\n"));
  EXPECT_THAT(err, HasSubstr("tunnel NNTP 127.0.0.1:" + std::to_string(news) +
                             " -> 127.0.0.1:119 plain: listening"));
  EXPECT_THAT(err, HasSubstr("tunnel POP3 127.0.0.1:" + std::to_string(pop) +
                             " -> pop.example.invalid:995 TLS: listening"));
  EXPECT_THAT(err, HasSubstr("not started (AutoStart off)"));
  EXPECT_TRUE(Listening(news));
  EXPECT_TRUE(Listening(pop));
  EXPECT_FALSE(Listening(smtp));
  // The TLS tunnel's route was registered with the companion.
  const std::string routes = CompanionLogEndingWith(":pop.example.invalid:995\n");
  ASSERT_THAT(routes, HasSubstr(":pop.example.invalid:995\n"));
  const std::string sslPort = routes.substr(2, routes.find(':', 2) - 2);

  run.Signal(SIGTERM);
  EXPECT_EQ(run.Wait(), 0);
  const size_t closed = run.Stderr().find("tunnels closed");
  ASSERT_NE(closed, std::string::npos) << run.Stderr();
  EXPECT_NE(run.Stderr().find("OEBR unloaded", closed), std::string::npos) << run.Stderr();
  EXPECT_THAT(run.Stderr(), Not(HasSubstr("OE exited")));
  // Every route withdrawn, then the companion told to quit.
  EXPECT_EQ(CompanionLogEndingWith("QUIT\n"),
            "a:" + sslPort + ":pop.example.invalid:995\nd:" + sslPort + "\nQUIT\n");
  EXPECT_FALSE(Listening(news));
  EXPECT_FALSE(Listening(pop));
  EXPECT_FALSE(Listening(controlPort_));
}

TEST_F(ProgramTest, ACompanionKilledFromOutsideIsStartedAgainWithItsRoutes) {
  const uint16_t pop = FreePort();
  fs::create_directories(settingsDir_);
  WriteFile(settingsDir_ / "OE_Brindle.ini", TunnelSettings(FreePort(), pop, FreePort()));
  ProgramRun run(Exe(), Args());
  ASSERT_TRUE(run.WaitFor("tunnel SMTP")) << run.Stderr();
  const std::string route = CompanionLogEndingWith(":pop.example.invalid:995\n");
  ASSERT_THAT(route, HasSubstr(":pop.example.invalid:995\n"));

  kill(std::stoi(ReadFile(root_ / "companion.log.pid")), SIGKILL);
  ASSERT_TRUE(run.WaitFor("routes restored")) << run.Stderr();
  EXPECT_THAT(run.Stderr(), HasSubstr("companion ended early, status 137"));
  // The new companion got the same route, with the key it was started with.
  EXPECT_EQ(CompanionLogEndingWith(route + route), route + route);
  EXPECT_TRUE(Listening(pop));
  run.Signal(SIGTERM);
  EXPECT_EQ(run.Wait(), 0);
}

TEST_F(ProgramTest, APortInUseIsReportedInTheLanguageTheFileNames) {
  const int busy = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(bind(busy, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
  listen(busy, 1);
  socklen_t size = sizeof a;
  getsockname(busy, reinterpret_cast<sockaddr*>(&a), &size);
  const std::string port = std::to_string(ntohs(a.sin_port));
  fs::create_directories(settingsDir_);
  WriteFile(settingsDir_ / "OE_Brindle.ini",
            "[Miscellaneous]\r\nLanguage=DE\r\n[NNTPServer]\r\nServerName=news.example.invalid\r\n"
            "SrcPort=" +
                port + "\r\nDestPort=119\r\nAutoStart=1\r\n");

  ProgramRun run(Exe(), Args({"--client", "true"}));
  EXPECT_EQ(run.Wait(), 0);
  close(busy);
  const std::string box = "[" + brindle::MessageBoxTitle(brindle::kLangGerman, 132) + "] " +
                          std::string(brindle::LanguageString(brindle::kLangGerman, 130)) + " " +
                          port + " " +
                          std::string(brindle::LanguageString(brindle::kLangGerman, 131));
  EXPECT_THAT(run.Stderr(), HasSubstr(box));
  EXPECT_THAT(run.Stderr(), HasSubstr(":119 plain: failed (error 10048)"));
}

TEST_F(ProgramTest, ClientArgumentsPassUnchangedAndItsStatusIsOurs) {
  const fs::path seen = root_ / "client-args";
  ProgramRun run(
      Exe(), Args({"--client", "sh", "-c", "printf '%s|' \"$@\" > '" + seen.string() + "'; exit 7",
                   "sh", "a b", "--settings-dir", ""}));
  EXPECT_EQ(run.Wait(), 7);
  EXPECT_EQ(ReadFile(seen), "a b|--settings-dir||");
  EXPECT_THAT(run.Stderr(), HasSubstr("settings: none, defaults"));
  const size_t exited = run.Stderr().find("OE exited");
  const size_t closed = run.Stderr().find("tunnels closed");
  ASSERT_NE(exited, std::string::npos) << run.Stderr();
  ASSERT_NE(closed, std::string::npos) << run.Stderr();
  EXPECT_LT(exited, closed);
  EXPECT_THAT(run.Stderr(), HasSubstr("OEBR unloaded"));
  EXPECT_EQ(CompanionLogEndingWith("QUIT\n"), "QUIT\n");  // sent even without a TLS tunnel
}

TEST_F(ProgramTest, ASecondStartOnTheSameFolderIsRefused) {
  ProgramRun first(Exe(), Args());
  ASSERT_TRUE(first.WaitFor("tunnels: none")) << first.Stderr();
  ProgramRun second(Exe(), Args());
  EXPECT_NE(second.Wait(), 0);
  EXPECT_THAT(second.Stderr(), HasSubstr("already running"));
  EXPECT_THAT(second.Stderr(), Not(HasSubstr("settings:")));  // it started nothing
  first.Signal(SIGINT);
  EXPECT_EQ(first.Wait(), 0);
}

TEST_F(ProgramTest, AMissingCompanionEndsTheProgramBeforeAnyTunnel) {
  const uint16_t news = FreePort();
  fs::remove(programDir_ / "SslBridge");
  fs::create_directories(settingsDir_);
  WriteFile(settingsDir_ / "OE_Brindle.ini", TunnelSettings(news, FreePort(), FreePort()));
  ProgramRun run(Exe(), Args());
  EXPECT_NE(run.Wait(), 0);
  EXPECT_THAT(run.Stderr(), HasSubstr("[File not found.] SslBridge not found."));
  EXPECT_THAT(run.Stderr(), Not(HasSubstr("tunnel NNTP")));
  EXPECT_FALSE(Listening(news));
}

TEST_F(ProgramTest, ACompanionThatIgnoresQuitIsEndedAllTheSame) {
  setenv("FAKE_COMPANION_DEAF", "1", 1);
  ProgramRun run(Exe(), Args({"--client", "true"}));
  EXPECT_EQ(run.Wait(), 0);
  EXPECT_THAT(run.Stderr(), HasSubstr("OEBR unloaded"));
  EXPECT_FALSE(Listening(controlPort_));
}

TEST_F(ProgramTest, AnOlderFileBesideTheProgramIsMigratedOnce) {
  const uint16_t news = FreePort();
  WriteFile(programDir_ / "OE_Brindle.ini", TunnelSettings(news, FreePort(), FreePort()));
  ProgramRun run(Exe(), Args({"--client", "true"}));
  EXPECT_EQ(run.Wait(), 0);
  EXPECT_THAT(run.Stderr(), HasSubstr("(older file, migrated)"));
  EXPECT_THAT(run.Stderr(), HasSubstr("tunnel NNTP 127.0.0.1:" + std::to_string(news)));
  EXPECT_FALSE(fs::exists(programDir_ / "OE_Brindle.ini"));
  EXPECT_THAT(ReadFile(settingsDir_ / "OE_Brindle.ini"),
              HasSubstr("SrcPort=" + std::to_string(news) + "\r\n"));
}

}  // namespace
