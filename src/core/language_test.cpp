#include "core/language.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace brindle {
namespace {

TEST(LanguageString, ReadsTheTableOfTheGivenBase) {
  EXPECT_EQ(LanguageString(kLangEnglish, 22), "Recently transferred data:");
  EXPECT_EQ(LanguageString(kLangEnglish, 131), "is already in use. Enter another port number.");
  EXPECT_EQ(LanguageString(kLangSpanish, 159), "No se encuentra msoe.dll.");
  // UTF-8 bytes, not converted to any code page.
  EXPECT_EQ(LanguageString(kLangSlovenian, 173), "\xC5\xA0ifrirana povezava:");
}

TEST(LanguageString, OffsetsOutsideTheTableAreEmptyAndUnknownBasesReadEnglish) {
  for (int16_t base : {kLangPolish, kLangSpanish}) {
    EXPECT_EQ(LanguageString(base, 0), "");
    EXPECT_EQ(LanguageString(base, 174), "");
    EXPECT_EQ(LanguageString(base, -1), "");
  }
  EXPECT_EQ(LanguageString(int16_t{0}, 1), "&File");
  EXPECT_EQ(LanguageString(int16_t{7000}, 173), "Encrypted connection:");
  EXPECT_FALSE(IsLanguageBase(7000));
  EXPECT_FALSE(IsLanguageBase(1001));
  EXPECT_TRUE(IsLanguageBase(6000));
}

TEST(DefaultLanguage, Identifier1000TextNamesTheBaseOrFallsBackToEnglish) {
  EXPECT_EQ(LanguageBaseFromIdentifier1000("1000"), kLangPolish);
  EXPECT_EQ(LanguageBaseFromIdentifier1000("5000"), kLangFrench);
  for (std::string_view broken :
       {"", "abc", "2000x", " 3000", "+3000", "-1000", "1500", "7000", "99999999999999999999"}) {
    EXPECT_EQ(LanguageBaseFromIdentifier1000(broken), kLangEnglish) << broken;
  }
}

TEST(DefaultLanguage, LocaleLanguagePicksTheTableLikeThePlatformDoes) {
  EXPECT_EQ(LanguageBaseForLocale("pl_PL.UTF-8"), kLangPolish);
  EXPECT_EQ(LanguageBaseForLocale("de_AT@euro"), kLangGerman);
  EXPECT_EQ(LanguageBaseForLocale("sl_SI"), kLangSlovenian);
  EXPECT_EQ(LanguageBaseForLocale("fr"), kLangFrench);
  EXPECT_EQ(LanguageBaseForLocale("FR_ca.ISO-8859-1"), kLangFrench);
  EXPECT_EQ(LanguageBaseForLocale("en_GB.UTF-8"), kLangEnglish);
  // The Spanish table names no base under identifier 1000: Spanish speakers
  // start in the fallback table, like speakers of languages without a table.
  for (std::string_view other :
       {"es_ES.UTF-8", "es", "C", "C.UTF-8", "POSIX", "it_IT", "si_LK", ""}) {
    EXPECT_EQ(LanguageBaseForLocale(other), kLangEnglish) << other;
  }
}

TEST(DefaultLanguage, EnvironmentPrecedenceIsLcAllThenLcMessagesThenLang) {
  std::map<std::string, std::string> env;
  auto getenv = [&env](const char* name) -> const char* {
    auto found = env.find(name);
    return found == env.end() ? nullptr : found->second.c_str();
  };
  EXPECT_EQ(LanguageBaseFromEnvironment(getenv), kLangEnglish);
  env["LANG"] = "de_DE.UTF-8";
  EXPECT_EQ(LanguageBaseFromEnvironment(getenv), kLangGerman);
  env["LC_MESSAGES"] = "fr_FR.UTF-8";
  EXPECT_EQ(LanguageBaseFromEnvironment(getenv), kLangFrench);
  env["LC_ALL"] = "";  // set but empty: does not count
  EXPECT_EQ(LanguageBaseFromEnvironment(getenv), kLangFrench);
  env["LC_ALL"] = "pl_PL";
  EXPECT_EQ(LanguageBaseFromEnvironment(getenv), kLangPolish);
  env["LC_ALL"] = "es_ES";  // the first one set decides, even when it has no table
  EXPECT_EQ(LanguageBaseFromEnvironment(getenv), kLangEnglish);
}

}  // namespace
}  // namespace brindle
