// The two tools as a user's editor runs them: real processes, bytes in
// through standard input, bytes out through standard output.
#include <gtest/gtest.h>
#include <unistd.h>

#include <sys/wait.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

struct ToolRun {
  int status = -1;
  std::string out;
  std::string err;
};

std::string ReadFile(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteFile(const fs::path& p, const std::string& bytes) {
  std::ofstream(p, std::ios::binary) << bytes;
}

class ToolsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("brindle_tools_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  // args are put on the shell command line as they are (tests quote them).
  ToolRun Exec(const std::string& tool, const std::string& args, const std::string& input) {
    WriteFile(dir_ / "in", input);
    const std::string cmd = "'" + tool + "' " + args + " < '" + (dir_ / "in").string() + "' > '" +
                            (dir_ / "out").string() + "' 2> '" + (dir_ / "err").string() + "'";
    ToolRun r;
    const int raw = std::system(cmd.c_str());
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    r.out = ReadFile(dir_ / "out");
    r.err = ReadFile(dir_ / "err");
    return r;
  }

  fs::path dir_;
};

std::string ToLf(const std::string& crlf) {
  std::string lf;
  for (size_t i = 0; i < crlf.size(); ++i) {
    if (crlf.compare(i, 2, "\r\n") != 0) lf.push_back(crlf[i]);
  }
  return lf;
}

size_t Count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

TEST_F(ToolsTest, RotIsBinarySafeAcrossChunksAndDecodesWithTheNegativeShift) {
  std::string input;
  for (int i = 0; i < 200000; ++i) input.push_back(static_cast<char>(i * 7 % 256));
  const ToolRun coded = Exec(BRINDLE_ROT_TOOL, "5", input);
  ASSERT_EQ(coded.status, 0) << coded.err;
  ASSERT_EQ(coded.out.size(), input.size());
  EXPECT_NE(coded.out, input);
  const ToolRun back = Exec(BRINDLE_ROT_TOOL, "-5", coded.out);
  EXPECT_EQ(back.out, input);
}

TEST_F(ToolsTest, RotShiftArgumentFollowsTheShiftBoxRules) {
  EXPECT_EQ(Exec(BRINDLE_ROT_TOOL, "", "Zebra\r\n").out, "Mroen\r\n");  // 13 by default
  EXPECT_EQ(Exec(BRINDLE_ROT_TOOL, "1abc", "Zebra").out, "Afcsb");
  const ToolRun extra = Exec(BRINDLE_ROT_TOOL, "1 2", "x");
  EXPECT_NE(extra.status, 0);
  EXPECT_NE(extra.err.find("too many"), std::string::npos);
  const ToolRun help = Exec(BRINDLE_ROT_TOOL, "--help", "");
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("leading number"), std::string::npos);
}

TEST_F(ToolsTest, QuoteFixAnswersInTheLineEndsItWasGiven) {
  const std::string crlf = ReadFile(fs::path(BRINDLE_TEST_DATA_DIR) / "reply_editor_text.txt");
  const std::string dirArg = "--settings-dir '" + dir_.string() + "'";
  const ToolRun r1 = Exec(BRINDLE_QUOTEFIX_TOOL, "--subject 'Re: spotkanie' " + dirArg, crlf);
  ASSERT_EQ(r1.status, 0) << r1.err;
  EXPECT_EQ(Count(r1.out, "###kursor###"), 1u);
  EXPECT_EQ(Count(r1.out, "\n"), Count(r1.out, "\r\n"));

  const ToolRun r2 = Exec(BRINDLE_QUOTEFIX_TOOL, "--subject 'Re: spotkanie' " + dirArg, ToLf(crlf));
  ASSERT_EQ(r2.status, 0) << r2.err;
  EXPECT_EQ(Count(r2.out, "\r"), 0u);
  EXPECT_EQ(r2.out, ToLf(r1.out));
}

TEST_F(ToolsTest, QuoteFixReadsTheSettingsFileAndTheOverrides) {
  const std::string reply =
      "\r\n-- \r\nMarek\r\n----- Original Message -----\r\n"
      "From: \"Jan Kowalski\" <jan@example.org>\r\nSubject: x\r\n\r\n"
      "Body line\r\n-- \r\nJan\r\n";
  WriteFile(dir_ / "OE_Brindle.ini",
            "[Miscellaneous]\r\nBottomPosting=0\r\n[NewsQuoteHeader]\r\nLines=1\r\n"
            "%n wrote:\r\nChangeQuoteHeader=1\r\n");
  const std::string dirArg = " --settings-dir '" + dir_.string() + "'";

  const ToolRun top = Exec(BRINDLE_QUOTEFIX_TOOL, "--subject 'RE: x' --news" + dirArg, reply);
  ASSERT_EQ(top.status, 0) << top.err;
  EXPECT_EQ(top.out.rfind("###kursor###\r\n", 0), 0u);
  EXPECT_NE(top.out.find("Jan Kowalski wrote:\r\n> Body line"), std::string::npos);

  const ToolRun bottom = Exec(BRINDLE_QUOTEFIX_TOOL,
                              "--subject 'RE: x' --mail --bottom --strip-marker" + dirArg, reply);
  EXPECT_EQ(bottom.out.rfind("----- Original Message", 0), 0u);  // mail keeps the block
  EXPECT_EQ(Count(bottom.out, "###kursor###"), 0u);

  WriteFile(dir_ / "OE_Brindle.ini", "[Miscellaneous]\r\nQuoteFix=0\r\n");
  EXPECT_EQ(Exec(BRINDLE_QUOTEFIX_TOOL, "--subject 'Re: x'" + dirArg, reply).out, reply);
}

TEST_F(ToolsTest, QuoteFixRefusesBadArguments) {
  for (const char* args :
       {"", "--subject", "--subject x --sideways", "--subject x --settings-dir"}) {
    const ToolRun r = Exec(BRINDLE_QUOTEFIX_TOOL, args, "text");
    EXPECT_EQ(r.status, 2) << args;
    EXPECT_NE(r.err.find("brindle-quotefix:"), std::string::npos) << args;
    EXPECT_TRUE(r.out.empty()) << args;
  }
  const ToolRun missing = Exec(BRINDLE_QUOTEFIX_TOOL,
                               "--subject x --settings-dir '" + (dir_ / "nope").string() + "'", "");
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.err.find("not found"), std::string::npos);
  EXPECT_EQ(Exec(BRINDLE_QUOTEFIX_TOOL, "--help", "").status, 0);
}

}  // namespace
