#include "oewin/rewrap.h"

#include <gtest/gtest.h>

namespace brindle {
namespace {

// A sender's paragraph wrapped at 76 that quoting pushed to 79.
const std::string kLongPara =
    ">> Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod tempor\r\n"
    ">> incididunt ut labore et dolore magna aliqua. Ut enim ad minim veniam, quis\r\n"
    ">> nostrud exercitation ullamco.";

TEST(RewrapTest, OverlongParagraphIsReflowedWithItsPrefix) {
  EXPECT_EQ(Rewrap(kLongPara, 76),
            ">> Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod\r\n"
            ">> tempor incididunt ut labore et dolore magna aliqua. Ut enim ad minim\r\n"
            ">> veniam, quis nostrud exercitation ullamco.");
}

TEST(RewrapTest, LinesWithinTheWidthStayByteIdentical) {
  const std::string text =
      "> short line  with  double spaces \r\n> another one\r\n>> deeper\r\n\r\nunquoted "
      "text that is much longer than the wrap width of this test, kept as it is";
  EXPECT_EQ(Rewrap(text, 40), text);
  EXPECT_EQ(Rewrap(kLongPara, 0), kLongPara);  // wrapping off
  EXPECT_EQ(Rewrap("", 76), "");
}

TEST(RewrapTest, NeverJoinsAcrossBoundaries) {
  const std::string filler(70, 'x');
  struct Case {
    const char* why;
    std::string second;  // line after an overlong first line
  };
  const Case cases[] = {
      {"level change", ">> deeper"},
      {"prefix-only line", "> "},
      {"signature delimiter", "> -- "},
      {"dash list item", "> - item"},
      {"star list item", "> * item"},
      {"numbered item", "> 12. item"},
      {"numbered item with bracket", "> 3) item"},
      {"indented line", ">   code"},
      {"unquoted line", "plain"},
  };
  for (const Case& c : cases) {
    const std::string text = "> " + filler + " tail\r\n" + c.second;
    EXPECT_EQ(Rewrap(text, 76), "> " + filler + "\r\n> tail\r\n" + c.second) << c.why;
  }
}

TEST(RewrapTest, ShortLinesAreBreaksOnPurpose) {
  // "Hi," and the sentence ending early were broken by the writer; the
  // overlong line after them is re-flowed on its own.
  const std::string text =
      "> Hi,\r\n> That was all.\r\n> " + std::string(60, 'y') + " one two three four\r\n> end";
  EXPECT_EQ(Rewrap(text, 76), "> Hi,\r\n> That was all.\r\n> " + std::string(60, 'y') +
                                  " one two three\r\n> four end");
}

TEST(RewrapTest, LongWordsAreNeverBroken) {
  const std::string url = "http://example.org/" + std::string(80, 'a');
  EXPECT_EQ(Rewrap("> see " + url + " for more", 76), "> see\r\n> " + url + "\r\n> for more");
  // A prefix longer than the width still carries one word per line.
  EXPECT_EQ(Rewrap(">>>>>> a b c", 5), ">>>>>> a\r\n>>>>>> b\r\n>>>>>> c");
  // An overlong prefix-only line is kept, not lost.
  EXPECT_EQ(Rewrap(">>>>>>>>>>", 4), ">>>>>>>>>>");
}

TEST(RewrapTest, LinesBeforeTheFirstOverlongOneAreKept) {
  // The first line is full but within the width, and joinable to the next.
  const std::string kept = ">  " + std::string(69, 'c');  // double space: not re-spaced
  const std::string text = kept + "\r\n> " + std::string(60, 'a') + " bbbbbbbbbbbbbbbb dd";
  EXPECT_EQ(Rewrap(text, 76), kept + "\r\n> " + std::string(60, 'a') + "\r\n> bbbbbbbbbbbbbbbb dd");
}

}  // namespace
}  // namespace brindle
