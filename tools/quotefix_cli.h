// The brindle-quotefix command: its arguments, and the quote fixing of one
// reply text read from standard input with the line ends it came with.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/settings.h"
#include "oewin/quote_fix_message.h"

namespace brindle {

struct QuoteFixCommand {
  bool help = false;
  std::string subject;
  MessageKind kind = MessageKind::kNews;
  std::optional<bool> bottomPosting;       // --bottom / --top over BottomPosting
  std::optional<std::string> settingsDir;  // --settings-dir
  bool ctrl = false;                       // --ctrl: keep the quoted signature
  bool stripMarker = false;                // --strip-marker
};

struct QuoteFixArgs {
  std::optional<QuoteFixCommand> command;
  std::string error;  // set when command is not
};

QuoteFixArgs ParseQuoteFixArgs(const std::vector<std::string_view>& args);

extern const std::string_view kQuoteFixHelp;

// The reply fixed as the compose window would fix it, in the line ends of
// the input (CR LF when its first line end is CR LF, LF otherwise). With
// QuoteFix switched off in the settings the input comes back unchanged.
std::string RunQuoteFix(const QuoteFixCommand& command, std::string_view input,
                        const Settings& settings);

}  // namespace brindle
