#include "rewrite/outgoing_headers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "core/log.h"

namespace brindle {
namespace {

std::string ReadTestData(const std::string& name) {
  std::ifstream in(std::string(BRINDLE_TEST_DATA_DIR) + "/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// `text` with the first `from` replaced by `to`; the test fails if `from` is absent.
std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

const char kOeNewsreader[] = "X-Newsreader: Microsoft Outlook Express 6.00.2900.3028\r\n";
const char kOeMailer[] = "X-Mailer: Microsoft Outlook Express 6.00.2900.3028\r\n";
const char kOeMimeOle[] = "X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2900.3028\r\n";

TEST(ChangeNewsHeaders, ReplacesOnlyTheValuesOfSwitchedOnHeaders) {
  const std::string post = ReadTestData("news_post.txt");
  ASSERT_FALSE(post.empty());
  Settings s;
  s.strXNewsreader = "Brindle 1.0";
  s.strXMimeOLE = "none";

  EXPECT_EQ(ChangeNewsHeaders(post, s), post);  // both switches off

  s.intXNewsreader = 1;
  EXPECT_EQ(ChangeNewsHeaders(post, s),
            Replaced(post, kOeNewsreader, "X-Newsreader: Brindle 1.0\r\n"));

  s.intXMimeOLE = 1;
  s.strXNewsreader.clear();  // an empty value leaves the header with no value
  std::string expected = Replaced(post, kOeNewsreader, "X-Newsreader: \r\n");
  expected = Replaced(expected, kOeMimeOle, "X-MimeOLE: none\r\n");
  EXPECT_EQ(ChangeNewsHeaders(post, s), expected);
}

TEST(ChangeNewsHeaders, MimeOleMatchesAnyCaseNewsreaderOnlyExactCase) {
  const std::string post =
      "From: a <a@b.c>\r\nx-newsreader: Other\r\nx-mimeole: Old\r\n\r\nbody\r\n.\r\n";
  Settings s;
  s.intXNewsreader = 1;
  s.intXMimeOLE = 1;
  s.strXNewsreader = "New";
  s.strXMimeOLE = "\xB9 8-bit";
  log::Capture log;
  EXPECT_EQ(ChangeNewsHeaders(post, s),
            "From: a <a@b.c>\r\nx-newsreader: Other\r\nx-mimeole: \xB9 8-bit\r\n\r\nbody\r\n.\r\n");
  EXPECT_TRUE(log.Contains("X-Newsreader")) << log.Text();
}

TEST(ChangeMailHeaders, MailerFollowsTheNewsSwitchNotItsOwn) {
  const std::string mail = ReadTestData("mail.txt");
  ASSERT_FALSE(mail.empty());
  const std::string newMailer = Replaced(mail, kOeMailer, "X-Mailer: Brindle\r\n");
  struct Case {
    int16_t newsSwitch, mailSwitch;
    bool replaced;
  } cases[] = {{0, 1, false}, {1, 0, true}, {1, 1, true}, {0, 0, false}};
  for (const Case& c : cases) {
    Settings s;
    s.intXNewsreader = c.newsSwitch;
    s.intXMailer = c.mailSwitch;
    s.strXMailer = "Brindle";
    s.strXNewsreader = "must not appear";
    EXPECT_EQ(ChangeMailHeaders(mail, s), c.replaced ? newMailer : mail)
        << "news " << c.newsSwitch << " mail " << c.mailSwitch;
  }
  Settings s;
  s.intXMimeOLEMail = 1;
  s.intXMimeOLE = 0;
  s.strXMimeOLEMail = "mail";
  EXPECT_EQ(ChangeMailHeaders(mail, s), Replaced(mail, kOeMimeOle, "X-MimeOLE: mail\r\n"));
}

TEST(ChangeHeadersGuard, MessageFromAnotherClientIsLeftWhole) {
  // A client that writes no identification headers: splicing blindly would
  // overwrite the first line.
  const std::string post = "Path: x\r\nFrom: a <a@b.c>\r\nSubject: s\r\n\r\nbody\r\n.\r\n";
  Settings s;
  s.intXNewsreader = s.intXMimeOLE = s.intXMimeOLEMail = 1;
  s.strXNewsreader = s.strXMimeOLE = s.strXMailer = s.strXMimeOLEMail = "V";
  log::Capture log;
  EXPECT_EQ(ChangeNewsHeaders(post, s), post);
  EXPECT_EQ(ChangeMailHeaders(post, s), post);
  EXPECT_TRUE(log.Contains("X-Mailer")) << log.Text();
  // A header on the last line with no line end after it.
  EXPECT_EQ(ChangeNewsHeaders("X-Newsreader: old", s), "X-Newsreader: old");
}

// The news table with the given entries at the given indexes.
Settings WithNewsHeaders(std::initializer_list<std::pair<int, CustomHeader>> entries) {
  Settings s;
  for (const auto& [index, entry] : entries) s.newsHeaders[index] = entry;
  return s;
}

TEST(InsertCustomHeaders, AnchorsAndTableOrder) {
  const std::string post =
      "From: a <a@b.c>\r\nSubject: hi\r\nDate: today\r\n\r\nSubject: quoted\r\n.\r\n";
  Settings s = WithNewsHeaders({
      {0, {"X-One", "Subject", "1"}},
      {1, {"X-Two", "Subject", "2"}},       // same anchor: goes above X-One
      {2, {"X-Last1", "", "3"}},            // no anchor: end of the header block
      {3, {"X-Last2", "", "4"}},            // ... in table order
      {4, {"", "Date", "ignored body"}},    // free entry
      {7, {"X-Child", "X-One", "5"}},       // anchored on an inserted header
      {9, {"X-Lost", "Organization", ""}},  // anchor absent: after the first line
      {49, {"X-End", "X-Last2", "6"}},
  });
  EXPECT_EQ(InsertNewsCustomHeaders(post, s),
            "From: a <a@b.c>\r\nX-Lost: \r\nSubject: hi\r\nX-Two: 2\r\nX-One: 1\r\nX-Child: 5\r\n"
            "Date: today\r\nX-Last1: 3\r\nX-Last2: 4\r\nX-End: 6\r\n\r\nSubject: quoted\r\n.\r\n");
  // The news table is not applied to mails.
  EXPECT_EQ(InsertMailCustomHeaders(post, s), post);
}

TEST(InsertCustomHeaders, FirstOccurrenceAnywhereWinsEvenInTheBody) {
  // No Subject header, but the body of a long mail mentions one: the header
  // goes below that body line, and later entries still see the whole text.
  std::string body;
  for (int i = 0; i < 2000; ++i) body += "line " + std::to_string(i) + " \xEA\xB9\r\n";
  const std::string mail =
      "From: a <a@b.c>\r\nTo: b@c.d\r\n\r\n" + body + "Subject: in the body\r\nend\r\n.\r\n";
  Settings s;
  s.mailHeaders[0] = {"X-Anchored", "Subject", "a"};
  s.mailHeaders[1] = {"X-Plain", "", "b"};
  s.mailHeaders[2] = {"X-After", "X-Anchored", "c"};
  EXPECT_EQ(InsertMailCustomHeaders(mail, s),
            "From: a <a@b.c>\r\nTo: b@c.d\r\nX-Plain: b\r\n\r\n" + body +
                "Subject: in the body\r\nX-Anchored: a\r\nX-After: c\r\nend\r\n.\r\n");
}

TEST(InsertCustomHeaders, NoLineEndToAnchorOnLeavesTheEntryOut) {
  Settings s = WithNewsHeaders({{0, {"X-A", "", "1"}}, {1, {"X-B", "Subject", "2"}}});
  log::Capture log;
  // No empty line ends the header block, and no line end at all.
  EXPECT_EQ(InsertNewsCustomHeaders("Subject: x", s), "Subject: x");
  EXPECT_TRUE(log.Contains("X-A")) << log.Text();
  EXPECT_EQ(InsertNewsCustomHeaders("Subject: x\r\n", s), "Subject: x\r\nX-B: 2\r\n");
}

}  // namespace
}  // namespace brindle
