#include "oewin/attribution.h"

#include <gtest/gtest.h>

namespace brindle {
namespace {

// The client's block as it reaches the builder: the closing CR stays on.
const std::string kMailBlock =
    "----- Original Message ----- \r\n"
    "From: \"Jan Kowalski\" <jan@example.org>\r\n"
    "To: \"Marek Nowak\" <marek@example.net>; <ola@example.net>\r\n"
    "Sent: Tuesday, March 13, 2007 9:15 AM\r\n"
    "Subject: Re: spotkanie\r";

const std::string kNewsBlock =
    "----- Original Message -----\r\n"
    "From: zenek@example.com (Zenon Zieli\xf1ski)\r\n"
    "Newsgroups: pl.test\r\n"
    "Date: 12 Mar 2007 21:00:01 +0100\r\n"
    "Message-ID: <45f5b1c2$1@news.example.com>\r\n"
    "Subject: test\r";

TEST(AttributionTest, EveryPlaceholderFromARealBlock) {
  struct Case {
    const char* templ;
    const char* expected;
  };
  const Case cases[] = {
      {"%n <%e> wrote:", "Jan Kowalski <jan@example.org> wrote:"},
      {"%nf/%ef to %nt/%et", "Jan Kowalski/jan@example.org to Marek Nowak/marek@example.net"},
      {"On %d, %n wrote about \"%s\":",
       "On Tuesday, March 13, 2007 9:15 AM, Jan Kowalski wrote "
       "about \"Re: spotkanie\":"},
      {"[%i]", "[]"},  // the mail block has no Message-ID line
      {"100% sure, %x %", "100% sure, %x %"},
      {"%n\r\nwrote:\r\n", "Jan Kowalski\r\nwrote:\r\n"},
      {"", ""},
  };
  for (const Case& c : cases)
    EXPECT_EQ(BuildAttribution(kMailBlock, c.templ), c.expected) << c.templ;

  EXPECT_EQ(BuildAttribution(kNewsBlock, "In %i, %n <%e> wrote on %d:"),
            "In <45f5b1c2$1@news.example.com>, Zenon Zieli\xf1ski <zenek@example.com> wrote on "
            "12 Mar 2007 21:00:01 +0100:");
  EXPECT_EQ(BuildAttribution(kNewsBlock, "%nt%et|"), "|");  // no To: line
}

TEST(AttributionTest, FilledValuesAreNotExpandedAgain) {
  const std::string block = "From: \"100%s %n\" <a@b>\r\nSubject: %e\r";
  EXPECT_EQ(BuildAttribution(block, "%n: %s"), "100%s %n: %e");
}

TEST(AttributionTest, MailboxForms) {
  struct Case {
    const char* value;
    const char* name;
    const char* address;
  };
  const Case cases[] = {
      {"\"Jan Kowalski\" <jan@example.org>", "Jan Kowalski", "jan@example.org"},
      {"Jan Kowalski <jan@example.org>", "Jan Kowalski", "jan@example.org"},
      {"jan@example.org", "", "jan@example.org"},
      {"<jan@example.org>", "", "jan@example.org"},
      {"jan@example.org (Jan Kowalski)", "Jan Kowalski", "jan@example.org"},
      {"'Jan' <jan@example.org>", "Jan", "jan@example.org"},
      {"\"Kowalski, Jan\" <jan@example.org>, Ola <ola@x>", "Kowalski, Jan", "jan@example.org"},
      {"\"Jan \\\"JK\\\" K\" <jan@example.org>", "Jan \"JK\" K", "jan@example.org"},
      {"Jan Kowalski", "Jan Kowalski", ""},
      {"Jan <jan@example.org", "Jan", "jan@example.org"},
      {"", "", ""},
  };
  for (const Case& c : cases) {
    const Mailbox m = ParseMailbox(c.value);
    EXPECT_EQ(m.name, c.name) << c.value;
    EXPECT_EQ(m.address, c.address) << c.value;
  }
  // A person without a display name is named by the address.
  EXPECT_EQ(BuildAttribution("From: jan@example.org\r", "%n|%e"),
            "jan@example.org|jan@example.org");
}

TEST(AttributionTest, LocalisedLabelsAndFirstLineWins) {
  const std::string block =
      "----- Wiadomo\x9c\xe6 oryginalna -----\r\nOd: \"Jan\" <jan@x.pl>\r\nDo: Ola <ola@x.pl>\r\n"
      "Data: pi\xb9tek\r\nTemat: Re: a\r\nSubject: later\r\nFROM: other <o@x>\r";
  EXPECT_EQ(BuildAttribution(block, "%n %e %nt %d %s"), "Jan jan@x.pl Ola pi\xb9tek Re: a");
}

}  // namespace
}  // namespace brindle
