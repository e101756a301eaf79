// brindle.exe run as a user runs it: from a program folder holding the
// program, OE_Brindle.dll, a companion and an older settings file, started in
// a folder that holds the client's library. Under Wine the system reports a
// Windows with Windows Mail, so the program carries Windows Mail's name.
#include <winsock2.h>
// winsock2.h must come before windows.h.
#include <windows.h>

#include <shlobj.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/testing/loopback_and_files.h"

namespace {

using namespace brindle::app::testing;

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

// A bound on one run of the program, so that a hang fails the test instead
// of stalling it. Not a measure of speed.
constexpr DWORD kRunLimitMs = 60000;

std::string MakeTempFolder() {
  char base[MAX_PATH] = {};
  GetTempPathA(MAX_PATH, base);
  // One folder per test: a companion of the test before may still hold its
  // copy of the program folder's files for a moment.
  static int tests = 0;
  const std::string folder = std::string(base) + "brindle-program-" +
                             std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++tests);
  CreateDirectoryA(folder.c_str(), nullptr);
  return folder;
}

std::string SettingsFolder() {
  char appData[MAX_PATH] = {};
  SHGetFolderPathA(nullptr, CSIDL_APPDATA, nullptr, 0, appData);
  return std::string(appData) + "\\OE Brindle";
}

std::string SettingsFile() {
  return SettingsFolder() + "\\OE_Brindle.ini";
}

bool ProcessRunning(const char* exeName) {
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32 entry{};
  entry.dwSize = sizeof entry;
  bool found = false;
  for (BOOL more = Process32First(snapshot, &entry); more && !found;
       more = Process32Next(snapshot, &entry))
    found = _stricmp(entry.szExeFile, exeName) == 0;
  CloseHandle(snapshot);
  return found;
}

class WindowsProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    root_ = MakeTempFolder();
    program_ = root_ + "\\program";
    client_ = root_ + "\\client";
    CreateDirectoryA(program_.c_str(), nullptr);
    CreateDirectoryA(client_.c_str(), nullptr);
    const std::string bin = HOOKS_DLL_DIR;
    ASSERT_TRUE(
        CopyFileA((bin + "\\brindle.exe").c_str(), (program_ + "\\winmail.exe").c_str(), FALSE));
    ASSERT_TRUE(CopyFileA((bin + "\\OE_Brindle.dll").c_str(),
                          (program_ + "\\OE_Brindle.dll").c_str(), FALSE));
    ASSERT_TRUE(
        CopyFileA((std::string(STAND_IN_COMPANION_DIR) + "\\stand_in_companion.exe").c_str(),
                  (program_ + "\\SslBridge.exe").c_str(), FALSE));
    ASSERT_TRUE(CopyFileA((std::string(STAND_IN_CLIENT_DIR) + "\\msoe.dll").c_str(),
                          (client_ + "\\msoe.dll").c_str(), FALSE));
    DeleteFileA(SettingsFile().c_str());  // the older file must be the one found
  }
  void TearDown() override {
    DeleteFileA(SettingsFile().c_str());
    for (const char* name :
         {"\\program\\winmail.exe", "\\program\\OE_Brindle.dll", "\\program\\SslBridge.exe",
          "\\program\\OE_Brindle.ini", "\\client\\msoe.dll", "\\client.log"})
      DeleteFileA((root_ + name).c_str());
    RemoveDirectoryA(program_.c_str());
    RemoveDirectoryA(client_.c_str());
    RemoveDirectoryA(root_.c_str());
    WSACleanup();
  }

  // Runs the program to its end; returns its exit code.
  DWORD RunProgram(const std::string& arguments) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWMINNOACTIVE;
    PROCESS_INFORMATION process{};
    std::string commandLine = "\"" + program_ + "\\winmail.exe\" " + arguments;
    if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        client_.c_str(), &startup, &process)) {
      ADD_FAILURE() << "cannot start the program: " << GetLastError();
      return 999;
    }
    DWORD code = 998;
    if (WaitForSingleObject(process.hProcess, kRunLimitMs) == WAIT_OBJECT_0)
      GetExitCodeProcess(process.hProcess, &code);
    else
      ADD_FAILURE() << "the program did not end", TerminateProcess(process.hProcess, 1);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
  }

  std::string root_, program_, client_;
};

