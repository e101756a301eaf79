#include <gtest/gtest.h>

#include <string>

#include "rewrite/incoming_filters.h"

namespace brindle {
namespace {

constexpr char kNbsp = static_cast<char>(160);

std::string Article(const std::string& body) {
  return "220 912 <uu1@news.example.org> article\r\n"
         "From: \"Zbyszek\" <zb@example.pl>\r\n"
         "Newsgroups: pl.test\r\n"
         "Subject: za\xb3\xb9\x63znik\r\n"
         "\r\n"
         "W za\xb3\xb9\x63zniku:\r\n"
         "\r\n" +
         body + ".\r\n";
}

// A uuencoded block of a short text file, its last data line being `last`.
std::string Block(const std::string& mode, const std::string& last,
                  const std::string& name = "a.txt") {
  return "begin " + mode + " " + name + "\r\n" +
         "M5&AI<R!I<R!A('1E<W0@;V8@=75E;F-O9&EN9R!A;F0@:70@:&%S(&UO\r\n"
         "%<F4*\r\n" +
         last + "\r\nend\r\n";
}

std::string Disarmed(std::string block) {
  block[5] = kNbsp;
  return block;
}

struct BeginCase {
  const char* name;
  std::string body;
  std::string expected;  // empty: unchanged
};

void PrintTo(const BeginCase& c, std::ostream* os) {
  *os << c.name;
}

class FilterBeginBlocks : public testing::TestWithParam<BeginCase> {};

TEST_P(FilterBeginBlocks, DisarmsOnlyMalformedBlocks) {
  const BeginCase& c = GetParam();
  EXPECT_EQ(FilterBegin(Article(c.body)), Article(c.expected.empty() ? c.body : c.expected));
}

const std::string kNoEnd = "begin 644 b.txt\r\nM5&AI<R!I<R!A\r\n";

INSTANTIATE_TEST_SUITE_P(
    Cases, FilterBeginBlocks,
    testing::Values(BeginCase{"GraveAccentEnd", Block("644", "`"), ""},
                    BeginCase{"BlankEnd", Block("755", " "), ""},
                    BeginCase{"EmptyLineEnd", Block("600", ""), ""},
                    BeginCase{"NoEndLine", kNoEnd, Disarmed(kNoEnd)},
                    BeginCase{"TwoDigitModeWithEnd", Block("64", "`"), Disarmed(Block("64", "`"))},
                    BeginCase{"NoModeAtAll", "begin  x\r\n", Disarmed("begin  x\r\n")},
                    BeginCase{"LetterAfterBegin", "begin foo\r\nno end here\r\n", ""},
                    BeginCase{"EightIsNotOctal", "begin 648 x\r\n", ""},
                    BeginCase{"LetterInMode", "begin 6x4 x\r\n", ""},
                    BeginCase{"ModeWithoutNameNoEnd", "begin 644\r\n", Disarmed("begin 644\r\n")},
                    BeginCase{"EndWithoutLastDataLine", "begin 644 x\r\nend\r\n",
                              Disarmed("begin 644 x\r\nend\r\n")},
                    BeginCase{"CaseSensitive", "Begin 64 x\r\nBEGIN 64 x\r\n", ""},
                    // An end line before the begin line belongs to an earlier block.
                    BeginCase{"EndLineOfEarlierBlockOnly", Block("644", "`") + kNoEnd,
                              Block("644", "`") + Disarmed(kNoEnd)},
                    // The end position of the first block stays remembered, but begin
                    // lines after it are checked on their own.
                    BeginCase{"StaleEndPositionIgnored", Block("644", "`") + kNoEnd + kNoEnd,
                              Block("644", "`") + Disarmed(kNoEnd) + Disarmed(kNoEnd)},
                    // A form-B end line must not be reused for a later block either.
                    BeginCase{"BlankEndNotReused", Block("644", " ") + kNoEnd,
                              Block("644", " ") + Disarmed(kNoEnd)},
                    // Lines inside a well-formed block are its data, even "begin 64 ".
                    BeginCase{"BeginInsideBlockSkipped",
                              "begin 644 a\r\nM5&AI\r\nbegin 64 x\r\n`\r\nend\r\n", ""},
                    // The grave-accent form is tried first wherever it lies, so the first
                    // block reaches to the end of the third and the second is skipped.
                    BeginCase{"FormsTriedInOrderNotByDistance",
                              Block("644", "") + "begin 64 x\r\n" + Block("644", "`"), ""},
                    BeginCase{"NearestFormWhenOnlyOneKind",
                              Block("644", "") + "begin 64 x\r\n" + Block("644", ""),
                              Block("644", "") + Disarmed("begin 64 x\r\n") + Block("644", "")}),
    [](const testing::TestParamInfo<BeginCase>& info) { return info.param.name; });

TEST(FilterBegin, DoubledCarriageReturnBeforeBeginIsALineEnd) {
  // The fix comes first, so the begin line it makes is checked too.
  EXPECT_EQ(FilterBegin("x\r\rbegin 64 y\r\r\rbegin 644 z\r\n`\r\nend\r\n.\r\n"),
            "x\r\nbegin\xa0"
            "64 y\r\r\nbegin 644 z\r\n`\r\nend\r\n.\r\n");
  // Only before "begin ": other doubled carriage returns stay.
  EXPECT_EQ(FilterBegin("a\r\rb\r\rbeginning\r\n.\r\n"), "a\r\rb\r\rbeginning\r\n.\r\n");
}

TEST(FilterBegin, BeginLineMustFollowALineEnd) {
  EXPECT_EQ(FilterBegin("begin 64 x\r\n.\r\n"), "begin 64 x\r\n.\r\n");
  EXPECT_EQ(FilterBegin("x\nbegin 64 x\r\n.\r\n"), "x\nbegin 64 x\r\n.\r\n");
  // Cut off inside the mode: no third character, so no begin line.
  EXPECT_EQ(FilterBegin("x\r\nbegin 64"), "x\r\nbegin 64");
  EXPECT_EQ(FilterBegin("x\r\nbegin 64 "),
            "x\r\nbegin\xa0"
            "64 ");
}

TEST(FilterBegin, LargeArticlesWithManyBeginLines) {
  // Far beyond 16-bit positions; many begin lines sharing one end line far
  // away are one block, and many without any end line are all disarmed.
  std::string shared;
  std::string none;
  std::string noneDisarmed;
  for (int i = 0; i < 20000; ++i) {
    shared += "begin 644 part" + std::to_string(i) + "\r\nM5&AI\r\n";
    none += "begin 644 f" + std::to_string(i) + "\r\n";
    noneDisarmed += Disarmed("begin 644 f" + std::to_string(i) + "\r\n");
  }
  shared += "`\r\nend\r\n";
  ASSERT_GT(shared.size(), 100000u);
  EXPECT_EQ(FilterBegin(Article(shared)), Article(shared));
  EXPECT_EQ(FilterBegin(Article(none)), Article(noneDisarmed));
}

}  // namespace
}  // namespace brindle
