// brindle-rot [SHIFT]: rotates the letters of standard input by SHIFT
// (default 13) and writes the result to standard output.
#include <cstdio>
#include <string>
#include <string_view>

#include "binary_stdio.h"
#include "oewin/rot.h"

namespace {

constexpr std::string_view kHelp =
    "Usage: brindle-rot [SHIFT]\n"
    "Rotates the letters A-Z and a-z of standard input by SHIFT places (default 13,\n"
    "ROT13) and writes the result to standard output. Every other byte passes\n"
    "unchanged, so any text or binary data of any size can go through.\n"
    "A negative SHIFT decodes: 'brindle-rot 3 | brindle-rot -3' gives the input back.\n"
    "SHIFT is read like the ROT window's shift box: its leading number counts\n"
    "(\"5abc\" is 5, \"2.5\" is 2, \"3.5\" is 4), a text without one is 0, and values\n"
    "beyond +-2000000000 are held at that limit.\n";

int Usage(std::FILE* to, int status) {
  std::fwrite(kHelp.data(), 1, kHelp.size(), to);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    std::fputs("brindle-rot: too many arguments\n", stderr);
    return Usage(stderr, 2);
  }
  int32_t shift = 13;
  if (argc == 2) {
    const std::string_view arg = argv[1];
    if (arg == "--help" || arg == "-h") return Usage(stdout, 0);
    shift = brindle::ShiftFromText(arg);
  }
  brindle::SetBinaryStdio();
  constexpr size_t kChunk = 1 << 16;
  std::string chunk;
  for (;;) {
    chunk.resize(kChunk);
    const size_t got = std::fread(chunk.data(), 1, chunk.size(), stdin);
    if (got == 0) break;
    chunk.resize(got);
    brindle::RotateInPlace(chunk, shift);
    if (std::fwrite(chunk.data(), 1, chunk.size(), stdout) != chunk.size()) {
      std::fputs("brindle-rot: cannot write standard output\n", stderr);
      return 1;
    }
  }
  if (std::ferror(stdin)) {
    std::fputs("brindle-rot: cannot read standard input\n", stderr);
    return 1;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
