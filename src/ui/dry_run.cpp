#include "ui/dry_run.h"

#include <algorithm>

#include "proxy/message_pipeline.h"

namespace brindle::ui {
namespace {

std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.emplace_back(line);
    start = end + 1;
  }
  return lines;
}

// The message as a channel hands it to the steps: CR LF lines and the
// terminator. A pasted "." line of its own ends the message there.
std::string AsWireText(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    if (line == ".") break;
    text += line + "\r\n";
  }
  return text + ".\r\n";
}

// Marks the output lines that are not part of the longest common run of
// lines with the input, so an inserted header marks one line, not all
// that follow it.
void MarkChanges(const std::vector<std::string>& before, std::vector<DryRunLine>& after) {
  const size_t n = before.size(), m = after.size();
  // Big pastes would make the table quadratic: compare by position there.
  if (n * m > 4'000'000) {
    for (size_t j = 0; j < m; ++j) after[j].changed = j >= n || before[j] != after[j].text;
    return;
  }
  std::vector<std::vector<uint32_t>> common(n + 1, std::vector<uint32_t>(m + 1, 0));
  for (size_t i = n; i-- > 0;)
    for (size_t j = m; j-- > 0;)
      common[i][j] = before[i] == after[j].text ? common[i + 1][j + 1] + 1
                                                : std::max(common[i + 1][j], common[i][j + 1]);
  size_t i = 0, j = 0;
  while (j < m) {
    if (i < n && before[i] == after[j].text) {
      ++i, ++j;
    } else if (i < n && common[i + 1][j] >= common[i][j + 1]) {
      ++i;
    } else {
      after[j++].changed = true;
    }
  }
}

}  // namespace

std::vector<DryRunLine> DryRun(std::string_view pasted, DryRunKind kind, const Settings& settings) {
  std::vector<std::string> input = Lines(pasted);
  const std::string wire = AsWireText(input);
  MessageSteps steps;  // its own counts: a dry run is not traffic
  const std::string out = kind == DryRunKind::kNews ? RewriteNewsArticle(wire, settings, steps)
                                                    : RewriteMail(wire, settings, steps);
  std::vector<std::string> outLines = Lines(out);
  if (!outLines.empty() && outLines.back() == ".") outLines.pop_back();
  input = Lines(wire);
  input.pop_back();  // the terminator added above
  std::vector<DryRunLine> result;
  for (std::string& line : outLines) result.push_back({std::move(line), false});
  MarkChanges(input, result);
  return result;
}

}  // namespace brindle::ui
