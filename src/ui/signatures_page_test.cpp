#include <gtest/gtest.h>

#include "ui/signatures_page.h"

namespace brindle::ui {
namespace {

TEST(SignaturesPage, SendersNeedAnAddressAndFillTheFirstFreeRecord) {
  Settings s;
  s.signatures[0] = {"sig", "Ann", "ann@example.org", 1, false, {}};
  s.signatures[2] = {"", "Bob", "bob@example.org", 0, false, {}};
  SignaturesPage page;
  page.Load(s);
  EXPECT_EQ(page.Senders(), (std::vector<int>{0, 2}));
  EXPECT_EQ(page.selected(), 0);

  EXPECT_EQ(page.AddSender("Nobody", ""), (PageMessage{104, 105, {}}));
  EXPECT_EQ(page.ChangeSender(2, "Bob", ""), (PageMessage{104, 105, {}}));
  int added = -2;
  EXPECT_FALSE(page.AddSender("Cy", "cy@example.org", &added));
  EXPECT_EQ(added, 1);
  EXPECT_EQ(page.selected(), 1);
  EXPECT_EQ(page.SenderCaption(1), "Cy <cy@example.org>");

  page.RemoveSender(1);  // the selection moves on to the next sender
  EXPECT_EQ(page.selected(), 2);
  page.RemoveSender(2);  // ... or back, at the end of the list
  EXPECT_EQ(page.selected(), 0);
  page.RemoveSender(0);
  EXPECT_EQ(page.selected(), -1);
  EXPECT_EQ(page.Selected(), nullptr);
  page.SetText("ignored without a sender");

  for (int i = 0; i < kSignatureCount; ++i) page.AddSender("", "a@b");
  EXPECT_FALSE(page.AddSender("", "full@b", &added));
  EXPECT_EQ(added, -1);
  EXPECT_EQ(s.signatures[0].email, "ann@example.org");  // all of it in the copy only
}

TEST(SignaturesPage, EditsOfTheSelectedSenderAndTheLongLineWarning) {
  Settings s;
  s.intWrap = 10;
  s.signatures[5] = {"short\r\nline", "Ann", "ann@example.org", 1, false, {}};
  SignaturesPage page;
  page.Load(s);
  EXPECT_EQ(page.LongLineLimit(), std::nullopt);
  page.SetText("ok\r\n12345678901");
  EXPECT_EQ(page.LongLineLimit(), 10);
  page.SetText("1234567890\r\n1234567890\n");
  EXPECT_EQ(page.LongLineLimit(), std::nullopt);

  page.SetDistance("250");
  page.SetRandom(true);
  page.AddFile("a.txt");
  page.AddFile("");
  page.AddFile("b.txt");
  page.RemoveFile(0);
  page.RemoveFile(7);
  page.Apply(s);
  EXPECT_EQ(s.signatures[5].Distance, SignaturesPage::kDistanceMax);
  EXPECT_TRUE(s.signatures[5].RandomSig);
  EXPECT_EQ(s.signatures[5].SigFile, std::vector<std::string>{"b.txt"});
}

}  // namespace
}  // namespace brindle::ui
