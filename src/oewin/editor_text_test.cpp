#include "oewin/editor_text.h"

#include <gtest/gtest.h>

namespace brindle {
namespace {

TEST(EditorText, EveryKindOfLineEndBecomesOneCrLf) {
  // "\r\r\n" is where a reworked reply's separator block meets its line end.
  EXPECT_EQ(NormaliseLineEnds("a\r\r\nb\r\r\r\nc"), "a\r\nb\r\nc");
  EXPECT_EQ(NormaliseLineEnds("a\rb\nc\r\n\r\nd\r"), "a\r\nb\r\nc\r\n\r\nd\r\n");
  EXPECT_EQ(NormaliseLineEnds("a\r\rb"), "a\r\n\r\nb");
}

TEST(EditorText, HtmlShowsTheSameLinesWithTheMarkerAsAnElement) {
  EXPECT_EQ(PlainTextToHtml("###kursor###\r\n> a<b> & \"c\"\r\r\n>  x"),
            "<SPAN id=kursor></SPAN><BR>&gt; a&lt;b&gt; &amp; &quot;c&quot;<BR>"
            "&gt; &nbsp;x");
  // Leading, repeated and line-ending spaces stay visible; a short "#" run is no marker.
  EXPECT_EQ(PlainTextToHtml("  a   b ###kursor##\r\n-- \r\nx "),
            "&nbsp; a &nbsp; b ###kursor##<BR>--&nbsp;<BR>x&nbsp;");
}

}  // namespace
}  // namespace brindle
