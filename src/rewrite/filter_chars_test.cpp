#include <gtest/gtest.h>

#include <string>

#include "rewrite/incoming_filters.h"

namespace brindle {
namespace {

// Every byte value once, in order.
std::string AllBytes() {
  std::string all;
  for (int c = 0; c < 256; ++c) all.push_back(static_cast<char>(c));
  return all;
}

bool Kept(int c) {
  return c >= 9 && (c <= 13 || c >= 32);
}

TEST(FilterChars, BlankModeBlanksExactlyTheControlCodesAndKeepsTheLength) {
  // Shifted, so that every code lands in a whole block and in the tail.
  for (size_t shift : {0, 21}) {
    const std::string out = FilterChars(std::string(shift, 'a') + AllBytes() + AllBytes(), 1);
    ASSERT_EQ(out.size(), shift + 512);
    for (size_t i = shift; i < out.size(); ++i) {
      const int c = static_cast<int>((i - shift) % 256);
      EXPECT_EQ(static_cast<unsigned char>(out[i]), Kept(c) ? c : ' ') << "code " << c;
    }
  }
}

TEST(FilterChars, OtherModesDeleteTheSameCodes) {
  std::string expected;
  for (int c = 0; c < 256; ++c) {
    if (Kept(c)) expected.push_back(static_cast<char>(c));
  }
  for (int16_t mode : {0, 2, 7}) {
    EXPECT_EQ(FilterChars(AllBytes(), mode), expected) << "mode " << mode;
  }
}

}  // namespace
}  // namespace brindle
