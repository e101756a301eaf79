#include "rewrite/signature.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/log.h"
#include "rewrite/outgoing_headers.h"

namespace brindle {
namespace {

// Hands out the given numbers in turn (the last one repeatedly) and counts draws.
class ScriptedRandom : public RandomSource {
 public:
  explicit ScriptedRandom(std::vector<double> values) : values_(std::move(values)) {}
  double Next() override {
    double v = values_[std::min(draws, values_.size() - 1)];
    ++draws;
    return v;
  }
  size_t draws = 0;

 private:
  std::vector<double> values_;
};

std::string ReadTestData(const std::string& name) {
  std::ifstream in(std::string(BRINDLE_TEST_DATA_DIR) + "/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string Post(const std::string& from, const std::string& body) {
  return "From: " + from + "\r\nNewsgroups: pl.test\r\nSubject: t\r\n\r\n" + body + "\r\n.\r\n";
}

Settings WithRecord(int index, const std::string& email, const std::string& text,
                    uint8_t distance = 0) {
  Settings s;
  s.intISO = 0;
  s.signatures[index].email = email;
  s.signatures[index].text = text;
  s.signatures[index].Distance = distance;
  return s;
}

TEST(GetSender, ValueAfterColonAndOneBlank) {
  const std::string post = ReadTestData("news_post.txt");
  EXPECT_EQ(GetSender(post), "\"Marek Nowak\" <marek@example.net>");
  EXPECT_EQ(GetSender("Subject: x\r\n\r\nbody\r\n.\r\n"), "");
  EXPECT_EQ(GetSender("From:\r\n"), "");
}

TEST(AppendSignature, RecordChosenByAddressInAngleBrackets) {
  ScriptedRandom random({0.0});
  Settings s = WithRecord(7, "marek@example.net", "Marek");
  const std::string withSig = Post("\"Marek\" <marek@example.net>", "hi\r\n-- \r\nMarek");
  EXPECT_EQ(AppendSignature(Post("\"Marek\" <marek@example.net>", "hi"), s, random), withSig);
  const std::string misses[] = {"\"Marek\" <Marek@example.net>", "marek@example.net",
                                "\"marek@example.net\" <other@example.net>"};
  for (const std::string& from : misses) {
    EXPECT_EQ(AppendSignature(Post(from, "hi"), s, random), Post(from, "hi")) << from;
  }
  // Two records whose addresses both occur: the lower index wins, wherever
  // the address stands in the sender.
  s.signatures[2].email = "boss@example.org";
  s.signatures[2].text = "Boss";
  const std::string from = "\"Marek <marek@example.net>\" <boss@example.org>";
  EXPECT_EQ(AppendSignature(Post(from, "hi"), s, random), Post(from, "hi\r\n-- \r\nBoss"));
}

TEST(AppendSignature, DistanceAndEmptyLinesAtTheBodyEnd) {
  struct Case {
    const char* body;
    uint8_t distance;
    const char* expected;
  } cases[] = {
      {"text", 0, "text\r\n-- \r\nS"},
      {"text", 1, "text\r\n\r\n-- \r\nS"},
      {"text\r\n", 0, "text\r\n-- \r\nS"},  // one empty line is taken away
      {"text\r\n", 2, "text\r\n\r\n\r\n-- \r\nS"},
      {"text\r\n\r\n", 0, "text\r\n\r\n-- \r\nS"},  // two: one stays
      {"text\r\n\r\n\r\n", 1, "text\r\n\r\n\r\n\r\n-- \r\nS"},
  };
  ScriptedRandom random({0.0});
  for (const Case& c : cases) {
    Settings s = WithRecord(0, "a@b.c", "S", c.distance);
    EXPECT_EQ(AppendSignature(Post("<a@b.c>", c.body), s, random), Post("<a@b.c>", c.expected))
        << c.body << " distance " << int(c.distance);
  }
}

TEST(AppendSignature, IsoConversionTouchesTheSignatureOnly) {
  // windows-1250: a-ogonek s-acute z-acute, A-ogonek S-acute Z-acute, then l-stroke (same in both).
  const std::string letters = "\xB9\x9C\x9F\xA5\x8C\x8F\xB3";
  std::string converted = letters;
  ConvertSignatureISO(converted);
  EXPECT_EQ(converted, "\xB1\xB6\xBC\xA1\xA6\xAC\xB3");

  Settings s = WithRecord(0, "marek@example.net", "Pozdrawiam\r\n" + letters);
  s.intISO = 1;
  ScriptedRandom random({0.0});
  const std::string from = "<marek@example.net>";
  EXPECT_EQ(AppendSignature(Post(from, "Cze\x9C\xE6 " + letters), s, random),
            Post(from, "Cze\x9C\xE6 " + letters +
                           "\r\n-- \r\nPozdrawiam\r\n\xB1\xB6\xBC\xA1\xA6\xAC\xB3"));
}

TEST(AppendSignature, GuardsLeaveTheArticleAlone) {
  ScriptedRandom random({0.0});
  Settings s = WithRecord(0, "a@b.c", "S");
  log::Capture log;
  const std::string noFrom = "Subject: <a@b.c>\r\n\r\nbody\r\n.\r\n";
  EXPECT_EQ(AppendSignature(noFrom, s, random), noFrom);
  EXPECT_TRUE(log.Contains("From")) << log.Text();
  const std::string noDot = "From: <a@b.c>\r\n\r\nbody\r\n";
  EXPECT_EQ(AppendSignature(noDot, s, random), noDot);
  s.signatures[0].text.clear();
  EXPECT_EQ(AppendSignature(Post("<a@b.c>", "x"), s, random), Post("<a@b.c>", "x"));
}

TEST(RandomIndex, CoversZeroToUpperBound) {
  ScriptedRandom edges({0.0, 0.2499, 0.25, 0.999999, 1.0, -0.5});
  std::vector<int> got;
  for (int i = 0; i < 6; ++i) got.push_back(RandomIndex(3, edges));
  EXPECT_EQ(got, (std::vector<int>{0, 0, 1, 3, 3, 0}));

  std::vector<int> seen(5);
  for (int i = 0; i < 5000; ++i) {
    int index = RandomIndex(4, DefaultRandomSource());
    ASSERT_GE(index, 0);
    ASSERT_LE(index, 4);
    ++seen[index];
  }
  for (int count : seen) EXPECT_GT(count, 700);  // about 1000 each
}

class RandomSignatureFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("brindle_sig_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
            "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string File(const std::string& name, const std::string& content) {
    std::string path = (dir_ / name).string();
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }
  std::string Missing() const { return (dir_ / "missing.txt").string(); }

  Settings WithFiles(std::vector<std::string> files) {
    Settings s;
    s.intISO = 0;
    s.signatures[0].email = "a@b.c";
    s.signatures[0].text = "fixed text is not used";
    s.signatures[0].RandomSig = true;
    s.signatures[0].SigFile = std::move(files);
    return s;
  }
  std::string Signed(const std::string& signature) {
    return Post("<a@b.c>", "body\r\n-- \r\n" + signature);
  }

  std::filesystem::path dir_;
  const std::string unsigned_ = Post("<a@b.c>", "body");
};

TEST_F(RandomSignatureFiles, LinesEndingsAndTheFinalLineEnd) {
  struct Case {
    std::string content, signature;
  } cases[] = {
      {"one\r\ntwo \xB9\r\n", "one\r\ntwo \xB9"},
      {"one\ntwo", "one\r\ntwo"},  // LF ends, last line without end
      {"one\r\n\r\n", "one\r\n"},  // a trailing empty line stays
      {"\r\n", "\r\n"},            // one empty line: two characters, kept
      {"", "fallback"},            // empty file: the next attempt tries again
  };
  for (const Case& c : cases) {
    Settings s = WithFiles({File("sig.txt", c.content), File("fallback.txt", "fallback")});
    ScriptedRandom random({0.0, 0.9});
    EXPECT_EQ(AppendSignature(unsigned_, s, random), Signed(c.signature)) << c.content;
  }
}

TEST_F(RandomSignatureFiles, EmptySlotsAreRetriedMissingFilesNextAttempt) {
  Settings s = WithFiles({"", Missing(), "", File("good.txt", "Good")});
  // Slot 0 (empty, retried), slot 1 (missing file: the attempt fails), slot 3.
  ScriptedRandom random({0.1, 0.3, 0.9});
  EXPECT_EQ(AppendSignature(unsigned_, s, random), Signed("Good"));
  EXPECT_EQ(random.draws, 3u);
}

TEST_F(RandomSignatureFiles, NothingUsableLeavesTheArticleUnchanged) {
  log::Capture log;
  Settings empty = WithFiles({});
  ScriptedRandom random({0.0});
  EXPECT_EQ(AppendSignature(unsigned_, empty, random), unsigned_);
  EXPECT_EQ(random.draws, 0u);

  // Two empty slots: the first attempt picks up to twice the upper bound
  // plus one, and the pick count is not reset, so each of the other 1,000
  // attempts picks once.
  Settings blanks = WithFiles({"", ""});
  EXPECT_EQ(AppendSignature(unsigned_, blanks, random), unsigned_);
  EXPECT_EQ(random.draws, 3u + 1000u);

  Settings missing = WithFiles({Missing(), dir_.string()});
  ScriptedRandom alternating({0.0, 0.5, 0.0, 0.5});
  EXPECT_EQ(AppendSignature(unsigned_, missing, alternating), unsigned_);
  EXPECT_EQ(alternating.draws, 1001u);
  EXPECT_TRUE(log.Contains("a@b.c")) << log.Text();
}

TEST(NewsRewriting, FullOrderOnTheClientsArticle) {
  const std::string post = ReadTestData("news_post.txt");
  Settings s = WithRecord(0, "marek@example.net", "Marek \x9C", 1);
  s.intISO = 1;
  s.intXNewsreader = 1;
  s.strXNewsreader = "Brindle";
  s.newsHeaders[0] = {"X-Face", "From", "f"};
  ScriptedRandom random({0.0});
  std::string text = AppendSignature(post, s, random);
  text = CutReferences(std::move(text), 60);
  text = ChangeNewsHeaders(std::move(text), s);
  text = InsertNewsCustomHeaders(std::move(text), s);

  std::string expected = post;
  auto replace = [&](const std::string& from, const std::string& to) {
    size_t at = expected.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    expected.replace(at, from.size(), to);
  };
  replace("<marek@example.net>\r\n", "<marek@example.net>\r\nX-Face: f\r\n");
  replace("X-Newsreader: Microsoft Outlook Express 6.00.2900.3028\r\n",
          "X-Newsreader: Brindle\r\n");
  replace("References: <et0a1b$2k1$1@news.example.org> <et0c7f$9qd$1@news.example.org>\r\n",
          "References: <et0a1b$2k1$1@news.example.org>  \r\n");
  replace("Vim, od lat.\r\n.\r\n", "Vim, od lat.\r\n\r\n-- \r\nMarek \xB6\r\n.\r\n");
  EXPECT_EQ(text, expected);
}

}  // namespace
}  // namespace brindle
