// Quote prefixes: the run of ">", "|", ":" and spaces in front of a quoted
// line, its quote level, and the normaliser that rewrites every prefix in
// one house style.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brindle {

struct QuotePrefix {
  size_t length = 0;       // bytes of the line that belong to the prefix
  int level = 0;           // how many quote marks it holds
  bool wholeLine = false;  // the line is made of prefix characters only
};

// Finds the prefix of one line (no line end in it).
//
// The prefix is the leading run of spaces, ">", "|" and ":", with two cuts:
// - a ":" or "|" that ends the run and is directly followed by other text
//   belongs to that text, not to the quote: "Re: foo", ":-)" or "|foo" at the
//   start of a line are not quotes, and "> :-)" is one level, not two;
// - a double space ends the prefix: what follows it is the writer's own
//   indentation and stays as it is.
// The level is the number of ">", "|" and ":" marks left in the prefix.
QuotePrefix FindQuotePrefix(std::string_view line);

// The prefix written for a level: ">>> " when compressed, "> > > " when not;
// level 0 gives none.
std::string MakeQuotePrefix(int level, bool horizontalCompression);

// Rewrites the prefix of every CR LF separated line from its level; a line
// made only of prefix characters becomes the new prefix alone, a line
// without a prefix stays as it is.
std::string NormaliseQuotePrefixes(std::string_view text, bool horizontalCompression);

}  // namespace brindle
