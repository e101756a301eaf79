// Checks the compiled language tables against the English one: a lost line,
// a dropped placeholder or accelerator, or a changed ending in a translation
// shows up here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "resources/language_tables.h"

namespace brindle::resources {
namespace {

const LanguageTable& Table(std::string_view code) {
  for (const auto& table : kLanguageTables) {
    if (table.code == code) return table;
  }
  ADD_FAILURE() << "no table " << code;
  return kLanguageTables[0];
}

// Placeholders of the quote-header patterns, longest first, so that "%nt"
// is not counted as "%n".
std::multiset<std::string> Placeholders(std::string_view text) {
  static const char* const kKnown[] = {"%nt", "%et", "%nf", "%ef", "%n", "%e", "%i", "%d", "%s"};
  std::multiset<std::string> found;
  for (size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
    std::string token = "%?";
    for (const char* known : kKnown) {
      if (text.substr(at).starts_with(known)) {
        token = known;
        break;
      }
    }
    found.insert(token);
  }
  return found;
}

size_t Count(std::string_view text, char c) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), c));
}

// How a text ends, as far as joining it with other pieces cares.
std::string Ending(std::string_view text) {
  if (text.ends_with("...")) return "...";
  if (text.ends_with(" ")) return "blank";
  char last = text.back();
  if (last == ':' || last == '.' || last == ')') return std::string(1, last);
  return "other";
}

// The generator refuses missing and empty texts; a blank at the start would
// still pass it and break every text joined after a number or a name.
TEST(LanguageTables, NoTextStartsWithABlank) {
  for (const auto& table : kLanguageTables) {
    for (int offset = 1; offset <= kLanguageStringCount; ++offset) {
      EXPECT_FALSE(table.texts[offset].starts_with(" ")) << table.code << " " << offset;
    }
  }
}

TEST(LanguageTables, TranslationsKeepPlaceholdersAcceleratorsAndEndings) {
  const LanguageTable& en = Table("en");
  for (const auto& table : kLanguageTables) {
    if (table.code == "en") continue;
    for (int offset = 1; offset <= kLanguageStringCount; ++offset) {
      std::string_view english = en.texts[offset];
      std::string_view text = table.texts[offset];
      SCOPED_TRACE(std::string(table.code) + " " + std::to_string(offset) + ": " +
                   std::string(text));
      EXPECT_EQ(Placeholders(text), Placeholders(english));
      EXPECT_EQ(Count(text, '&'), Count(english, '&'));
      EXPECT_EQ(Ending(text), Ending(english));
    }
  }
}

TEST(LanguageTables, TranslationsAreTranslated) {
  // A line copied from English is a slip; only a few short words ("Port",
  // "Version", "Tunnels", "&OK") are the same in another language.
  const LanguageTable& en = Table("en");
  for (const auto& table : kLanguageTables) {
    if (table.code == "en") continue;
    std::vector<int> copied;
    for (int offset = 1; offset <= kLanguageStringCount; ++offset) {
      if (table.texts[offset] == en.texts[offset]) copied.push_back(offset);
    }
    EXPECT_LE(copied.size(), 8u) << table.code << ": " << ::testing::PrintToString(copied);
  }
}

}  // namespace
}  // namespace brindle::resources
