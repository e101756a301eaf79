#include "quotefix_cli.h"

#include "oewin/quote_fix.h"
#include "oewin/quote_fix_text.h"

namespace brindle {

const std::string_view kQuoteFixHelp =
    "Usage: brindle-quotefix --subject SUBJECT [--news|--mail] [--bottom|--top]\n"
    "                        [--settings-dir DIR] [--ctrl] [--strip-marker]\n"
    "Reads the reply text a mail or news client has prepared (its signature, its\n"
    "\"----- Original Message -----\" block and the quoted body) on standard input\n"
    "and writes it reworked to standard output: the body re-quoted with clean\n"
    "prefixes, re-wrapped and compressed, the quoted signature cut, the block\n"
    "replaced by your attribution line when that is switched on, and the pieces\n"
    "arranged for bottom or top posting. Line ends (LF or CR LF) are kept as\n"
    "they came. Only a subject beginning \"Re:\" or \"Fw:\" marks a reply or\n"
    "forward; any other text passes unchanged (with an empty subject, after one\n"
    "blank line).\n"
    "\n"
    "  --subject SUBJECT   subject of the message being written (required)\n"
    "  --news, --mail      which attribution template to use (default --news)\n"
    "  --bottom, --top     answer below or above the quote (default: the\n"
    "                      BottomPosting setting)\n"
    "  --settings-dir DIR  folder holding OE_Brindle.ini (default: the program's\n"
    "                      settings folder); without the file the defaults hold.\n"
    "                      QuoteFix=0 there makes the text pass unchanged.\n"
    "  --ctrl              keep the quoted signature, as holding Ctrl does\n"
    "  --strip-marker      remove the cursor marker ###kursor### from the output;\n"
    "                      by default it stays so an editor macro can jump to it\n"
    "  --help              show this text\n";

namespace {

// Returns the error text, empty when the argument was taken.
std::string TakeOption(const std::vector<std::string_view>& args, size_t& i, QuoteFixCommand& c,
                       bool& haveSubject) {
  const std::string_view a = args[i];
  const auto value = [&](std::string& into) -> std::string {
    if (i + 1 >= args.size()) return std::string(a) + " needs a value";
    into = std::string(args[++i]);
    return {};
  };
  if (a == "--help" || a == "-h") {
    c.help = true;
  } else if (a == "--subject") {
    haveSubject = true;
    return value(c.subject);
  } else if (a == "--news" || a == "--mail") {
    c.kind = a == "--news" ? MessageKind::kNews : MessageKind::kMail;
  } else if (a == "--bottom" || a == "--top") {
    c.bottomPosting = a == "--bottom";
  } else if (a == "--settings-dir") {
    std::string dir;
    std::string error = value(dir);
    if (error.empty()) c.settingsDir = std::move(dir);
    return error;
  } else if (a == "--ctrl") {
    c.ctrl = true;
  } else if (a == "--strip-marker") {
    c.stripMarker = true;
  } else {
    return "unknown argument: " + std::string(a);
  }
  return {};
}

// LF-only input becomes CR LF for the fixing; lf tells how it came.
std::string ToCrLf(std::string_view input, bool& lf) {
  const size_t firstLf = input.find('\n');
  lf = firstLf != std::string_view::npos ? (firstLf == 0 || input[firstLf - 1] != '\r') : true;
  if (!lf) return std::string(input);
  std::string out;
  out.reserve(input.size() + input.size() / 16);
  for (size_t i = 0; i < input.size(); ++i) {
    if (input[i] == '\n' && (i == 0 || input[i - 1] != '\r')) out.push_back('\r');
    out.push_back(input[i]);
  }
  return out;
}

}  // namespace

QuoteFixArgs ParseQuoteFixArgs(const std::vector<std::string_view>& args) {
  QuoteFixCommand c;
  bool haveSubject = false;
  for (size_t i = 0; i < args.size(); ++i) {
    std::string error = TakeOption(args, i, c, haveSubject);
    if (!error.empty()) return {std::nullopt, std::move(error)};
  }
  if (!c.help && !haveSubject) return {std::nullopt, "--subject is required"};
  return {std::move(c), {}};
}

std::string RunQuoteFix(const QuoteFixCommand& command, std::string_view input,
                        const Settings& settings) {
  if (settings.intQuoteFix == 0) return std::string(input);
  bool lf = false;
  const std::string text = ToCrLf(input, lf);
  Settings s = settings;
  if (command.bottomPosting) s.intBottomPosting = *command.bottomPosting ? 1 : 0;
  PlainQuoteMessage message(command.subject, command.kind);
  std::string out = QuoteFix(message, text, QuoteFixOptions{s, command.ctrl});
  // Nothing back means the text is to stay as the client made it.
  if (out.empty()) return std::string(input);
  if (command.stripMarker) out = ReplaceAll(out, kCursorMarker, "");
  return lf ? ReplaceAll(out, kCrLf, "\n") : out;
}

}  // namespace brindle
