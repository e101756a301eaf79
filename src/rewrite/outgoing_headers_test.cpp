#include "rewrite/outgoing_headers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "core/log.h"

namespace brindle {
namespace {

std::string Sample(const std::string& name) {
  std::ifstream in(std::string(BRINDLE_TEST_DATA_DIR) + "/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  size_t at = text.find(from);
  return at == std::string::npos ? "(missing " + from + ")" : text.replace(at, from.size(), to);
}

TEST(ChangeHeaders, SwitchesValuesAndCase) {
  const std::string news = Sample("news_post.txt"), mail = Sample("mail.txt");
  const std::string oe = ": Microsoft Outlook Express 6.00.2900.3028\r\n";
  const std::string ole = "X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2900.3028\r\n";
  const std::string lower = "From: <a@b.c>\r\nx-newsreader: O\r\nx-mimeole: O\r\n\r\nb\r\n.\r\n";
  struct Case {
    const char* name;
    int16_t newsSwitch, mimeNews, mailSwitch, mimeMail;
    bool isMail;
    std::string in, out;
  } cases[] = {
      {"all off", 0, 0, 1, 0, false, news, news},
      {"newsreader", 1, 0, 0, 0, false, news,
       Replaced(news, "X-Newsreader" + oe, "X-Newsreader: N\r\n")},
      {"mimeole news", 0, 1, 0, 1, false, news, Replaced(news, ole, "X-MimeOLE: \xB9\r\n")},
      {"lower case", 1, 1, 0, 0, false, lower, Replaced(lower, "x-mimeole: O", "x-mimeole: \xB9")},
      // The mail X-Mailer follows the news switch, never its own.
      {"mailer own switch", 0, 0, 1, 0, true, mail, mail},
      {"mailer news switch", 1, 0, 0, 0, true, mail,
       Replaced(mail, "X-Mailer" + oe, "X-Mailer: M\r\n")},
      {"mimeole mail", 0, 1, 0, 1, true, mail, Replaced(mail, ole, "X-MimeOLE: \r\n")},
      {"no line end", 1, 0, 0, 0, false, "X-Newsreader: old", "X-Newsreader: old"},
  };
  for (const Case& c : cases) {
    Settings s;
    s.intXNewsreader = c.newsSwitch;
    s.intXMimeOLE = c.mimeNews;
    s.intXMailer = c.mailSwitch;
    s.intXMimeOLEMail = c.mimeMail;
    s.strXNewsreader = "N";
    s.strXMimeOLE = "\xB9";
    s.strXMailer = "M";
    EXPECT_EQ(c.isMail ? ChangeMailHeaders(std::string(c.in), s)
                       : ChangeNewsHeaders(std::string(c.in), s),
              c.out)
        << c.name;
  }
}

TEST(ChangeHeaders, MessageWithoutThemIsLeftWhole) {
  // Splicing blindly would overwrite the first line of another client's message.
  const std::string post = "Path: x\r\nFrom: a <a@b.c>\r\nSubject: s\r\n\r\nbody\r\n.\r\n";
  Settings s;
  s.intXNewsreader = s.intXMimeOLE = s.intXMimeOLEMail = 1;
  log::Capture log;
  EXPECT_EQ(ChangeNewsHeaders(std::string(post), s), post);
  EXPECT_EQ(ChangeMailHeaders(std::string(post), s), post);
  EXPECT_TRUE(log.Contains("X-Mailer")) << log.Text();
}

TEST(InsertCustomHeaders, AnchorsAndTableOrder) {
  const std::string post =
      "From: a <a@b.c>\r\nSubject: hi\r\nDate: today\r\n\r\nSubject: quoted\r\n.\r\n";
  Settings s;
  s.newsHeaders[0] = {"X-One", "Subject", "1"};
  s.newsHeaders[1] = {"X-Two", "Subject", "2"};  // same anchor: goes above X-One
  s.newsHeaders[2] = {"X-Last1", "", "3"};       // no anchor: end of the header block,
  s.newsHeaders[3] = {"X-Last2", "", "4"};       // in table order
  s.newsHeaders[4] = {"", "Date", "ignored"};
  s.newsHeaders[7] = {"X-Child", "X-One", "5"};       // anchored on an inserted header
  s.newsHeaders[9] = {"X-Lost", "Organization", ""};  // absent anchor: after line one
  s.newsHeaders[49] = {"X-End", "X-Last2", "6"};
  EXPECT_EQ(InsertNewsCustomHeaders(std::string(post), s),
            "From: a <a@b.c>\r\nX-Lost: \r\nSubject: hi\r\nX-Two: 2\r\nX-One: 1\r\nX-Child: 5\r\n"
            "Date: today\r\nX-Last1: 3\r\nX-Last2: 4\r\nX-End: 6\r\n\r\nSubject: quoted\r\n.\r\n");
  EXPECT_EQ(InsertMailCustomHeaders(std::string(post), s), post);

  log::Capture log;  // nowhere to put an entry without anchor
  EXPECT_EQ(InsertNewsCustomHeaders("Subject: x", s), "Subject: x");
  EXPECT_TRUE(log.Contains("X-Last1")) << log.Text();
}

TEST(InsertCustomHeaders, FirstOccurrenceAnywhereWinsEvenInTheBody) {
  std::string body;
  for (int i = 0; i < 2000; ++i) body += "line " + std::to_string(i) + " \xEA\xB9\r\n";
  const std::string mail =
      "From: a <a@b.c>\r\nTo: b@c.d\r\n\r\n" + body + "Subject: in the body\r\nend\r\n.\r\n";
  Settings s;
  s.mailHeaders[0] = {"X-Anchored", "Subject", "a"};
  s.mailHeaders[1] = {"X-Plain", "", "b"};
  s.mailHeaders[2] = {"X-After", "X-Anchored", "c"};
  EXPECT_EQ(InsertMailCustomHeaders(std::string(mail), s),
            "From: a <a@b.c>\r\nTo: b@c.d\r\nX-Plain: b\r\n\r\n" + body +
                "Subject: in the body\r\nX-Anchored: a\r\nX-After: c\r\nend\r\n.\r\n");
}

}  // namespace
}  // namespace brindle
