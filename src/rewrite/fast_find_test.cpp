#include "rewrite/fast_find.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace brindle {
namespace {

// Against the standard search on texts of a small alphabet, so that partial
// matches, matches across the sixteen-byte steps and matches in the last
// bytes all occur.
TEST(FastFind, AgreesWithStandardSearch) {
  std::mt19937 random(7);
  const std::string alphabet = "\r\nab ";
  for (int round = 0; round < 4000; ++round) {
    std::string text(random() % 70, ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    std::string needle(random() % 6, ' ');
    for (char& c : needle) c = alphabet[random() % alphabet.size()];
    const size_t from = random() % (text.size() + 3);
    ASSERT_EQ(FastFind(text, needle, from), std::string_view(text).find(needle, from))
        << "round " << round;
  }
}

}  // namespace
}  // namespace brindle
