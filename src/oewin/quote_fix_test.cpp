#include "oewin/quote_fix.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

#include "oewin/quote_fix_steps.h"
#include "oewin/quote_fix_text.h"

namespace brindle {
namespace {

std::string Sample() {
  std::ifstream in(std::string(BRINDLE_TEST_DATA_DIR) + "/reply_editor_text.txt", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

size_t Count(std::string_view text, std::string_view what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

std::string Fix(std::string_view subject, std::string_view text, const Settings& s = {},
                bool ctrl = false, MessageKind kind = MessageKind::kNews) {
  PlainQuoteMessage m{std::string(subject), kind};
  return QuoteFix(m, text, QuoteFixOptions{s, ctrl});
}

const std::string kBlock =
    "----- Original Message ----- \r\n"
    "From: \"Jan Kowalski\" <jan@example.org>\r\n"
    "To: \"Marek Nowak\" <marek@example.net>\r\n"
    "Sent: Tuesday, March 13, 2007 9:15 AM\r\n"
    "Subject: Re: spotkanie";
const std::string kBody =
    "> Tak, 10 pasuje. Wezm\xea ze sob\xb9 wydruki, o kt\xf3rych m\xf3wili\x9cmy w zesz\xb3ym\r\n"
    "> tygodniu, i laptopa z prezentacj\xb9.\r\n"
    ">> Czy jutro o 10 pasuje?\r\n"
    ">> Marek";

TEST(QuoteFixTest, SubjectDecidesWhetherTheTextIsReworked) {
  const std::string text = "\r\n-- \r\nMarek\r\n----- Original Message -----\r\n\r\nBody";
  struct Case {
    const char* subject;
    bool reworked;
  };
  for (const Case c : {Case{"Re: a", true}, Case{"RE:a", true}, Case{"rE: a", true},
                       Case{"fw: a", true}, Case{"FW: a", true}, Case{"Fwd: a", false},
                       Case{"Re", false}, Case{"Odp: a", false}, Case{" Re: a", false}}) {
    const std::string out = Fix(c.subject, text);
    EXPECT_EQ(out != text, c.reworked) << c.subject;
    EXPECT_EQ(Count(out, kCursorMarker), c.reworked ? 1u : 0u) << c.subject;
  }
  EXPECT_EQ(Fix("", "\r\n-- \r\nMarek"), "\r\n\r\n-- \r\nMarek");
}

TEST(QuoteFixTest, ClientReplyBottomAndTopPosting) {
  Settings s;  // defaults: bottom posting, both compressions, wrap at 76
  PlainQuoteMessage m{"Re: spotkanie", MessageKind::kMail};
  const std::string bottom = QuoteFix(m, Sample(), QuoteFixOptions{s});
  EXPECT_EQ(bottom, kBlock + "\r\n" + kBody + "\r\n\r\n###kursor###\r\n\r\n-- \r\nMarek");
  EXPECT_EQ(m.QuoteHeader, kBlock);
  EXPECT_EQ(m.QuotedText, kBody);
  EXPECT_EQ(m.TopText, "\r\n-- \r\nMarek");

  s.intBottomPosting = 0;
  EXPECT_EQ(Fix("Re: spotkanie", Sample(), s),
            "###kursor###\r\n\r\n-- \r\nMarek\r\n\r\n" + kBlock + "\r\n" + kBody);
}

TEST(QuoteFixTest, CtrlKeepsTheQuotedSignatureAndOnlyTheLastOneIsCut) {
  Settings s;
  const std::string kept = Fix("Re: spotkanie", Sample(), s, /*ctrl=*/true);
  EXPECT_NE(kept.find("> -- \r\n> Jan Kowalski\r\n> tel. 600 000 000"), std::string::npos);

  // A quoted delimiter inside the body (a quoted quote's signature) stays when a
  // later one ends the message.
  EXPECT_EQ(RemoveQuotedSignature("> a\r\n> -- \r\n> b\r\n> c\r\n> -- \r\n> sig"),
            "> a\r\n> -- \r\n> b\r\n> c");
  EXPECT_EQ(RemoveQuotedSignature("> a\r\n> --\r\n> sig"), "> a");
  // The "> -- " form wins over a later "> --" one.
  EXPECT_EQ(RemoveQuotedSignature("> a\r\n> -- \r\n> b\r\n> --\r\n> c"), "> a");
  // A delimiter that ends the text, or a deeper quoted one, is not a signature.
  EXPECT_EQ(RemoveQuotedSignature("> a\r\n> -- "), "> a\r\n> -- ");
  EXPECT_EQ(RemoveQuotedSignature("> a\r\n>> -- \r\n>> b"), "> a\r\n>> -- \r\n>> b");
}

TEST(QuoteFixTest, WithoutSeparatorTheWholeTextBecomesTheHeader) {
  PlainQuoteMessage m{"Re: x", MessageKind::kNews};
  EXPECT_EQ(QuoteFix(m, "ABCDEF", QuoteFixOptions{Settings{}}), "BCDE\r\n\r\n\r\n###kursor###\r\n");
  EXPECT_EQ(m.QuoteHeader, "BCDE");
  EXPECT_EQ(m.QuotedText, "");
  EXPECT_EQ(m.TopText, "");
  // A final line end leaves an empty line to quote, which compression drops.
  // The CR cut from that line end does not stay alone in the header.
  EXPECT_EQ(Fix("Re: x", "Hello\r\n"), "ello\r\n\r\n\r\n###kursor###\r\n");
  EXPECT_EQ(Fix("Re: x", "A"), "\r\n\r\n\r\n###kursor###\r\n");
}

TEST(QuoteFixTest, SeparatorWithoutBlankLineLeavesTheBodyEmpty) {
  PlainQuoteMessage m{"Re: x", MessageKind::kNews};
  QuoteFix(m, "Sig\r\n----- Original Message -----\r\nFrom: a@b", QuoteFixOptions{Settings{}});
  EXPECT_EQ(m.TopText, "Sig");
  EXPECT_EQ(m.QuoteHeader, "----- Original Message -----\r\nFrom: a@");
  EXPECT_EQ(m.QuotedText, "");
}

// What a mail reply whose original text is `body` gets as its quoted part.
std::string QuotedPart(const std::string& body, const Settings& s) {
  PlainQuoteMessage m{"Re: x", MessageKind::kMail};
  QuoteFix(m, "S\r\n----- Original Message -----\r\nFrom: a@b\r\n\r\n" + body, QuoteFixOptions{s});
  return m.QuotedText;
}

TEST(QuoteFixTest, UnquotedBodyIsQuotedAndAQuotedOneIsNotQuotedAgain) {
  Settings s;
  s.intVerticalQCompression = 0;
  EXPECT_EQ(QuotedPart("one\r\n> two\r\n\r\nthree", s), "> one\r\n>> two\r\n> \r\n> three");
  EXPECT_EQ(QuotedPart("> one\r\n>> two\r\n> three", s), "> one\r\n>> two\r\n> three");
  s.intHorizontalQCompression = 0;
  EXPECT_EQ(QuotedPart("> one\r\n>> two", s), "> one\r\n> > two");
}

TEST(QuoteFixTest, BlankRunsShrinkInTwoPassesOnly) {
  Settings s;
  s.intVerticalQCompression = 0;
  EXPECT_EQ(QuotedPart("a\r\n\r\n\r\n\r\nb", s), "> a\r\n> \r\n> b");
  // Six line ends become three, not two: the replace runs twice, not until done.
  EXPECT_EQ(QuotedPart("a\r\n\r\n\r\n\r\n\r\n\r\nb", s), "> a\r\n> \r\n> \r\n> b");
  // An empty quoted block between blank lines goes altogether.
  EXPECT_EQ(QuotedPart("> a\r\n> \r\n\r\n\r\n\r\n> \r\n> b", s), "> a> b");
}

TEST(QuoteFixTest, CursorMarkerAppearsExactlyOnce) {
  Settings s;
  s.intWrotkaNews = 1;
  s.strWrotkaNews = "###kur%nsor### %n wrote:";
  const std::string block = "----- Original Message -----\r\nFrom: x@y\r\n\r\n";
  for (int bottom : {0, 1}) {
    s.intBottomPosting = static_cast<int16_t>(bottom);
    for (const std::string& text :
         {Sample(), std::string("###kursor###"), "###kur###kursor###sor###\r\n" + block + "q",
          block + "> ###kursor###\r\n> b", std::string()}) {
      EXPECT_EQ(Count(Fix("Re: x", text, s), kCursorMarker), 1u) << text;
    }
  }
}

TEST(QuoteFixTest, AttributionReplacesTheBlockForItsKindOnly) {
  Settings s;
  s.intWrotkaNews = 1;
  s.strWrotkaNews = "%n napisa\xb3:";
  s.intWrotkaMail = 0;
  s.strWrotkaMail = "unused";
  PlainQuoteMessage news{"Re: spotkanie", MessageKind::kNews};
  QuoteFix(news, Sample(), QuoteFixOptions{s});
  EXPECT_EQ(news.QuoteHeader, "Jan Kowalski napisa\xb3:");
  PlainQuoteMessage mail{"Re: spotkanie", MessageKind::kMail};
  QuoteFix(mail, Sample(), QuoteFixOptions{s});
  EXPECT_EQ(mail.QuoteHeader, kBlock);
}

// The plain reading of the rule: replace until no occurrence is left.
std::string DropByLoop(std::string text) {
  for (;;) {
    const std::string next = ReplaceAll(text, "\r\n> \r\n\r\n", "\r\n\r\n");
    if (next == text) return text;
    text = next;
  }
}

TEST(QuoteFixTest, QuotedBlanksBeforeEmptyLinesMatchTheRepeatedReplace) {
  std::mt19937 rng(7);
  const char* pieces[] = {"> ", "", "> a", ">", "\r", "x"};
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    const int lines = 1 + static_cast<int>(rng() % 9);
    for (int i = 0; i < lines; ++i) {
      if (i > 0) text += "\r\n";
      text += pieces[rng() % 6];
    }
    ASSERT_EQ(DropQuotedBlanksBeforeEmptyLines(text), DropByLoop(text)) << text;
  }
}

TEST(QuoteFixTest, VerticalCompressionAndTheAlreadyQuotedWalk) {
  EXPECT_EQ(CompressVertically("> a\r\n> \r\n>>\r\n\r\n : | \r\n>> b"), "> a\r\n>> b");
  EXPECT_EQ(CompressVertically("> \r\n>"), "");
  EXPECT_EQ(CompressVertically("a"), "a");

  EXPECT_TRUE(IsAlreadyQuoted("x\r\n> a\r\n>b", 0));
  EXPECT_FALSE(IsAlreadyQuoted("x\r\n> a\r\nb", 0));
  EXPECT_FALSE(IsAlreadyQuoted("x\r\n> a\r\n", 0));  // an empty last line is not quoted
  EXPECT_TRUE(IsAlreadyQuoted("no line ends", 0));
  EXPECT_TRUE(IsAlreadyQuoted("bad\r\nline\r\n> a", 6));  // starts past the bad line
}

}  // namespace
}  // namespace brindle
