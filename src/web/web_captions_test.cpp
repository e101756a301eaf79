#include "web/web_captions.h"

#include <algorithm>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "core/settings.h"
#include "web/web_assets.h"

namespace brindle::web {
namespace {

std::set<std::string> EnglishKeys() {
  std::set<std::string> keys;
  for (const auto& [key, text] : WebCaptions(kLangEnglish)) keys.emplace(key);
  return keys;
}

TEST(WebCaptionsTest, EveryLanguageHasEveryCaptionInTheSameOrder) {
  const auto& english = WebCaptions(kLangEnglish);
  for (int16_t base : {kLangPolish, kLangGerman, kLangSlovenian, kLangFrench, kLangSpanish}) {
    const auto& captions = WebCaptions(base);
    ASSERT_EQ(captions.size(), english.size()) << base;
    for (size_t i = 0; i < captions.size(); ++i) {
      EXPECT_EQ(captions[i].first, english[i].first) << base;
      EXPECT_FALSE(captions[i].second.empty()) << base << " " << captions[i].first;
    }
    // The page fills these in; a translation that lost one would show a bare path.
    const auto none = std::find_if(captions.begin(), captions.end(),
                                   [](const auto& c) { return c.first == "settings.none"; });
    ASSERT_NE(none, captions.end());
    EXPECT_NE(none->second.find("{apply}"), std::string_view::npos) << base;
    EXPECT_NE(none->second.find("{file}"), std::string_view::npos) << base;
  }
  EXPECT_EQ(&WebCaptions(999), &english);
}

// Every caption key the pages ask for exists, so none shows as its key.
TEST(WebCaptionsTest, EveryKeyThePagesUseIsDefined) {
  const auto keys = EnglishKeys();
  const std::regex used(R"re(data-text="([a-zA-Z.]+)"|text\("([a-zA-Z.]+)"\))re");
  size_t seen = 0;
  for (const char* path : {"/", "/app.js", "/options.js"}) {
    const Asset* asset = FindAsset(path);
    ASSERT_NE(asset, nullptr) << path;
    const std::string body(asset->body);
    for (std::sregex_iterator it(body.begin(), body.end(), used), end; it != end; ++it) {
      const std::string key = (*it)[1].matched ? (*it)[1].str() : (*it)[2].str();
      EXPECT_TRUE(keys.count(key)) << path << ": " << key;
      ++seen;
    }
  }
  EXPECT_GT(seen, 15u);
  // Keys built at run time: the counters and the channel states.
  for (const char* key :
       {"count.sendersListed", "state.posting", "state.collecting", "state.relaying",
        "state.sending mail", "spammer.listed", "spammer.notAddress", "change.controlChars",
        "change.multipartRelabelled"}) {
    EXPECT_TRUE(keys.count(key)) << key;
  }
}

}  // namespace
}  // namespace brindle::web
