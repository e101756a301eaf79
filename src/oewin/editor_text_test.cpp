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
  // Leading and repeated spaces stay visible; a lone "#" run is no marker.
  EXPECT_EQ(PlainTextToHtml("  a   b ###kursor##"), "&nbsp; a &nbsp; b ###kursor##");
}

}  // namespace
}  // namespace brindle
