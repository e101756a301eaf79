// Saving the settings file on a machine shared with other users.
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "core/settings_files.h"

namespace brindle::ini {
namespace {

namespace fs = std::filesystem;

std::string Read(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

mode_t Mode(const fs::path& path) {
  struct stat st {};
  ::stat(path.c_str(), &st);
  return st.st_mode & 07777;
}

class SettingsSaveTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/brindle-save-XXXXXX";
    dir_ = mkdtemp(pattern);
  }
  void TearDown() override { fs::remove_all(dir_); }
  fs::path dir_;
};

TEST_F(SettingsSaveTest, AFirstFileIsTheUsersAloneAndALaterOneKeepsItsRights) {
  const fs::path ini = dir_ / "OE_Brindle.ini";
  ASSERT_TRUE(ReplaceFileAtomically(ini, "first").ok());
  EXPECT_EQ(Mode(ini), 0600u);
  ::chmod(ini.c_str(), 0640);
  ASSERT_TRUE(ReplaceFileAtomically(ini, "second").ok());
  EXPECT_EQ(Mode(ini), 0640u);
  EXPECT_EQ(Read(ini), "second");
}

TEST_F(SettingsSaveTest, ALinkPlantedAtTheTemporaryNameIsNotWrittenThrough) {
  const fs::path ini = dir_ / "OE_Brindle.ini";
  const fs::path victim = dir_ / "victim";
  std::ofstream(victim) << "untouched";
  fs::create_symlink(victim, dir_ / "OE_Brindle.ini.new");
  ASSERT_TRUE(ReplaceFileAtomically(ini, "settings").ok());
  EXPECT_EQ(Read(victim), "untouched");
  EXPECT_EQ(Read(ini), "settings");
  EXPECT_FALSE(fs::exists(fs::symlink_status(dir_ / "OE_Brindle.ini.new")));
}

TEST_F(SettingsSaveTest, AFailedSaveSaysWhyAndKeepsTheOldFile) {
  const fs::path ini = dir_ / "OE_Brindle.ini";
  ASSERT_TRUE(ReplaceFileAtomically(ini, "old").ok());
  fs::create_directory(dir_ / "OE_Brindle.ini.new");  // cannot be removed as a file
  Status saved = ReplaceFileAtomically(ini, "new");
  EXPECT_FALSE(saved.ok());
  EXPECT_NE(saved.message().find("OE_Brindle.ini.new"), std::string::npos) << saved.message();
  EXPECT_EQ(Read(ini), "old");
}

}  // namespace
}  // namespace brindle::ini
