#include "oewin/rot.h"

#include <gtest/gtest.h>

namespace brindle {
namespace {

std::string AllBytes() {
  std::string s;
  for (int c = 0; c < 256; ++c) s.push_back(static_cast<char>(c));
  return s;
}

TEST(RotTest, ShiftsLettersOnly) {
  EXPECT_EQ(rotate("Zebra", 1), "Afcsb");
  EXPECT_EQ(rotate("Afcsb", -1), "Zebra");
  EXPECT_EQ(rotate("Hello, World!", 13), "Uryyb, Jbeyq!");
  EXPECT_EQ(rotate("abc xyz ABC XYZ", -3), "xyz uvw XYZ UVW");
  // Digits, punctuation, line ends and the code page's accented letters stay.
  const std::string other = "0123456789 .,;!?\r\n\t \xb1\xea\xe6\xf3\x9c\xbf\x9f\xa3\xc4\xd6\xff";
  for (int n : {1, 13, -7, 25}) EXPECT_EQ(rotate(other, n), other) << n;
}

TEST(RotTest, ShiftArithmetic) {
  const std::string all = AllBytes();
  EXPECT_EQ(rotate(rotate(all, 13), 13), all);
  for (int64_t n : {0, 26, 52, -26, 2600}) EXPECT_EQ(rotate(all, n), all) << n;
  EXPECT_EQ(rotate(all, 27), rotate(all, 1));
  EXPECT_EQ(rotate(all, -29), rotate(all, -3));  // the remainder keeps the sign
  EXPECT_EQ(rotate(all, 2000000000), rotate(all, 24));
}

TEST(RotTest, ShiftTextAsTheEncodeButtonReadsIt) {
  struct Case {
    const char* text;
    int32_t shift;
  };
  const Case cases[] = {
      {"13", 13},
      {"  7 places", 7},
      {"-3", -3},
      {"+4", 4},
      {"abc", 0},
      {"", 0},
      {"-", 0},
      {".5", 0},
      {"2.5", 2},
      {"3.5", 4},
      {"-2.5", -2},
      {"2.51", 3},
      {"1e3", 1000},  // read like every number the user types: with its exponent
      {"2000000000", 2000000000},
      {"1999999999.5", 2000000000},
      {"99999999999999999999999", 2000000000},
      {"-2000000000", -2000000000},
      {"-2000000000.4", -2000000000},
      {"-7000000000", -2000000000},
  };
  for (const Case& c : cases) EXPECT_EQ(ShiftFromText(c.text), c.shift) << c.text;
  EXPECT_EQ(rotate("Zebra", ShiftFromText("5000000000 and more")), "Xczpy");
}

TEST(RotTest, ReplaceButtonShiftIsNotClampedButMustFit) {
  EXPECT_EQ(RoundedShiftFromText("2100000000"), 2100000000);
  EXPECT_EQ(RoundedShiftFromText("-2147483648"), INT32_MIN);
  EXPECT_EQ(RoundedShiftFromText("4.5"), 4);
  EXPECT_EQ(RoundedShiftFromText("2147483648"), std::nullopt);
  EXPECT_EQ(RoundedShiftFromText("x"), 0);
}

}  // namespace
}  // namespace brindle
