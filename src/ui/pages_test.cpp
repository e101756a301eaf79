#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "core/settings_file.h"
#include "ui/option_pages.h"

namespace brindle::ui {
namespace {

using Field = HeadersPage::Field;

Settings FullFile(std::string* text = nullptr) {
  std::ifstream in(BRINDLE_FULL_SETTINGS_FILE, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  Settings s;
  LoadSettings(bytes.str(), s, {});
  if (text != nullptr) *text = bytes.str();
  return s;
}

TEST(HeadersPage, EditsLiveInTheWorkingCopyAcrossSliderMovesUntilApply) {
  Settings live;
  live.newsHeaders[47] = {"X-Old", "Subject", "old"};
  HeadersPage page(HeadersPage::Kind::kNews);
  page.Load(live);

  page.SetSlider(100);  // the slider stops where row 3 shows entry 49
  EXPECT_EQ(page.vscSuwak(), 46);
  EXPECT_EQ(page.Row(1).HeaderName, "X-Old");
  ASSERT_TRUE(page.Edit(3, Field::txtHeaderBody, "last"));
  ASSERT_TRUE(page.Edit(1, Field::txtHeaderName, "X-New"));
  page.SetSlider(0);
  EXPECT_EQ(page.Row(1).HeaderName, "");
  ASSERT_TRUE(page.Edit(0, Field::txtInsertAfter, "From"));
  page.SetSlider(46);
  EXPECT_EQ(page.Row(1).HeaderName, "X-New");
  EXPECT_EQ(page.Row(1).HeaderBody, "old");
  EXPECT_FALSE(page.Edit(4, Field::txtHeaderName, "beyond"));

  EXPECT_EQ(live.newsHeaders[47].HeaderName, "X-Old");  // nothing reached it yet
  page.Apply(live);
  EXPECT_EQ(live.newsHeaders[47].HeaderName, "X-New");
  EXPECT_EQ(live.newsHeaders[49].HeaderBody, "last");
  EXPECT_EQ(live.newsHeaders[0].InsertAfter, "From");
  EXPECT_EQ(live.mailHeaders[47].HeaderName, "");
}

TEST(HeadersPage, MailPageEditsTheMailSwitchesAndTable) {
  Settings s;
  s.intXMailer = 1;
  s.strXMailer = "M";
  s.mailHeaders[0].HeaderName = "X-Mail";
  HeadersPage page(HeadersPage::Kind::kMail);
  page.Load(s);
  EXPECT_TRUE(page.changeIdentification);
  EXPECT_EQ(page.Row(0).HeaderName, "X-Mail");
  page.changeIdentification = false;
  page.changeMimeOLE = true;
  page.mimeOLE = "Mime";
  page.Apply(s);
  EXPECT_EQ(s.intXMailer, 0);
  EXPECT_EQ(s.intXMimeOLEMail, 1);
  EXPECT_EQ(s.strXMimeOLEMail, "Mime");
  EXPECT_EQ(s.intXNewsreader, 0);
  EXPECT_EQ(s.intXMimeOLE, 0);
}

TEST(FiltersAndMiscellaneous, OptionsAndNumbersAsApplyStoresThem) {
  Settings s;
  FiltersPage filters;
  s.intCharFiltering = 7;  // hand-edited: the first button is selected
  filters.Load(s);
  EXPECT_EQ(filters.charFilter, FiltersPage::CharFilter::optCharFilterNothing);
  filters.charFilter = FiltersPage::CharFilter::optCharFilterSpaces;
  filters.charFilter = FiltersPage::CharFilter::optCharFilterRemove;
  filters.txtAFPercentage = "250";
  filters.txtAFMin = " 12.5x";
  filters.Apply(s);
  EXPECT_EQ(s.intCharFiltering, 2);
  EXPECT_EQ(s.intAFPercentage, 100);
  EXPECT_EQ(s.intAFMin, 12);
  filters.txtAFPercentage = "-5";
  filters.txtAFMin = "40000";
  filters.Apply(s);
  EXPECT_EQ(s.intAFPercentage, 0);
  EXPECT_EQ(s.intAFMin, 998);

  MiscellaneousPage misc;
  for (auto [typed, stored] :
       {std::pair{"200", 500}, {"5000", 1000}, {"750", 750}, {"", 500}, {"99999999999", 1000}}) {
    misc.txtStrip = typed;
    misc.Apply(s);
    EXPECT_EQ(s.intStripRef, stored) << typed;
  }
  misc.txtStrip = "999";
  misc.vscScroll(+5);
  EXPECT_EQ(misc.txtStrip, "1000");
}

// Opening the window and pressing OK without touching anything rewrites the
// file as it was, except where a stored number lies outside its page's range.
TEST(OptionPages, UntouchedPagesRewriteTheFileUnchangedSaveOutOfRangeNumbers) {
  std::string file;
  auto base = std::make_shared<const Settings>(FullFile(&file));
  OptionPages pages;
  pages.Load(base);
  std::string expected = file;
  const std::string afMin = "AFMin=-3\r\n";
  ASSERT_NE(expected.find(afMin), std::string::npos);
  expected.replace(expected.find(afMin), afMin.size(), "AFMin=0\r\n");
  EXPECT_EQ(SettingsFileText(pages.Build()), expected);
}

TEST(OptionPages, ApplyPublishesSavesOnceAndReloadsKeepingTheSlider) {
  SettingsStore store(FullFile());
  int saves = 0;
  std::string written;
  SettingsApplier applier(store, nullptr, [&](const Settings& s) {
    ++saves;
    written = SettingsFileText(s);
    return true;
  });
  OptionPages pages;
  pages.Load(store.Current());
  auto before = store.Current();
  pages.frmHeaders.SetSlider(10);
  pages.frmHeaders.Edit(0, Field::txtHeaderName, "X-Ten");
  pages.frmIcon.chkTrayIcon = true;
  EXPECT_FALSE(pages.Apply(applier));
  EXPECT_EQ(saves, 1);
  EXPECT_EQ(store.Current()->newsHeaders[10].HeaderName, "X-Ten");
  EXPECT_EQ(store.Current()->intTrayIcon, 1);
  EXPECT_EQ(written, SettingsFileText(*store.Current()));
  EXPECT_EQ(before->intTrayIcon, 0);  // a holder of the old snapshot keeps it
  EXPECT_EQ(pages.frmHeaders.vscSuwak(), 10);
}

}  // namespace
}  // namespace brindle::ui
