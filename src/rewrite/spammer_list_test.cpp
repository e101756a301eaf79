// The spammer list: which senders it matches, what it makes of bad lines,
// and the file behind it changing under a running program.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "core/log.h"
#include "rewrite/spammer_list.h"
#include "rewrite/spammer_list_file.h"
#include "rewrite/temp_folder_test.h"

namespace brindle {
namespace {

TEST(SpammerListTest, ExactDomainAndPatternEntriesIgnoringCase) {
  const SpammerList list = SpammerList::Parse(
      "\xEF\xBB\xBF# offers\r\n"
      "  Joe@Example.COM  \r\n"
      "\r\n"
      "@Spam.example\n"
      "sale?*@*.biz\n"
      "*bulk*\n"
      "news-*\n");
  EXPECT_EQ(list.Size(), 5u);
  for (const char* hit : {"joe@example.com", "JOE@EXAMPLE.com", "anyone@spam.example",
                          "sales@shop.biz", "x@BULKmail.org", "news-daily@x.org"}) {
    EXPECT_TRUE(list.Matches(hit)) << hit;
  }
  for (const char* miss : {"joe@example.org", "jo@example.com", "a@sub.spam.example",
                           "sale@shop.biz", "sales@shop.bizz", "news@x.org", "", "# offers"}) {
    EXPECT_FALSE(list.Matches(miss)) << miss;
  }
}

TEST(SpammerListTest, BadLinesAreSkippedWithTheirNumbers) {
  std::vector<SpammerListProblem> problems;
  const SpammerList list = SpammerList::Parse(
      "ok@example.com\njoe smith@example.com\nexample.com\na@b@c\njoe@\n*@*\n@\n" +
          std::string(400, 'a') + "@x\nnul\x01@x\nlast@example.com",
      &problems);
  EXPECT_EQ(list.Size(), 2u);
  EXPECT_TRUE(list.Matches("last@example.com"));
  std::vector<size_t> lines;
  for (const auto& p : problems) lines.push_back(p.line);
  EXPECT_EQ(lines, (std::vector<size_t>{2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(problems[0].text, "joe smith@example.com");
}

// The list finds patterns through their literal start or end; any pattern
// it fails to try would be a sender let through. A plain scan is the judge.
bool Naive(std::string_view p, std::string_view t) {
  if (p.empty()) return t.empty();
  if (p[0] == '*') return Naive(p.substr(1), t) || (!t.empty() && Naive(p, t.substr(1)));
  return !t.empty() && (p[0] == '?' || p[0] == t[0]) && Naive(p.substr(1), t.substr(1));
}

TEST(SpammerListTest, IndexedPatternsAgreeWithAPlainScan) {
  std::mt19937 random(7);
  auto word = [&](size_t max, const char* alphabet) {
    std::string w(1 + random() % max, ' ');
    for (char& c : w) c = alphabet[random() % std::strlen(alphabet)];
    return w;
  };
  std::vector<std::string> patterns;
  std::string file;
  for (int i = 0; i < 3000; ++i) {
    std::string p = word(6, "ab*?@.");
    if (!SpammerList::EntryProblem(p) && p.find_first_of("*?") != std::string::npos) {
      patterns.push_back(p);
      file += p + "\n";
    }
  }
  const SpammerList list = SpammerList::Parse(file);
  for (int i = 0; i < 3000; ++i) {
    const std::string mailbox = word(8, "ab@.");
    bool expected = false;
    for (const auto& p : patterns) expected = expected || Naive(p, mailbox);
    ASSERT_EQ(list.Matches(mailbox), expected) << mailbox;
  }
}

class SpammerListFileTest : public ::testing::Test {
 protected:
  void Write(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }
  std::string Read() {
    std::ifstream in(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  testing_support::TempFolder dir_;
  std::string path_ = dir_.File("spammers.txt");
};

TEST_F(SpammerListFileTest, FollowsTheFileAndReportsABadLineOnce) {
  log::Capture log;
  SpammerListFile file;
  EXPECT_FALSE(file.Refresh(path_));  // missing: an empty list, nothing to say
  EXPECT_TRUE(file.Current()->Empty());
  EXPECT_EQ(log.Text(), "");

  Write("a@x.org\nnot an entry\n");
  EXPECT_TRUE(file.Refresh(path_));
  EXPECT_TRUE(file.Current()->Matches("a@x.org"));
  EXPECT_FALSE(file.Refresh(path_));  // unchanged: not read again
  Write("a@x.org\nnot an entry\nb@x.org\n");
  EXPECT_TRUE(file.Refresh(path_));
  EXPECT_TRUE(file.Current()->Matches("b@x.org"));
  EXPECT_EQ(log.Text().find("line 2 skipped"), log.Text().rfind("line 2 skipped"));

  const auto before = file.Current();
  std::filesystem::remove(path_);
  EXPECT_TRUE(file.Refresh(path_));
  EXPECT_TRUE(file.Current()->Empty());
  EXPECT_TRUE(before->Matches("a@x.org"));  // a message still being filtered keeps its list

  // Another path (the setting changed) is read at once.
  const std::string other = dir_.File("other.txt");
  std::ofstream(other, std::ios::binary) << "c@x.org\n";
  EXPECT_TRUE(file.Refresh(other));
  EXPECT_TRUE(file.Current()->Matches("c@x.org"));
}

// Tests run as root, for whom no file mode forbids a read: a folder in the
// list's place is what cannot be read here.
TEST_F(SpammerListFileTest, AnUnreadableListIsSaidOnceAndOutlived) {
  log::Capture log;
  auto warnings = [&] {
    size_t n = 0;
    for (size_t at = 0; (at = log.Text().find("cannot be read", at)) != std::string::npos; ++at)
      ++n;
    return n;
  };
  std::filesystem::create_directory(path_);
  SpammerListFile file;
  file.Refresh(path_);
  file.Refresh(path_);
  EXPECT_TRUE(file.Current()->Empty());
  EXPECT_EQ(warnings(), 1u);

  std::filesystem::remove(path_);
  Write("a@x.org\n");
  EXPECT_TRUE(file.Refresh(path_));
  EXPECT_TRUE(file.Current()->Matches("a@x.org"));

  // Once read, a list that turns unreadable keeps what it held.
  std::filesystem::remove(path_);
  std::filesystem::create_directory(path_);
  EXPECT_FALSE(file.Refresh(path_));
  EXPECT_TRUE(file.Current()->Matches("a@x.org"));
  EXPECT_EQ(warnings(), 2u);
}

TEST_F(SpammerListFileTest, AddingKeepsTheFileAndSkipsWhatIsListed) {
  EXPECT_EQ(AddSpammer(path_, "first@x.org"), AddSpammerResult::kAdded);  // creates the file
  EXPECT_EQ(Read(), "first@x.org\r\n");
  Write("# mine\nold@x.org\n@spam.example");  // LF lines, no final line end
  SpammerListFile file;
  file.Refresh(path_);
  EXPECT_EQ(AddSpammer(path_, " New@X.org "), AddSpammerResult::kAdded);
  EXPECT_EQ(Read(), "# mine\nold@x.org\n@spam.example\nNew@X.org\n");
  EXPECT_EQ(AddSpammer(path_, "new@x.org"), AddSpammerResult::kAlreadyListed);
  EXPECT_EQ(AddSpammer(path_, "who@spam.example"), AddSpammerResult::kAlreadyListed);
  EXPECT_EQ(AddSpammer(path_, "@SPAM.example"), AddSpammerResult::kAlreadyListed);
  EXPECT_EQ(AddSpammer(path_, "two words@x.org"), AddSpammerResult::kNotAnEntry);
  EXPECT_EQ(AddSpammer(dir_.File("no/such.txt"), "a@x.org"), AddSpammerResult::kNotSaved);
  EXPECT_TRUE(file.Refresh(path_));  // the running list sees the addition
  EXPECT_TRUE(file.Current()->Matches("new@x.org"));
}

}  // namespace
}  // namespace brindle
