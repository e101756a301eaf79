#include <gtest/gtest.h>

#include <string>

#include "rewrite/incoming_filters.h"

namespace brindle {
namespace {

std::string Mail(const std::string& subjectLine) {
  return "+OK 2214 octets\r\n"
         "Return-Path: <sender@example.cn>\r\n"
         "From: <sender@example.cn>\r\n" +
         subjectLine +
         "\r\n"
         "Content-Type: text/plain; charset=\"gb2312\"\r\n"
         "\r\n"
         "\xc4\xe3\xba\xc3\r\n"
         ".\r\n";
}

// `high` bytes of 0xB0 then plain letters, `length` bytes in all.
std::string Subject(int length, int high) {
  return std::string(high, '\xb0') + std::string(length - high, 'a');
}

struct ShareCase {
  const char* name;
  int16_t percentage;
  int16_t min;
  int length;
  int high;
  bool marked;
};

void PrintTo(const ShareCase& c, std::ostream* os) {
  *os << c.name;
}

class MarkAsianSpamShare : public testing::TestWithParam<ShareCase> {};

TEST_P(MarkAsianSpamShare, MarksOnlyWhenAComparisonHoldsStrictly) {
  const ShareCase& c = GetParam();
  const std::string subject = Subject(c.length, c.high);
  const std::string in = Mail("Subject: " + subject);
  const std::string out = MarkAsianSpam(std::string(in), c.percentage, c.min);
  EXPECT_EQ(out, c.marked ? Mail("Subject: [SPAM] " + subject) : in);
}

INSTANTIATE_TEST_SUITE_P(
    Thresholds, MarkAsianSpamShare,
    testing::Values(ShareCase{"ShareOverPercentage", 50, 10, 10, 6, true},
                    ShareCase{"ShareAndCountBelow", 50, 10, 40, 6, false},
                    ShareCase{"ShareEqualAndCountEqual", 50, 5, 10, 5, false},
                    ShareCase{"QuarterEqualInFloatingPoint", 25, 100, 8, 2, false},
                    ShareCase{"ThirdAboveThirtyThree", 33, 100, 3, 1, true},
                    ShareCase{"CountOneOverMinWithLowShare", 90, 5, 40, 6, true},
                    ShareCase{"CountAtMinWithLowShare", 90, 6, 40, 6, false},
                    ShareCase{"NothingHighWithNegativeMin", 90, -1, 12, 0, true},
                    ShareCase{"AllHighAtHundredPercent", 100, 50, 20, 20, false}),
    [](const testing::TestParamInfo<ShareCase>& info) { return info.param.name; });

TEST(MarkAsianSpam, CountsBytesFrom128Up) {
  // 127 is not a high byte, 128 is; only the value after "Subject: " counts.
  const std::string low = "\x7f\x7f", high = "\x80\x80";
  EXPECT_EQ(MarkAsianSpam(Mail("Subject: " + low + "ab"), 40, 10), Mail("Subject: " + low + "ab"));
  EXPECT_EQ(MarkAsianSpam(Mail("Subject: " + high + "ab"), 40, 10),
            Mail("Subject: [SPAM] " + high + "ab"));
}

TEST(MarkAsianSpam, EmptyOrMissingSubjectIsLeftAlone) {
  // An empty value is never marked, even where any count would be "over".
  EXPECT_EQ(MarkAsianSpam(Mail("Subject: "), -1, -1), Mail("Subject: "));
  EXPECT_EQ(MarkAsianSpam(Mail("subject: \xb0\xb0"), 10, 0), Mail("subject: \xb0\xb0"));
  EXPECT_EQ(MarkAsianSpam(Mail("Subject:\xb0\xb0"), 10, 0), Mail("Subject:\xb0\xb0"));
  // A subject that is never ended by a line end is no subject line.
  EXPECT_EQ(MarkAsianSpam("Subject: \xb0\xb0\xb0", 10, 0), "Subject: \xb0\xb0\xb0");
}

TEST(MarkAsianSpam, MarkedSubjectIsMarkedAgain) {
  const std::string once = MarkAsianSpam(Mail("Subject: \xb0\xb0\xb0\xb0"), 10, 0);
  EXPECT_EQ(MarkAsianSpam(std::string(once), 10, 0),
            Mail("Subject: [SPAM] [SPAM] \xb0\xb0\xb0\xb0"));
}

TEST(MarkAsianSpam, FirstSubjectAnywhereCounts) {
  // "X-Original-Subject: " contains "Subject: " and comes first.
  const std::string in = Mail("X-Original-Subject: \xb0\xb0\r\nSubject: plain");
  EXPECT_EQ(MarkAsianSpam(std::string(in), 10, 0),
            Mail("X-Original-Subject: [SPAM] \xb0\xb0\r\nSubject: plain"));
  const std::string inBody = "+OK\r\nFrom: a\r\n\r\nSubject: \xb0\r\n.\r\n";
  EXPECT_EQ(MarkAsianSpam(std::string(inBody), 10, 0),
            "+OK\r\nFrom: a\r\n\r\nSubject: [SPAM] \xb0\r\n.\r\n");
}

}  // namespace
}  // namespace brindle
