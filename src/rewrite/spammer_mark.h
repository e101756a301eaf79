// The mark on a downloaded message from a listed spammer, made so that one
// rule of the mail/news client catches it: "[SPAM] " before the subject, as
// the subject filter marks, and the mailbox in From replaced by the user's
// SpammerAddress. The From field as it came is kept, whole, in a field of
// our own right after it, so nothing of the original is lost.
#pragma once

#include <string>
#include <string_view>

namespace brindle {

inline constexpr std::string_view kOriginalFromField = "X-Brindle-Original-From";

// A subject already starting with "[SPAM]" is not marked twice; a message
// without a Subject field gets "Subject: [SPAM]". An empty spammerAddress
// leaves From alone. The text is copied once, whatever its size.
std::string MarkListedSpammer(std::string&& text, std::string_view spammerAddress);

}  // namespace brindle
