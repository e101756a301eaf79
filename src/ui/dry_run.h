// The dry run: a pasted article or mail as the current settings would send
// it (news: signature, References, identification and custom headers; mail:
// identification and custom headers), with the lines that differ from the
// pasted text marked. Nothing is counted and nothing leaves the program.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/settings.h"

namespace brindle::ui {

enum class DryRunKind { kNews, kMail };

struct DryRunLine {
  std::string text;  // without its line end
  bool changed = false;
};

// `pasted` may end its lines with LF or CR LF and need not carry the
// terminating "." line.
std::vector<DryRunLine> DryRun(std::string_view pasted, DryRunKind kind, const Settings& settings);

}  // namespace brindle::ui
