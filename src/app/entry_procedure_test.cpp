#include "app/entry_procedure.h"

#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/log.h"
#include "core/message_box.h"

namespace brindle::app {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A system with an Outlook Express installed where App Paths says; every
// call that matters goes into `journal`.
class FakeSystem : public ClientHostSystem {
 public:
  std::vector<std::string> journal;
  std::set<std::string> windows;  // "class" or "class|caption"
  unsigned version = 5;
  std::map<std::string, std::string> registry;  // "key|value" -> data
  std::set<std::string> files;
  std::string currentFolder = "D:\\start";
  bool mutexHeld = false;
  bool clientSawMutex = false;

  bool WindowExists(std::string_view type, std::optional<std::string_view> caption) override {
    std::string key(type);
    if (caption) key += "|" + std::string(*caption);
    return windows.count(key) != 0;
  }
  void BringToFront(std::string_view type) override {
    journal.push_back("front " + std::string(type));
  }
  unsigned WindowsMajorVersion() override { return version; }
  std::string ProgramBaseName() override { return "brindle"; }
  std::optional<std::string> ReadRegistryString(RegistryRoot, std::string_view key,
                                                std::string_view value) override {
    auto it = registry.find(std::string(key) + "|" + std::string(value));
    if (it == registry.end()) return std::nullopt;
    return it->second;
  }
  bool WriteRegistryString(RegistryRoot root, std::string_view key, std::string_view value,
                           std::string_view data) override {
    journal.push_back(std::string(root == RegistryRoot::kCurrentUser ? "HKCU " : "HKLM ") +
                      std::string(key) + " " + std::string(value) + "=" + std::string(data));
    return true;
  }
  bool FileExists(const std::string& path) override { return files.count(path) != 0; }
  std::string CurrentFolder() override { return currentFolder; }
  bool SetCurrentFolder(const std::string& folder) override {
    currentFolder = folder;
    journal.push_back("cd " + folder);
    return true;
  }
  bool CreateClientMutex(std::string_view name) override {
    journal.push_back("mutex " + std::string(name));
    return mutexHeld = true;
  }
  bool ReleaseClientMutex() override {
    journal.push_back("release");
    mutexHeld = false;
    return true;
  }
  bool CloseClientMutex() override {
    journal.push_back("close");
    return true;
  }
  bool LoadHooksLibrary() override {
    journal.push_back("load hooks");
    return true;
  }
  void InstallMessageHooks() override { journal.push_back("install"); }
  void UninstallMessageHooks() override { journal.push_back("uninstall"); }
  void UnloadHooksLibrary() override { journal.push_back("unload hooks"); }
  std::optional<long> RunClient(const std::string& library, uint32_t flags,
                                const std::string& commandLine, int16_t show) override {
    journal.push_back("run " + library + " " + std::to_string(flags) + " [" + commandLine + "] " +
                      std::to_string(show));
    clientSawMutex = mutexHeld;
    return 0;
  }
};

class FakeForm : public MainForm {
 public:
  explicit FakeForm(std::vector<std::string>& journal) : journal_(journal) {}
  bool loads = true;
  Settings settings;
  bool Load() override {
    journal_.push_back("load form");
    return loads;
  }
  std::shared_ptr<const Settings> CurrentSettings() override {
    return std::make_shared<const Settings>(settings);
  }
  void CloseTunnels() override { journal_.push_back("close tunnels"); }

 private:
  std::vector<std::string>& journal_;
};

class EntryProcedureTest : public ::testing::Test {
 protected:
  EntryProcedureTest() : form(system.journal) {
    system.registry["SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\msimn.exe|Path"] =
        "C:\\Program Files\\Outlook Express;";
    system.files.insert("C:\\Program Files\\Outlook Express\\msoe.dll");
  }
  int Run() { return RunEntryProcedure(system, form, {"/mailurl:mailto:a@b.c \"x y\"", 3}); }

