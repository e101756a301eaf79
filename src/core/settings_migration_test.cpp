#include "core/settings_migration.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/log.h"
#include "core/settings_defaults.h"
#include "core/settings_file.h"
#include "core/settings_paths.h"

namespace brindle {
namespace {

namespace fs = std::filesystem;

class TempFolder {
 public:
  TempFolder() {
    std::random_device rd;
    root_ = fs::temp_directory_path() / ("brindle_settings_" + std::to_string(rd()));
    fs::create_directories(root_);
  }
  ~TempFolder() {
    std::error_code ec;
    fs::remove_all(root_, ec);
  }
  std::string Path(const std::string& name = "") const {
    return name.empty() ? root_.string() : JoinPath(root_.string(), name);
  }

 private:
  fs::path root_;
};

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

const char kOldFile[] =
    "//old\r\nWrapText=60\r\nLanguage=PL\r\n[POP3Server]\r\nServerName=pop.old\r\nAutoStart=1\r\n";

TEST(SettingsMigrationTest, FileInTheSettingsFolderWinsOverOlderOnes) {
  TempFolder tmp;
  std::string settingsDir = tmp.Path("OE Brindle");
  fs::create_directory(settingsDir);
  WriteFile(JoinPath(settingsDir, "OE_Brindle.ini"), "WrapText=70\r\n");
  WriteFile(tmp.Path("OE_Brindle.ini"), kOldFile);
  WriteFile(JoinPath(settingsDir, "OE_Brindle.ini.new"), "an unfinished save");

  LoadedSettings found = FindAndLoadSettings({settingsDir, tmp.Path()}, kLangEnglish, nullptr);
  EXPECT_EQ(found.source, SettingsSource::kSettingsFolder);
  EXPECT_EQ(found.settings.intWrap, 70);
  EXPECT_EQ(found.sourceFile, JoinPath(settingsDir, "OE_Brindle.ini"));
  EXPECT_TRUE(fs::exists(tmp.Path("OE_Brindle.ini")));
  EXPECT_FALSE(fs::exists(JoinPath(settingsDir, "OE_Brindle.ini.new")));
}

TEST(SettingsMigrationTest, FileBesideTheProgramMovesIntoANewSettingsFolder) {
  TempFolder tmp;
  std::string settingsDir = JoinPath(tmp.Path("config"), "OE Brindle");  // neither exists yet
  std::string programDir = tmp.Path("program");
  fs::create_directory(programDir);
  WriteFile(JoinPath(programDir, "OE_Brindle.ini"), kOldFile);

  std::vector<TunnelRecord> sunk;
  LoadedSettings found =
      FindAndLoadSettings({settingsDir, programDir}, kLangEnglish,
                          [&](const TunnelRecord& r, const Settings&) { sunk.push_back(r); });
  EXPECT_EQ(found.source, SettingsSource::kProgramFolder);
  EXPECT_EQ(found.settings.intWrap, 60);
  EXPECT_EQ(found.settings.intLanguage, kLangPolish);
  ASSERT_EQ(sunk.size(), 1u);
  EXPECT_TRUE(sunk[0].AutoStart);

  std::string written = ReadFile(JoinPath(settingsDir, "OE_Brindle.ini"));
  EXPECT_EQ(written, SettingsFileText(found.settings));
  EXPECT_TRUE(written.starts_with("//old\r\n\r\n[Miscellaneous]\r\n"));
  EXPECT_FALSE(fs::exists(JoinPath(programDir, "OE_Brindle.ini")));
  EXPECT_EQ(found.settings.strSpammers, JoinPath(settingsDir, "spammers.txt"));

  // The next start reads the moved file and gets the same settings back.
  LoadedSettings next = FindAndLoadSettings({settingsDir, programDir}, kLangEnglish, nullptr);
  EXPECT_EQ(next.source, SettingsSource::kSettingsFolder);
  EXPECT_EQ(SettingsFileText(next.settings), written);
}

TEST(SettingsMigrationTest, OldestFileIsReadButTheUnderscoreNameIsDeleted) {
  TempFolder tmp;
  std::string settingsDir = tmp.Path("OE Brindle");
  WriteFile(tmp.Path("OE Bulwark.ini"), kOldFile);
  WriteFile(tmp.Path("OE_Bulwark.ini"), "WrapText=1\r\n");

  LoadedSettings found = FindAndLoadSettings({settingsDir, tmp.Path()}, kLangEnglish, nullptr);
  EXPECT_EQ(found.source, SettingsSource::kOldestName);
  EXPECT_EQ(found.settings.intWrap, 60);
  EXPECT_TRUE(fs::exists(JoinPath(settingsDir, "OE_Brindle.ini")));
  EXPECT_TRUE(fs::exists(tmp.Path("OE Bulwark.ini")));
  EXPECT_FALSE(fs::exists(tmp.Path("OE_Bulwark.ini")));
}

TEST(SettingsMigrationTest, WithoutASettingsFolderTheOldFileStaysAndIsRewritten) {
  TempFolder tmp;
  WriteFile(tmp.Path("OE_Brindle.ini"), kOldFile);
  LoadedSettings found = FindAndLoadSettings({"", tmp.Path()}, kLangEnglish, nullptr);
  EXPECT_EQ(found.source, SettingsSource::kProgramFolder);
  EXPECT_EQ(found.settings.strIniPath, "");
  EXPECT_EQ(ReadFile(tmp.Path("OE_Brindle.ini")), SettingsFileText(found.settings));
}

TEST(SettingsMigrationTest, NoFileLeavesTheDefaultsAndWritesNothing) {
  TempFolder tmp;
  std::string settingsDir = tmp.Path("OE Brindle");
  LoadedSettings found = FindAndLoadSettings({settingsDir, tmp.Path()}, kLangFrench, nullptr);
  EXPECT_EQ(found.source, SettingsSource::kDefaults);
  EXPECT_EQ(found.settings.intLanguage, kLangFrench);
  EXPECT_EQ(found.settings.strSpammerAddress, kDefaultSpammerAddress);
  EXPECT_TRUE(fs::is_directory(settingsDir));
  EXPECT_TRUE(fs::is_empty(settingsDir));
}

TEST(SettingsMigrationTest, AFailedSaveIsLoggedAndKeepsTheOldFile) {
  TempFolder tmp;
  // The settings folder's place is taken by a file: nothing can be written.
  WriteFile(tmp.Path("blocked"), "");
  std::string settingsDir = JoinPath(tmp.Path("blocked"), "OE Brindle");
  WriteFile(tmp.Path("OE_Brindle.ini"), kOldFile);

  log::Capture capture;
  LoadedSettings found = FindAndLoadSettings({settingsDir, tmp.Path()}, kLangEnglish, nullptr);
  EXPECT_EQ(found.settings.intWrap, 60);
  EXPECT_TRUE(fs::exists(tmp.Path("OE_Brindle.ini")));
  EXPECT_TRUE(capture.Contains("cannot create the settings folder"));
  EXPECT_FALSE(SaveSettings2Ini(found.settings).ok());
}

TEST(SettingsMigrationTest, AStoppedLoadMovesNothing) {
  TempFolder tmp;
  std::string settingsDir = tmp.Path("OE Brindle");
  WriteFile(tmp.Path("OE_Brindle.ini"), kOldFile);
  std::atomic<bool> stop{true};
  LoadedSettings found =
      FindAndLoadSettings({settingsDir, tmp.Path()}, kLangEnglish, nullptr, &stop);
  EXPECT_TRUE(found.stopped);
  EXPECT_FALSE(found.Migrated());
  EXPECT_EQ(ReadFile(tmp.Path("OE_Brindle.ini")), kOldFile);
  EXPECT_FALSE(fs::exists(JoinPath(settingsDir, "OE_Brindle.ini")));
}

TEST(SettingsMigrationTest, SavingReplacesTheFileWholeAndLeavesNoTemporary) {
  TempFolder tmp;
  Settings s = DefaultSettings(tmp.Path(), kLangEnglish);
  s.strXMailer = "\xb9\xe6 mailer";
  WriteFile(s.strIniPath, std::string(100000, 'x'));  // longer than the new file
  WriteFile(s.strIniPath + ".new", "left by a save that was killed");
  ASSERT_TRUE(SaveSettings2Ini(s).ok());
  EXPECT_EQ(ReadFile(s.strIniPath), SettingsFileText(s));
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(tmp.Path()))
    names.push_back(e.path().filename().string());
  EXPECT_EQ(names, std::vector<std::string>{"OE_Brindle.ini"});
}

TEST(SettingsDefaultsTest, WindowColourTextBecomesSixHexDigits) {
  EXPECT_EQ(ColourHexFromRgbText("255 128 0"), "FF8000");
  EXPECT_EQ(ColourHexFromRgbText("0 0 10"), "00000A");
  EXPECT_EQ(ColourHexFromRgbText("256 0 0"), "FFFFFF");
  EXPECT_EQ(ColourHexFromRgbText("12 34"), "FFFFFF");
  EXPECT_EQ(ColourHexFromRgbText("1 2 3 4"), "FFFFFF");
  EXPECT_EQ(ColourHexFromRgbText(""), "FFFFFF");
}

}  // namespace
}  // namespace brindle
