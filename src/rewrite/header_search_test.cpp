#include "rewrite/header_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace brindle {
namespace {

TEST(FindNoCase, FoldsAsciiLettersOnly) {
  EXPECT_EQ(FindNoCase("a\r\nx-mimeole: v", "X-MimeOLE: "), 3u);
  EXPECT_EQ(FindNoCase("X-MIMEOLE: v", "X-MimeOLE: ", 1), std::string::npos);
  // 0xA5 and 0xB9 are the two cases of one Polish letter; bytes above 127 stay exact.
  EXPECT_EQ(FindNoCase("\xA5", "\xB9"), std::string::npos);
  EXPECT_EQ(FindNoCase("ab", "abc"), std::string::npos);
}

// Random insertions into a small text, every search compared with the same
// search on a plain string that receives the same insertions. Pieces and
// needles share few letters so that matches often straddle the point where
// the edited part meets the untouched rest.
TEST(SplicedText, BehavesLikeAPlainStringUnderInsertions) {
  std::mt19937 random(7);
  auto pick = [&](int n) { return static_cast<size_t>(random() % n); };
  const std::string letters = "ab\r\n";
  auto word = [&](size_t length) {
    std::string w;
    for (size_t i = 0; i < length; ++i) w += letters[pick(letters.size())];
    return w;
  };
  for (int round = 0; round < 200; ++round) {
    const std::string original = word(20 + pick(20));
    std::string plain = original;
    SplicedText spliced(original);
    for (int step = 0; step < 6; ++step) {
      size_t at = pick(plain.size() + 1);
      std::string piece = word(1 + pick(4));
      plain.insert(at, piece);
      spliced.Insert(at, piece);
      ASSERT_EQ(spliced.size(), plain.size());
      for (int probe = 0; probe < 10; ++probe) {
        std::string needle = word(1 + pick(4));
        size_t from = pick(plain.size() + 2);
        ASSERT_EQ(spliced.Find(needle, from), plain.find(needle, from))
            << "round " << round << " needle " << needle << " from " << from;
      }
    }
    EXPECT_EQ(std::move(spliced).Join(), plain);
  }
}

}  // namespace
}  // namespace brindle
