// Finding the sender of a downloaded message, and the mark a listed one gets.
#include <gtest/gtest.h>

#include "rewrite/downloaded_headers.h"
#include "rewrite/spammer_mark.h"

namespace brindle {
namespace {

TEST(DownloadedHeadersTest, MailboxOfTheFromFieldInTheHeaderBlockOnly) {
  const std::string article =
      "220 3 <a@b> article\r\n"
      "Subject: From: fake@in.subject\r\n"
      "FROM: \"Smith, <Joe>\" (work@home)\r\n"
      "\t<Joe@Example.com> (Joe)\r\n"
      "Message-ID: <a@b>\r\n"
      "\r\n"
      "From: body@not.header\r\n.\r\n";
  EXPECT_EQ(HeaderValue(article, "from"), "\"Smith, <Joe>\" (work@home) <Joe@Example.com> (Joe)");
  EXPECT_EQ(MailboxOf(HeaderValue(article, "From")), "Joe@Example.com");
  EXPECT_EQ(HeaderValue(article, "Subject"), "From: fake@in.subject");
  EXPECT_EQ(HeaderValue("+OK\r\nX: y\r\n\r\nFrom: body@x\r\n.\r\n", "From"), "");
  EXPECT_EQ(MailboxOf("joe@example.com (Joe \"the\" (big) one)"), "joe@example.com");
  EXPECT_EQ(MailboxOf("\"a@b\" joe@example.com"), "joe@example.com");
  EXPECT_EQ(MailboxOf("Undisclosed"), "");
}

// The usual case is checked byte for byte through a tunnel (spammer_test).
TEST(SpammerMarkTest, MarkedSubjectMissingSubjectAndNoAddressToPut) {
  EXPECT_EQ(MarkListedSpammer("+OK\r\nSubject: [SPAM] x\r\nFrom: a@b\r\n\r\n.\r\n", "s@s"),
            "+OK\r\nSubject: [SPAM] x\r\nFrom: s@s\r\nX-Brindle-Original-From: a@b\r\n\r\n.\r\n");
  EXPECT_EQ(MarkListedSpammer("220 1\r\nFrom: a@b\r\n\r\n.\r\n", ""),
            "220 1\r\nFrom: a@b\r\nSubject: [SPAM]\r\n\r\n.\r\n");
}

}  // namespace
}  // namespace brindle
