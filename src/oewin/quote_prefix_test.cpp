#include "oewin/quote_prefix.h"

#include <gtest/gtest.h>

namespace brindle {
namespace {

TEST(QuotePrefixTest, LevelsAndBothCompressionModes) {
  const struct {
    const char* line;
    int level;
    const char* compressed;  // normalised with horizontal compression on
    const char* spaced;      // and off
  } cases[] = {
      {"> text", 1, "> text", "> text"},
      {">text", 1, "> text", "> text"},
      {">> text", 2, ">> text", "> > text"},
      {"> > > text", 3, ">>> text", "> > > text"},
      {"| > : text", 3, ">>> text", "> > > text"},
      {">|>text", 3, ">>> text", "> > > text"},
      {">", 1, "> ", "> "},
      {"> >", 2, ">> ", "> > "},
      {">> ", 2, ">> ", "> > "},
      {"> :", 2, ">> ", "> > "},  // nothing follows the ":", so it is a mark
      {"plain text", 0, "plain text", "plain text"},
      {"", 0, "", ""},
      // A colon or bar touching text is not a quote mark.
      {"Re: foo", 0, "Re: foo", "Re: foo"},
      {":-) nice", 0, ":-) nice", ":-) nice"},
      {"|foo|bar|", 0, "|foo|bar|", "|foo|bar|"},
      {"> :-)", 1, "> :-)", "> :-)"},
      {">:-)", 1, "> :-)", "> :-)"},
      {">> |table|", 2, ">> |table|", "> > |table|"},
      {": quoted with a colon", 1, "> quoted with a colon", "> quoted with a colon"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FindQuotePrefix(c.line).level, c.level) << c.line;
    EXPECT_EQ(NormaliseQuotePrefixes(c.line, true), c.compressed) << c.line;
    EXPECT_EQ(NormaliseQuotePrefixes(c.line, false), c.spaced) << c.line;
  }
}

TEST(QuotePrefixTest, DoubleSpaceEndsThePrefixAndKeepsTheIndentation) {
  EXPECT_EQ(NormaliseQuotePrefixes(">>  > code", true), ">>   > code");
  EXPECT_EQ(NormaliseQuotePrefixes(">  indented", false), ">   indented");
  EXPECT_EQ(NormaliseQuotePrefixes("    indented", true), "    indented");
  // A prefix-only line loses what stands after its double space.
  EXPECT_EQ(NormaliseQuotePrefixes("> >  >", true), ">> ");
  // A single leading space is no quote: it goes.
  EXPECT_EQ(NormaliseQuotePrefixes(" text", true), "text");
}

TEST(QuotePrefixTest, WorksLineByLineAndKeepsLineEnds) {
  EXPECT_EQ(NormaliseQuotePrefixes(">a\r\n>>b\r\nc\r\n", true), "> a\r\n>> b\r\nc\r\n");
  // A lone LF or CR is not a line end here.
  EXPECT_EQ(NormaliseQuotePrefixes(">a\n>b\r>c", true), "> a\n>b\r>c");
}

}  // namespace
}  // namespace brindle
