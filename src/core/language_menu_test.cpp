#include "core/language_menu.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "core/language.h"
#include "core/log.h"

namespace brindle {
namespace {

using Item = LanguageMenuItem;
constexpr Item kAllItems[] = {Item::mnuLangPolski,  Item::mnuLangEnglish,  Item::mnuLangDeutsch,
                              Item::mnuLangSlovene, Item::mnuLangFrancais, Item::mnuLangSpanish};

// A window that records the caption it loads on each change.
struct Window : LanguageAware {
  explicit Window(const SettingsStore& s) : store(s) {}
  void ChangeLanguage() override { captions.emplace_back(LanguageString(store, 20)); }
  const SettingsStore& store;
  std::vector<std::string> captions;
};

struct LanguageMenuTest : ::testing::Test {
  std::vector<int16_t> CheckedBases() const {
    std::vector<int16_t> bases;
    for (Item item : kAllItems) {
      if (menu.Checked(item)) bases.push_back(LanguageBaseOf(item));
    }
    return bases;
  }

  SettingsStore store;
  LanguageWindows windows;
  std::vector<Settings> saved;
  LanguageMenu menu{store, windows, [this](const Settings& s) { saved.push_back(s); }};
};

TEST_F(LanguageMenuTest, StartUpChecksTheLoadedLanguageOnly) {
  Settings s;
  s.intLanguage = kLangSlovenian;
  store.Replace(s);
  menu.CheckCurrent();
  EXPECT_EQ(CheckedBases(), std::vector<int16_t>{kLangSlovenian});
  s.intLanguage = 1234;  // no item of its own: nothing checked
  store.Replace(s);
  menu.CheckCurrent();
  EXPECT_TRUE(CheckedBases().empty());
}

TEST_F(LanguageMenuTest, EveryItemMovesTheCheckAndStoresItsBase) {
  for (Item item : kAllItems) {
    menu.Click(item);
    EXPECT_EQ(CheckedBases(), std::vector<int16_t>{LanguageBaseOf(item)});
    EXPECT_EQ(store.Current()->intLanguage, LanguageBaseOf(item));
    EXPECT_EQ(LanguageMenuItemOf(LanguageBaseOf(item)), item);
  }
  EXPECT_EQ(saved.size(), std::size(kAllItems));
}

TEST_F(LanguageMenuTest, SpanishChangesEveryWindowOnceThenSavesOnce) {
  Settings s;
  s.strCCAddress = "cc@example.org";
  store.Replace(s);
  Window main(store), options(store);
  LanguageRegistration a(windows, main), b(windows, options);
  windows.Register(main);  // registering twice does not mean two changes

  menu.Click(Item::mnuLangSpanish);

  EXPECT_EQ(main.captions, std::vector<std::string>{"Idioma"});
  EXPECT_EQ(options.captions, std::vector<std::string>{"Idioma"});
  ASSERT_EQ(saved.size(), 1u);
  EXPECT_EQ(saved[0].intLanguage, kLangSpanish);
  EXPECT_EQ(TwoLetterCode(saved[0].intLanguage), "SP");
  EXPECT_EQ(saved[0].strCCAddress, "cc@example.org");  // the rest of the settings kept
}

TEST_F(LanguageMenuTest, ClosedWindowsAreNotCalled) {
  Window kept(store);
  LanguageRegistration keep(windows, kept);
  {
    Window closed(store);
    LanguageRegistration gone(windows, closed);
  }
  menu.Click(Item::mnuLangDeutsch);
  EXPECT_EQ(kept.captions, std::vector<std::string>{"Sprache"});
}

// A window whose change closes another window that comes after it.
struct ClosingWindow : LanguageAware {
  void ChangeLanguage() override { windows->Unregister(*victim); }
  LanguageWindows* windows = nullptr;
  LanguageAware* victim = nullptr;
};

struct ThrowingWindow : LanguageAware {
  void ChangeLanguage() override { throw std::runtime_error("caption control is gone"); }
};

TEST_F(LanguageMenuTest, FailuresAreLoggedAndTheRestStillHappens) {
  log::Capture logged;
  ThrowingWindow broken;
  ClosingWindow closer;
  Window closedByOther(store), last(store);
  closer.windows = &windows;
  closer.victim = &closedByOther;
  for (LanguageAware* w : std::vector<LanguageAware*>{&broken, &closer, &closedByOther, &last}) {
    windows.Register(*w);
  }
  LanguageMenu failingSave(store, windows,
                           [](const Settings&) { throw std::runtime_error("disk full"); });

  failingSave.Click(Item::mnuLangFrancais);

  EXPECT_TRUE(closedByOther.captions.empty());
  EXPECT_EQ(last.captions, std::vector<std::string>{"Langue"});
  EXPECT_TRUE(failingSave.Checked(Item::mnuLangFrancais));
  EXPECT_EQ(store.Current()->intLanguage, kLangFrench);
  EXPECT_TRUE(logged.Contains("caption control is gone"));
  EXPECT_TRUE(logged.Contains("disk full"));
}

}  // namespace
}  // namespace brindle
