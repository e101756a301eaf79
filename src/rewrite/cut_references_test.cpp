#include <gtest/gtest.h>

#include "core/log.h"
#include "rewrite/outgoing_headers.h"

namespace brindle {
namespace {

// The shortening as first written: one rebuild of the line per dropped id.
// The oracle for the single walk.
std::string ShortenByPasses(std::string line, int limit) {
  while (static_cast<int>(line.size()) > limit) {
    size_t a = line.find('>') + 2;
    size_t second = line.find('>', a - 1);
    line = line.substr(0, a) + " " + line.substr(second == std::string::npos ? 0 : second + 1);
  }
  return line;
}

std::string Id(int n) {  // 40 characters
  std::string id = "<" + std::to_string(100000 + n) + "$1bd$1@news.example.org";
  return id + std::string(39 - id.size(), 'x') + ">";
}

std::string Article(const std::string& referencesLine) {
  return "From: <marek@example.net>\r\nSubject: Re: x\r\n" + referencesLine +
         "\nX-Newsreader: OE\r\n\r\nReferences: <in@body> <b@b> <c@c>\r\n.\r\n";
}

TEST(CutReferences, SameResultAsDroppingOneIdPerPass) {
  std::string ids = "References:";
  for (int i = 0; i < 14; ++i) ids += " " + Id(i);
  ids += "\r";  // 586 characters
  const std::string lines[] = {
      ids,
      "References: <A> <B> <C>\r",
      "References: <a@b>\t<c@d>  <e@f><g@h>\r",
      "References: <a@b> x<c@d> <e> <f> <g> <h> <i>\r",
      "References: <a@b> > <c@d> <e@f> <g@h> <i@j>\r",  // one pass keeps the length
  };
  for (const std::string& line : lines) {
    // From the shortest reachable: the first id, its separator, one blank, CR.
    for (int limit = static_cast<int>(line.find('>')) + 4; limit <= static_cast<int>(line.size());
         ++limit) {
      EXPECT_EQ(CutReferences(Article(line), limit), Article(ShortenByPasses(line, limit)))
          << line << " limit " << limit;
    }
  }
  EXPECT_EQ(CutReferences(Article(lines[1]), 23), Article("References: <A>   <C>\r"));
}

TEST(CutReferences, LinesThatCannotBeShortenedAreLeftAlone) {
  const std::string three = Article("References: <a@b> <c@d> <e@f>\r");
  const struct {
    std::string text;
    int limit;
  } cases[] = {
      {"From: <a@b.c>\r\nSubject: x\r\n\r\nbody\r\n.\r\n", 10},
      {"From: <a@b.c>\r\nX-References: <a@b> <c@d> <e@f>\r\n\r\nbody\r\n.\r\n", 10},
      {Article("References: <" + std::string(700, 'q') + "@example.org>\r"), 500},
      {Article("References: " + std::string(600, 'z') + "\r"), 500},
      {Article("References: <a@b>> " + std::string(600, 'z') + " <c@d>\r"), 500},
      {three, 19},
      {three, -5},
  };
  for (const auto& c : cases) {
    log::Capture log;
    EXPECT_EQ(CutReferences(std::string(c.text), c.limit), c.text);
    EXPECT_NE(log.Text(), "") << c.text;
  }
}

TEST(CutReferences, HugeLineGoesThroughInOneWalk) {
  // 200,000 ids: one rebuild of 8 MB per dropped id would not finish.
  std::string line = "References:";
  for (int i = 0; i < 200000; ++i) line += " " + Id(i);
  line += "\r";
  EXPECT_EQ(CutReferences(Article(line), 500),
            Article("References: " + Id(0) + "  " + line.substr(line.size() - 411)));
}

}  // namespace
}  // namespace brindle
