#include "rewrite/header_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace brindle {
namespace {

// Random insertions, every search compared with the same search on a plain
// string. Few distinct letters make matches straddle the point where the
// edited head meets the untouched rest.
TEST(SplicedText, BehavesLikeAPlainStringUnderInsertions) {
  std::mt19937 random(7);
  auto pick = [&](size_t n) { return static_cast<size_t>(random() % n); };
  auto word = [&](size_t length) {
    std::string w;
    while (w.size() < length) w += "ab\r\n"[pick(4)];
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
      for (int probe = 0; probe < 10; ++probe) {
        std::string needle = word(1 + pick(4));
        size_t from = pick(plain.size() + 2);
        ASSERT_EQ(spliced.Find(needle, from), plain.find(needle, from))
            << round << " " << needle << " from " << from;
      }
    }
    EXPECT_EQ(std::move(spliced).Join(), plain);
  }
}

}  // namespace
}  // namespace brindle
