#include "rewrite/signature.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "core/log.h"
#include "rewrite/temp_folder_test.h"

namespace brindle {
namespace {

// Hands out the given numbers in turn (the last one repeatedly) and counts draws.
class ScriptedRandom : public RandomSource {
 public:
  explicit ScriptedRandom(std::vector<double> values) : values_(std::move(values)) {}
  double Next() override { return values_[std::min(draws++, values_.size() - 1)]; }
  size_t draws = 0;

 private:
  std::vector<double> values_;
};

std::string Post(const std::string& from, const std::string& body) {
  return "From: " + from + "\r\nNewsgroups: pl.test\r\nSubject: t\r\n\r\n" + body + "\r\n.\r\n";
}

TEST(AppendSignature, SenderRecordAndPlacement) {
  Settings s;
  s.intISO = 0;
  s.signatures[2] = {"Boss", "", "boss@example.org", 0, false, {}};
  s.signatures[7] = {"Marek", "", "marek@example.net", 1, false, {}};
  const std::string marek = "\"Marek Nowak\" <marek@example.net>";
  struct Case {
    std::string from, body, expected;
  } cases[] = {
      {marek, "text", "text\r\n\r\n-- \r\nMarek"},
      {marek, "text\r\n", "text\r\n\r\n-- \r\nMarek"},  // one empty line taken away
      {marek, "text\r\n\r\n", "text\r\n\r\n\r\n-- \r\nMarek"},
      {"<Marek@example.net>", "text", "text"},  // letter case matters
      {"marek@example.net", "text", "text"},    // only an address in brackets counts
      {"\"marek@example.net\" <x@y.z>", "text", "text"},
      // both addresses occur: the lower index wins, not the first in the sender
      {"\"Marek <marek@example.net>\" <boss@example.org>", "text", "text\r\n-- \r\nBoss"},
  };
  ScriptedRandom random({0.0});
  for (const Case& c : cases) {
    EXPECT_EQ(AppendSignature(Post(c.from, c.body), s, random), Post(c.from, c.expected))
        << c.from << " / " << c.body;
  }
  EXPECT_EQ(GetSender(Post(marek, "x")), marek);
}

TEST(AppendSignature, DistanceTwoAndIsoConversionOfTheSignatureOnly) {
  // windows-1250 a-ogonek s-acute z-acute A-ogonek S-acute Z-acute, and l-stroke (same in both).
  const std::string letters = "\xB9\x9C\x9F\xA5\x8C\x8F\xB3";
  Settings s;
  s.intISO = 1;
  s.signatures[0] = {"Pozdrawiam\r\n" + letters, "", "a@b.c", 2, false, {}};
  ScriptedRandom random({0.0});
  EXPECT_EQ(
      AppendSignature(Post("<a@b.c>", letters + "\r\n"), s, random),
      Post("<a@b.c>", letters + "\r\n\r\n\r\n-- \r\nPozdrawiam\r\n\xB1\xB6\xBC\xA1\xA6\xAC\xB3"));
}

TEST(AppendSignature, GuardsLeaveTheArticleAlone) {
  Settings s;
  s.signatures[0] = {"S", "", "a@b.c", 0, false, {}};
  ScriptedRandom random({0.0});
  log::Capture log;
  for (const std::string text :
       {"Subject: <a@b.c>\r\n\r\nbody\r\n.\r\n", "From: <a@b.c>\r\n\r\nb\r\n"}) {
    EXPECT_EQ(AppendSignature(std::string(text), s, random), text);
  }
  EXPECT_TRUE(log.Contains("From")) << log.Text();
}

TEST(RandomIndex, UniformOverZeroToUpperBound) {
  ScriptedRandom edges({0.0, 0.2499, 0.25, 0.999999, 1.0});
  std::vector<int> got;
  for (int i = 0; i < 5; ++i) got.push_back(RandomIndex(3, edges));
  EXPECT_EQ(got, (std::vector<int>{0, 0, 1, 3, 3}));
  std::vector<int> seen(5);
  for (int i = 0; i < 5000; ++i) ++seen.at(RandomIndex(4, DefaultRandomSource()));
  for (int count : seen) EXPECT_GT(count, 700);  // about 1000 each
}

class RandomSignatureFiles : public ::testing::Test {
 protected:
  std::string File(const std::string& name, const std::string& content) {
    std::string path = dir_.File(name);
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }
  Settings WithFiles(std::vector<std::string> files) {
    Settings s;
    s.intISO = 0;
    s.signatures[0] = {"fixed text is not used", "", "a@b.c", 0, true, std::move(files)};
    return s;
  }
  std::string Signed(const std::string& signature) {
    return Post("<a@b.c>", "body\r\n-- \r\n" + signature);
  }
  testing_support::TempFolder dir_;
  const std::string unsigned_ = Post("<a@b.c>", "body");
};

TEST_F(RandomSignatureFiles, LinesEmptySlotsAndFailedAttempts) {
  const struct {
    std::string content, signature;
  } cases[] = {
      {"one\r\ntwo \xB9\r\n", "one\r\ntwo \xB9"},
      {"one\ntwo", "one\r\ntwo"},  // LF ends, last line without end
      {"one\r\n\r\n", "one\r\n"},
      {"\r\n", "\r\n"},  // one empty line: two characters, kept
      {"", "good"},      // empty file: the next attempt tries again
  };
  for (const auto& c : cases) {
    // Slot 0 (empty, picked again), slot 1, then slot 3 on the next attempt.
    Settings s = WithFiles({"", File("sig.txt", c.content), "", File("good.txt", "good")});
    ScriptedRandom random({0.1, 0.3, 0.9});
    EXPECT_EQ(AppendSignature(std::string(unsigned_), s, random), Signed(c.signature)) << c.content;
  }
  Settings s = WithFiles({"", dir_.File("missing"), "", File("good.txt", "good")});
  ScriptedRandom random({0.1, 0.3, 0.9});
  EXPECT_EQ(AppendSignature(std::string(unsigned_), s, random), Signed("good"));
  EXPECT_EQ(random.draws, 3u);
}

TEST_F(RandomSignatureFiles, NothingUsableLeavesTheArticleUnchanged) {
  log::Capture log;
  ScriptedRandom random({0.0});
  EXPECT_EQ(AppendSignature(std::string(unsigned_), WithFiles({}), random), unsigned_);
  EXPECT_EQ(random.draws, 0u);
  // Empty slots: up to twice the upper bound plus one picks in the first
  // attempt; the count is not reset, so each of the other 1,000 picks once.
  EXPECT_EQ(AppendSignature(std::string(unsigned_), WithFiles({"", ""}), random), unsigned_);
  EXPECT_EQ(random.draws, 3u + 1000u);
  ScriptedRandom alternating({0.0, 0.5, 0.0, 0.5});
  Settings s = WithFiles({dir_.File("missing"), dir_.Path().string()});
  EXPECT_EQ(AppendSignature(std::string(unsigned_), s, alternating), unsigned_);
  EXPECT_EQ(alternating.draws, 1001u);
  EXPECT_TRUE(log.Contains("a@b.c")) << log.Text();
}

}  // namespace
}  // namespace brindle
