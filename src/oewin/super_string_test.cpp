#include "oewin/super_string.h"

#include <gtest/gtest.h>

namespace brindle {
namespace {

TEST(CSuperStringTest, ReadBackRulesAroundLength) {
  CSuperString s;
  s.Text("head");
  s.Add("er\r\n");
  s.Add(".\r\n");
  EXPECT_EQ(s.Text(), "header\r\n.\r\n");
  EXPECT_EQ(s.TextRight(5), "\r\n.\r\n");
  // n equal to or above the length deliberately gives nothing.
  EXPECT_EQ(s.TextRight(s.Length()), "");
  EXPECT_EQ(s.TextRight(s.Length() + 1), "");
  EXPECT_EQ(s.TextLeft(s.Length() + 4), s.Text() + "    ");
  EXPECT_EQ(s.TextMid(2, 3), "ead");
  EXPECT_EQ(s.TextMid(s.Length(), 3), "\n  ");
}

TEST(CSuperStringTest, PieceExactlyAsLongAsTheAssumedRoomGrowsTheBuffer) {
  const int64_t unit = CSuperString::kGrowthUnit;
  CSuperString s;
  s.Add(std::string(10, 'a'));
  // Assumed room is unit - 10; a piece of exactly that size must grow.
  s.Add(std::string(unit - 10, 'b'));
  EXPECT_EQ(s.Length(), unit);
  EXPECT_EQ(static_cast<int64_t>(s.TextLeft(3 * unit).size()), 2 * unit);

  CSuperString t;
  t.Add(std::string(10, 'a'));
  t.Add(std::string(unit - 11, 'b'));  // one short: no growth
  EXPECT_EQ(static_cast<int64_t>(t.TextLeft(3 * unit).size()), unit);
}

TEST(CSuperStringTest, GrowthIsSizedFromThePieceNotTheShortfall) {
  const int64_t unit = CSuperString::kGrowthUnit;
  CSuperString s;
  s.Add(std::string(unit - 1, 'x'));  // fits: room is a whole unit
  s.Add(std::string(2 * unit + 5, 'y'));
  // One character of room is short by 2 units + 4, yet the growth is three
  // units, computed from the piece: 1 + 3 units in all.
  EXPECT_EQ(static_cast<int64_t>(s.TextLeft(10 * unit).size()), 4 * unit);
  EXPECT_EQ(s.TextRight(2), "yy");
}

TEST(CSuperStringTest, ManySmallAppendsKeepEveryByte) {
  CSuperString s;
  std::string expected;
  for (int i = 0; i < 200000; ++i) {
    std::string piece(static_cast<size_t>(i % 7), static_cast<char>('\x80' + i % 100));
    piece += "\r\n";
    s.Add(piece);
    expected += piece;
  }
  EXPECT_EQ(s.Text(), expected);
  s.Text("");
  EXPECT_EQ(s.Length(), 0);
  EXPECT_EQ(s.TextLeft(2), "  ");
}

}  // namespace
}  // namespace brindle