  FakeSystem system;
  FakeForm form;
  MessageBoxCapture boxes;
  log::Capture log;
};

TEST_F(EntryProcedureTest, RunsTheClientHoldingItsMutexAndShutsDownInOrder) {
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(system.journal,
              ElementsAre("load form", "cd C:\\Program Files\\Outlook Express",
                          "mutex OutlookExpress_InstanceMutex_101897", "load hooks", "install",
                          "run C:\\Program Files\\Outlook Express\\msoe.dll 63 "
                          "[/mailurl:mailto:a@b.c \"x y\"] 3",
                          "uninstall", "release", "close", "close tunnels", "unload hooks"));
  EXPECT_TRUE(system.clientSawMutex);
  EXPECT_THAT(boxes.Boxes(), IsEmpty());
  // The milestones, in order, one entry each.
  const std::string text = log.Text();
  size_t at = 0;
  for (const char* milestone :
       {"info: OE exited\n", "info: Mutex released\n", "info: Handle closed\n",
        "info: tunnels closed\n", "info: OEBR unloaded\n"}) {
    const size_t found = text.find(milestone, at);
    ASSERT_NE(found, std::string::npos) << milestone << " after " << at << " in\n" << text;
    at = found;
  }
}

TEST_F(EntryProcedureTest, LogoffAfterCloseForgetsTheIdentityOnlyWhenSet) {
  EXPECT_EQ(Run(), 0);
  for (const std::string& entry : system.journal) EXPECT_EQ(entry.find("HKCU"), std::string::npos);

  system.journal.clear();
  form.settings.intLogoffAfterClose = 1;
  EXPECT_EQ(Run(), 0);
  const std::vector<std::string> tail(system.journal.end() - 2, system.journal.end());
  EXPECT_THAT(tail,
              ElementsAre("HKCU Identities Last User ID={00000000-0000-0000-0000-000000000000}",
                          "HKCU Identities Start As={00000000-0000-0000-0000-000000000000}"));
}

TEST_F(EntryProcedureTest, RefusalsEndBeforeTheClientRuns) {
  struct Case {
    const char* name;
    std::function<void(FakeSystem&, FakeForm&)> arrange;
    int status;
    const char* boxText;  // nullptr: no box
    std::vector<std::string> journal;
  };
  const Case cases[] = {
      {"earlier instance",
       [](FakeSystem& s, FakeForm&) { s.windows.insert("ThunderRT6FormDC|OE Brindle"); },
       0,
       nullptr,
       {"front Outlook Express Browser Class"}},
      {"client running",
       [](FakeSystem& s, FakeForm&) { s.windows.insert("Outlook Express Browser Class"); },
       1,
       "Aby uruchomić OE Brindle, najpierw wyłącz Outlook Express.",
       {}},
      {"Windows Mail under another name",
       [](FakeSystem& s, FakeForm&) { s.version = 6; },
       1,
       "Zmień nazwę pliku wykonywalnego na winmail.exe",
       {}},
      {"companion missing",
       [](FakeSystem&, FakeForm& f) { f.loads = false; },
       1,
       nullptr,
       {"load form"}},
      {"no client library",
       [](FakeSystem& s, FakeForm&) { s.files.clear(); },
       1,
       "Can't find msoe.dll.",
       {"load form", "close tunnels"}},
  };
  for (const Case& c : cases) {
    FakeSystem s;
    s.registry = system.registry;
    s.files = system.files;
    FakeForm f(s.journal);
    c.arrange(s, f);
    MessageBoxCapture captured;
    EXPECT_EQ(RunEntryProcedure(s, f, {"", 1}), c.status) << c.name;
    EXPECT_EQ(s.journal, c.journal) << c.name;
    if (c.boxText == nullptr) {
      EXPECT_THAT(captured.Boxes(), IsEmpty()) << c.name;
    } else {
      ASSERT_EQ(captured.Boxes().size(), 1u) << c.name;
      EXPECT_EQ(captured.Boxes()[0].text, c.boxText) << c.name;
    }
  }
}

TEST(ClientLibrarySearch, TakesTheFirstOfItsFourPlaces) {
  const std::string appPaths =
      "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\msimn.exe|Path";
  const std::string programFiles = "Software\\Microsoft\\Windows\\CurrentVersion|ProgramFilesDir";
  FakeSystem s;
  s.registry[appPaths] = "E:\\OE\\";
  s.registry[programFiles] = "P:\\Progs";
  s.currentFolder = "D:\\here";
  const char* places[] = {"E:\\OE\\msoe.dll", "D:\\here\\msoe.dll",
                          "P:\\Progs\\Outlook Express\\msoe.dll",
                          "C:\\Program Files\\Outlook Express\\msoe.dll"};
  // Each place wins over every later one.
  for (int first = 3; first >= 0; --first) {
    s.files.insert(places[first]);
    s.currentFolder = "D:\\here";
    EXPECT_EQ(FindClientLibrary(s, false), places[first]);
  }
  EXPECT_EQ(s.currentFolder, "E:\\OE");
  // Windows Mail lives under the program files folder, whatever App Paths says.
  s.files.insert("P:\\Progs\\Windows Mail\\msoe.dll");
  EXPECT_EQ(FindClientLibrary(s, true), "P:\\Progs\\Windows Mail\\msoe.dll");
  EXPECT_EQ(s.currentFolder, "P:\\Progs\\Windows Mail");
  s.files.clear();
  EXPECT_EQ(FindClientLibrary(s, false), std::nullopt);
}

}  // namespace
}  // namespace brindle::app
