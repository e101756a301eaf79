// The single text steps of QuoteFix that are more than one replace, kept
// apart so each can be checked on its own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brindle {

// Whether every line that follows a CR LF found at or after `from` (0-based)
// begins with ">". An empty line after a final CR LF does not; finding no CR
// LF at all answers true.
bool IsAlreadyQuoted(std::string_view text, size_t from);

// Cuts the quoted signature: from the last CR LF "> -- " CR LF, or failing
// that the last CR LF "> --" CR LF, to the end.
std::string RemoveQuotedSignature(std::string_view quoted);

// Removes "> " lines that stand right before an empty line (one followed by
// a line end), including those that come to stand there as others go; the
// first line of the text is never removed. Same result as replacing
// CR LF "> " CR LF CR LF by CR LF CR LF until none is left, in one pass.
std::string DropQuotedBlanksBeforeEmptyLines(std::string_view quoted);

// Drops every line made only of spaces, ">", "|" and ":" (empty lines too).
std::string CompressVertically(std::string_view quoted);

}  // namespace brindle
