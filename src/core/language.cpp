#include "core/language.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "core/text.h"
#include "resources/language_tables.h"

namespace brindle {
namespace {

static_assert(kLanguageStringCount == resources::kLanguageStringCount);

const resources::LanguageTable* TableOf(int16_t base) {
  for (const auto& table : resources::kLanguageTables) {
    if (table.base == base) return &table;
  }
  return nullptr;
}

const resources::LanguageTable& EnglishTable() {
  return *TableOf(kLangEnglish);
}

// "pl_PL.UTF-8" -> "pl"; "de_DE@euro" -> "de"; "C" -> "c".
std::string_view LocaleLanguage(std::string_view locale) {
  return locale.substr(0, locale.find_first_of("_.@-"));
}

}  // namespace

bool IsLanguageBase(int16_t base) {
  return TableOf(base) != nullptr;
}

std::string_view LanguageString(int16_t base, int offset) {
  if (offset < 1 || offset > kLanguageStringCount) return {};
  const resources::LanguageTable* table = TableOf(base);
  return (table ? *table : EnglishTable()).texts[offset];
}

std::string_view LanguageString(const Settings& settings, int offset) {
  return LanguageString(settings.intLanguage, offset);
}

std::string_view LanguageString(const SettingsStore& store, int offset) {
  return LanguageString(store.Current()->intLanguage, offset);
}

std::string MessageBoxTitle(int16_t base, int offset) {
  std::string title(kMessageBoxTitlePrefix);
  title += LanguageString(base, offset);
  return title;
}

std::string MessageBoxTitle(const Settings& settings, int offset) {
  return MessageBoxTitle(settings.intLanguage, offset);
}

std::string_view TwoLetterCode(int16_t base) {
  const resources::LanguageTable* table = TableOf(base);
  return table ? table->settingsCode : std::string_view{};
}

std::optional<int16_t> BaseFromTwoLetterCode(std::string_view code) {
  for (const auto& table : resources::kLanguageTables) {
    if (EqualsNoCase(code, table.settingsCode)) return table.base;
  }
  return std::nullopt;
}

int16_t LanguageBaseFromIdentifier1000(std::string_view text) {
  int value = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, value);
  if (!text.empty() && error == std::errc() && stop == end) {
    for (const auto& table : resources::kLanguageTables) {
      if (table.base == value) return table.base;
    }
  }
  return kLangEnglish;
}

int16_t LanguageBaseForLocale(std::string_view locale) {
  std::string_view language = LocaleLanguage(locale);
  for (const auto& table : resources::kLanguageTables) {
    if (EqualsNoCase(language, table.localeCode)) {
      return LanguageBaseFromIdentifier1000(table.identifier1000);
    }
  }
  return kLangEnglish;
}

int16_t LanguageBaseFromEnvironment(const std::function<const char*(const char*)>& getenv) {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = getenv(name);
    if (value && *value) return LanguageBaseForLocale(value);
  }
  return kLangEnglish;
}

}  // namespace brindle
