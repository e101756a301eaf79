// The string resources linked into this executable (brindle_strings_rc) as
// the Windows loader sees them, checked against the compiled tables.
#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>

#include "core/language.h"
#include "core/language_wide.h"
#include "resources/language_tables.h"

namespace brindle::resources {
namespace {

// String `id` of the table stored under language `lang`; nothing when that
// table has no such string. Reads the 16-string block directly, so that no
// language fallback of the loader hides a missing entry.
std::optional<std::wstring> TableString(UINT id, WORD lang) {
  HMODULE module = GetModuleHandleW(nullptr);
  HRSRC block = FindResourceExW(module, MAKEINTRESOURCEW(6) /* RT_STRING */,
                                MAKEINTRESOURCEW(id / 16 + 1), lang);
  if (!block) return std::nullopt;
  auto* p = static_cast<const WCHAR*>(LockResource(LoadResource(module, block)));
  for (UINT i = 0; i < id % 16; ++i) p += 1 + *p;
  if (*p == 0) return std::nullopt;
  return std::wstring(p + 1, *p);
}

BOOL CALLBACK CollectLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD lang, LONG_PTR found) {
  reinterpret_cast<std::set<WORD>*>(found)->insert(lang);
  return TRUE;
}

TEST(StringResources, EveryTableHoldsItsTextsUnderItsLanguage) {
  for (const auto& table : kLanguageTables) {
    for (int offset = 1; offset <= kLanguageStringCount; ++offset) {
      std::optional<std::wstring> text = TableString(table.base + offset, table.languageId);
      ASSERT_TRUE(text) << table.code << " " << offset;
      EXPECT_EQ(*text, Utf8ToWide(table.texts[offset])) << table.code << " " << offset;
    }
  }
  EXPECT_EQ(TableString(2001, 1045), std::nullopt);  // English ids only in the English table
}

TEST(StringResources, Identifier1000IsInEveryTableButTheSpanishOne) {
  std::set<WORD> languages;
  EnumResourceLanguagesW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(6),
                         MAKEINTRESOURCEW(1000 / 16 + 1), CollectLanguage,
                         reinterpret_cast<LONG_PTR>(&languages));
  EXPECT_EQ(languages, (std::set<WORD>{1045, 1033, 1031, 1060, 1036}));
  for (const auto& table : kLanguageTables) {
    if (table.identifier1000.empty()) continue;
    EXPECT_EQ(TableString(1000, table.languageId), Utf8ToWide(table.identifier1000));
  }
}

TEST(StringResources, DefaultLanguageIsTheBaseInTheTablePickedForTheUser) {
  WCHAR text[16] = {};
  int length = LoadStringW(GetModuleHandleW(nullptr), 1000, text, 16);
  ASSERT_GT(length, 0);
  std::string digits(text, text + length);
  EXPECT_EQ(DefaultLanguageBase(), LanguageBaseFromIdentifier1000(digits));
  EXPECT_NE(DefaultLanguageBase(), kLangSpanish);
}

}  // namespace
}  // namespace brindle::resources
