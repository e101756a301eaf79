// Realistic message texts of a given size for the benchmarks: headers as the
// client and the servers write them, 8-bit Polish body text with quoted
// lines, two uuencoded blocks and a long References line. Deterministic, so
// every run measures the same bytes.
#pragma once

#include <cstddef>
#include <string>

#include "core/settings.h"

namespace brindle::bench {

inline constexpr size_t kSmall = 10 * 1024;
inline constexpr size_t kMedium = 1024 * 1024;
inline constexpr size_t kLarge = 50 * 1024 * 1024;

// NNTP answer to ARTICLE: "220 ..." line, text/plain article, "\r\n.\r\n".
std::string DownloadedArticle(size_t bytes);
// POP3 answer to RETR: "+OK" line, a signed multipart mail, "\r\n.\r\n".
std::string DownloadedMail(size_t bytes);
// An article as the client hands it over after POST.
std::string OutgoingArticle(size_t bytes);
// A mail as the client hands it over after DATA.
std::string OutgoingMail(size_t bytes);

// The plain text of a reply window's editor as the client fills it: the
// user's signature, the client's separator block, then the quoted message.
std::string ReplyEditorText(size_t bytes);

// Settings under which every outgoing step has work to do: identification
// headers replaced, three custom headers per table, a signature for the
// generated sender.
Settings RewritingSettings();

}  // namespace brindle::bench
