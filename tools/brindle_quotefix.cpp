// brindle-quotefix: fixes the quoting of a reply text, standard input to
// standard output. See kQuoteFixHelp for the arguments.
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "binary_stdio.h"
#include "quotefix_cli.h"
#include "tool_settings.h"

namespace {

bool ReadAll(std::FILE* from, std::string& into) {
  char buffer[1 << 16];
  for (;;) {
    const size_t got = std::fread(buffer, 1, sizeof buffer, from);
    if (got == 0) break;
    into.append(buffer, got);
  }
  return !std::ferror(from);
}

int Fail(const std::string& message, int status) {
  std::fprintf(stderr, "brindle-quotefix: %s\n", message.c_str());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string_view> args(argv + 1, argv + argc);
  const brindle::QuoteFixArgs parsed = brindle::ParseQuoteFixArgs(args);
  if (!parsed.command) {
    Fail(parsed.error + " (see --help)", 2);
    return 2;
  }
  const brindle::QuoteFixCommand& command = *parsed.command;
  if (command.help) {
    std::fwrite(brindle::kQuoteFixHelp.data(), 1, brindle::kQuoteFixHelp.size(), stdout);
    return 0;
  }
  try {
    brindle::Settings settings;
    if (const brindle::Status loaded = brindle::LoadToolSettings(command.settingsDir, settings);
        !loaded.ok()) {
      return Fail(loaded.message(), 2);
    }
    brindle::SetBinaryStdio();
    std::string input;
    if (!ReadAll(stdin, input)) return Fail("cannot read standard input", 1);
    const std::string output = brindle::RunQuoteFix(command, input, settings);
    if (std::fwrite(output.data(), 1, output.size(), stdout) != output.size() ||
        std::fflush(stdout) != 0) {
      return Fail("cannot write standard output", 1);
    }
  } catch (const std::exception& ex) {
    return Fail(ex.what(), 1);
  }
  return 0;
}
