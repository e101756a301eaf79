#include "rewrite/fast_find.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace brindle {
namespace {

// Against the standard search on texts of a small alphabet, so that partial
// matches, matches across the 32-byte steps and matches in the last bytes
// all occur, for short needles and long ones alike.
TEST(FastFind, AgreesWithStandardSearch) {
  std::mt19937 random(7);
  const std::string alphabet = "\r\nab ";
  for (int round = 0; round < 4000; ++round) {
    std::string text(random() % 300, ' ');
    const std::string letters = round % 3 == 0 ? "aab" : alphabet;
    for (char& c : text) c = letters[random() % letters.size()];
    // Short needles of any bytes, long ones periodic with a late difference.
    std::string needle(random() % 6, ' ');
    for (char& c : needle) c = alphabet[random() % alphabet.size()];
    if (round % 3 == 0) {
      needle = std::string(60 + random() % 20, 'a') + alphabet[random() % 3];
      if (round % 2 == 0) text.insert(random() % (text.size() + 1), needle);
    }
    const size_t from = random() % (text.size() + 3);
    ASSERT_EQ(FastFind(text, needle, from), std::string_view(text).find(needle, from))
        << "round " << round;
  }
}

}  // namespace
}  // namespace brindle
