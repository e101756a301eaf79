#include <gtest/gtest.h>

#include <string>

#include "core/log.h"
#include "rewrite/outgoing_headers.h"

namespace brindle {
namespace {

// The shortening as the original client companion does it, one rebuild of
// the line per dropped id; the oracle for the single-walk version.
std::string ShortenByPasses(std::string line, int limit) {
  while (static_cast<int>(line.size()) > limit) {
    size_t a = line.find('>') + 2;  // npos + 2 == 1, as a missing '>' gives there
    size_t second = line.find('>', a - 1);
    size_t b = second == std::string::npos ? 0 : second + 1;
    line = line.substr(0, a) + " " + line.substr(b);
  }
  return line;
}

std::string Id(int n) {
  // 40 characters, like the ids of a busy news server.
  std::string id = "<" + std::to_string(100000 + n) + "$1bd$1@news.example.org.invalid";
  id.resize(39, 'x');
  return id + ">";
}

std::string Article(const std::string& referencesLine) {
  return "From: \"Marek Nowak\" <marek@example.net>\r\nSubject: Re: x\r\n" + referencesLine +
         "\nX-Newsreader: OE\r\n\r\nReferences: <in@body> <b@b> <c@c>\r\n.\r\n";
}

TEST(CutReferences, DropsIdsFromTheSecondOnward) {
  // One pass: A, three blanks, C.
  std::string abc = "References: <A> <B> <C>\r";
  EXPECT_EQ(CutReferences(Article(abc), abc.size() - 1), Article("References: <A>   <C>\r"));
  // The measured length counts the name and the carriage return.
  EXPECT_EQ(CutReferences(Article(abc), abc.size()), Article(abc));

  std::string line = "References:";
  for (int i = 0; i < 14; ++i) line += " " + Id(i);
  line += "\r";
  ASSERT_GE(line.size(), 585u);
  for (int limit : {500, 590, 300, 100}) {
    std::string expected = ShortenByPasses(line, limit);
    std::string cut = CutReferences(Article(line), limit);
    EXPECT_EQ(cut, Article(expected)) << limit;
    EXPECT_LE(static_cast<int>(expected.size()), limit);
    EXPECT_EQ(expected.substr(0, 53), "References: " + Id(0) + " ");
    EXPECT_EQ(expected.substr(expected.size() - 41), Id(13) + "\r") << limit;
  }
}

TEST(CutReferences, IrregularSeparatorsMatchThePassByPassResult) {
  const std::string lines[] = {
      "References: <a@b>\t<c@d>  <e@f><g@h>\r",          // tab, two blanks, none
      "References: <a@b> x<c@d> <e> <f> <g> <h> <i>\r",  // junk between ids
      "References: <a@b> > <c@d> <e@f> <g@h> <i@j>\r",   // stray '>' two places on
  };
  for (const std::string& line : lines) {
    for (int limit = 20; limit < static_cast<int>(line.size()); ++limit) {
      EXPECT_EQ(CutReferences(Article(line), limit), Article(ShortenByPasses(line, limit)))
          << line << " limit " << limit;
    }
  }
}

TEST(CutReferences, LinesThatCannotBeShortenedAreLeftAlone) {
  const std::string unchanged[] = {
      // no References header, or not at a line start
      "From: a <a@b.c>\r\nSubject: x\r\n\r\nbody\r\n.\r\n",
      "From: a <a@b.c>\r\nX-References: <a@b> <c@d> <e@f>\r\n\r\nbody\r\n.\r\n",
      // one id longer than the limit
      Article("References: <" + std::string(700, 'q') + "@example.org>\r"),
      // ids without '>' at all, and a doubled '>' after the first id
      Article("References: " + std::string(600, 'z') + "\r"),
      Article("References: <a@b>> " + std::string(600, 'z') + " <c@d>\r"),
  };
  for (const std::string& text : unchanged) {
    log::Capture log;
    EXPECT_EQ(CutReferences(text, 500), text);
    EXPECT_NE(log.Text(), "");
  }
  // A limit so small that even the first id alone is too long.
  std::string line = "References: <a@b> <c@d> <e@f>\r";
  EXPECT_EQ(CutReferences(Article(line), 0), Article(line));
  EXPECT_EQ(CutReferences(Article(line), -5), Article(line));
}

TEST(CutReferences, HugeLineGoesThroughInOneWalk) {
  // 200,000 ids: rebuilding the line once per dropped id would not finish.
  std::string line = "References:";
  for (int i = 0; i < 200000; ++i) line += " " + Id(i);
  line += "\r";
  std::string cut = CutReferences(Article(line), 500);
  EXPECT_EQ(cut,
            Article("References: " + Id(0) + "  " + std::string(line.end() - 411, line.end())));
}

}  // namespace
}  // namespace brindle
