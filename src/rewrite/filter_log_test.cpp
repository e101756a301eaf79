// The filter log: its line, its rotation, and reading its end back.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "rewrite/filter_log.h"
#include "rewrite/temp_folder_test.h"

namespace brindle {
namespace {

TEST(FilterLogTest, LineKeepsSixFieldsWhateverTheHeadersHold) {
  FilterLogEntry entry{"2026-11-23 15:40:02",
                       "POP3 1110 mail.example.org",
                       "<id\t1@x>",
                       "joe@spam.example",
                       "Tab\there\r\n" + std::string(100, 'z'),
                       {}};
  entry.changes.Add(DownloadStep::kSpammerList);
  entry.changes.Add(DownloadStep::kControlChars);
  const std::string line = FilterLogLine(entry);
  EXPECT_EQ(line,
            "2026-11-23 15:40:02\tPOP3 1110 mail.example.org\t<id 1@x>\tjoe@spam.example\t"
            "Tab here  " +
                std::string(70, 'z') + "...\tcontrol characters, spammer list\r\n");
  const auto back = ParseFilterLogLine(line);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->sender, "joe@spam.example");
  EXPECT_EQ(back->changes, entry.changes);
  EXPECT_FALSE(ParseFilterLogLine("a\tb\tc"));
  // A cut never splits a UTF-8 character.
  entry.subject = std::string(79, 'a') + "\xC5\x82" + "b";
  EXPECT_NE(FilterLogLine(entry).find(std::string(79, 'a') + "...\t"), std::string::npos);
}

TEST(FilterLogTest, RotatesAtTheLimitAndTheTailReachesIntoTheOldFile) {
  testing_support::TempFolder dir;
  const std::string path = dir.File("filtered.log");
  for (int i = 1; i <= 7; ++i) {
    ASSERT_TRUE(AppendFilterLog(path, "line " + std::to_string(i) + "\r\n", 22));
  }
  // 8 bytes a line, at most 22 a file: two lines a file, the older two kept aside.
  EXPECT_EQ(std::filesystem::file_size(path), 8u);
  EXPECT_EQ(std::filesystem::file_size(path + ".1"), 16u);
  EXPECT_EQ(FilterLogTail(path, 3), (std::vector<std::string>{"line 5", "line 6", "line 7"}));
  EXPECT_EQ(FilterLogTail(path, 9).size(), 3u);
  EXPECT_FALSE(AppendFilterLog(dir.File("missing/x.log"), "x\r\n"));
}

}  // namespace
}  // namespace brindle