TEST_F(WindowsProgramTest, HostsTheClientWithTunnelsUpAndEndsWithIt) {
  const uint16_t news = FreePort();
  std::ofstream(program_ + "\\OE_Brindle.ini", std::ios::binary)
      << "[NNTPServer]\r\nServerName=127.0.0.1\r\nSrcPort=" << news
      << "\r\nDestPort=119\r\nAutoStart=1\r\n";
  SetEnvironmentVariableA("STAND_IN_CLIENT_LOG", (root_ + "\\client.log").c_str());
  SetEnvironmentVariableA("STAND_IN_CLIENT_CONNECT", std::to_string(news).c_str());
  SetEnvironmentVariableA("BRINDLE_COMPANION_PORT", std::to_string(FreePort()).c_str());

  EXPECT_EQ(RunProgram("/newsurl:news://127.0.0.1/x"), 0u);

  const std::string seen = ReadFile(root_ + "\\client.log");
  EXPECT_THAT(seen, HasSubstr("flags=63;cmdline=/newsurl:news://127.0.0.1/x;show=7;"));
  EXPECT_THAT(seen, HasSubstr(";mutex=held;hooks=2;"));
  EXPECT_THAT(seen, HasSubstr(";tunnel=ok")) << "the tunnel was not listening while the client ran";
  EXPECT_FALSE(Listening(news)) << "the tunnel outlived the program";
  // The older file beside the program moved to the settings folder.
  EXPECT_THAT(ReadFile(SettingsFile()), HasSubstr("SrcPort=" + std::to_string(news) + "\r\n"));
  EXPECT_EQ(GetFileAttributesA((program_ + "\\OE_Brindle.ini").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(WindowsProgramTest, ReworksTheClientsReplyNoteOnceWithTheCaretAtTheMarker) {
  std::ofstream(program_ + "\\OE_Brindle.ini", std::ios::binary)
      << "[Miscellaneous]\r\nAutoCC=cc@example.org\r\n";
  SetEnvironmentVariableA("STAND_IN_CLIENT_LOG", (root_ + "\\client.log").c_str());
  SetEnvironmentVariableA("STAND_IN_CLIENT_REPLY", "1");
  SetEnvironmentVariableA("BRINDLE_COMPANION_PORT", std::to_string(FreePort()).c_str());

  EXPECT_EQ(RunProgram(""), 0u);
  SetEnvironmentVariableA("STAND_IN_CLIENT_REPLY", nullptr);

  // Bottom posting: quote (its old signature cut), the caret's empty line,
  // then the user's signature with its separator's space kept.
  const std::string seen = ReadFile(root_ + "\\client.log");
  EXPECT_THAT(seen, HasSubstr(";reply=----- Original Message -----<BR>From: a@b<BR>&gt; hello"
                              "<BR><BR><BR>--&nbsp;<BR>Sig;"));
  EXPECT_THAT(seen, HasSubstr(";calls=put_innerHTML|item:kursor|range.moveTo(marker)|"
                              "range.collapse(start)|range.select|marker.put_outerHTML:|"
                              "DiscardFrom(all)|;cc=cc@example.org"));
}

// The whole chain under Wine: the stand-in client fetches a signed mail
// through a POP3 tunnel with SSL=1, the real SslBridge.exe carries it over
// the system's TLS to a TLS POP3 server that tls_program_test.sh started, and
// the private CA comes from SslBridge.conf in the settings folder. Then the
// companion is killed from outside: the program starts it again, tells it the
// route, and the next fetch works as the first did.
TEST_F(WindowsProgramTest, FetchesMailOverTlsThroughTheRealCompanionAlsoOnceItIsBack) {
  const char* serverPort = std::getenv("TLS_POP3_PORT");
  if (serverPort == nullptr) GTEST_SKIP() << "needs the TLS POP3 server of tls_program_test.sh";
  ASSERT_TRUE(CopyFileA((std::string(HOOKS_DLL_DIR) + "\\SslBridge.exe").c_str(),
                        (program_ + "\\SslBridge.exe").c_str(), FALSE));
  const uint16_t pop3 = FreePort(), control = FreePort();
  std::ofstream(program_ + "\\OE_Brindle.ini", std::ios::binary)
      << "[POP3Server]\r\nServerName=localhost\r\nSrcPort=" << pop3 << "\r\nDestPort=" << serverPort
      << "\r\nAutoStart=1\r\nSSL=1\r\n";
  CreateDirectoryA(SettingsFolder().c_str(), nullptr);
  const std::string conf = SettingsFolder() + "\\SslBridge.conf";
  std::ofstream(conf, std::ios::binary) << "ca-file = " << std::getenv("TLS_POP3_CA") << "\r\n";
  SetEnvironmentVariableA("STAND_IN_CLIENT_LOG", (root_ + "\\client.log").c_str());
  SetEnvironmentVariableA("STAND_IN_CLIENT_CONNECT", nullptr);
  SetEnvironmentVariableA("STAND_IN_CLIENT_POP3", std::to_string(pop3).c_str());
  SetEnvironmentVariableA("STAND_IN_CLIENT_KILL_COMPANION", "1");
  SetEnvironmentVariableA("BRINDLE_COMPANION_PORT", std::to_string(control).c_str());

  EXPECT_EQ(RunProgram(""), 0u);
  SetEnvironmentVariableA("STAND_IN_CLIENT_POP3", nullptr);
  SetEnvironmentVariableA("STAND_IN_CLIENT_KILL_COMPANION", nullptr);
  DeleteFileA(conf.c_str());

  const std::string seen = ReadFile(root_ + "\\client.log");
  EXPECT_THAT(seen, HasSubstr(";pop3=+OK ready\r\n+OK 1 message\r\n")) << seen;
  EXPECT_THAT(seen, HasSubstr("Content-Type: multipart/mixed; protocol=")) << seen;
  EXPECT_THAT(seen, Not(HasSubstr("multipart/signed"))) << seen;
  EXPECT_THAT(seen, HasSubstr("+OK bye\r\n;killed=1;pop3again=")) << seen;
  const std::string again = seen.substr(std::min(seen.find(";pop3again="), seen.size()));
  EXPECT_THAT(again, HasSubstr("=+OK ready\r\n+OK 1 message\r\n")) << again;
  EXPECT_THAT(again, HasSubstr("Content-Type: multipart/mixed; protocol=")) << again;
  EXPECT_THAT(again, EndsWith("+OK bye\r\n")) << again;
  EXPECT_FALSE(Listening(pop3)) << "the tunnel outlived the program";
  EXPECT_FALSE(Listening(control)) << "the companion still listens";
  // The companion started again has been told to quit too; give it a bounded
  // moment to be gone.
  for (int i = 0; i < 100 && ProcessRunning("SslBridge.exe"); ++i) Sleep(100);
  EXPECT_FALSE(ProcessRunning("SslBridge.exe"));
}

}  // namespace
