#include "rewrite/download_changes.h"

#include <string_view>

namespace brindle {

const char* DownloadStepName(DownloadStep step) {
  switch (step) {
    case DownloadStep::kControlChars:
      return "control characters";
    case DownloadStep::kBeginLines:
      return "begin lines";
    case DownloadStep::kSubjectMarked:
      return "subject marked";
    case DownloadStep::kSpammerList:
      return "spammer list";
    case DownloadStep::kMultipartRelabelled:
      return "multipart relabelled";
  }
  return "";
}

std::string DownloadChanges::Names() const {
  std::string names;
  for (int i = 0; i < kDownloadStepCount; ++i) {
    const auto step = static_cast<DownloadStep>(i);
    if (!Has(step)) continue;
    if (!names.empty()) names += ", ";
    names += DownloadStepName(step);
  }
  return names;
}

DownloadChanges DownloadChanges::FromNames(std::string_view names) {
  DownloadChanges changes;
  while (!names.empty()) {
    const size_t comma = names.find(',');
    std::string_view name = names.substr(0, comma);
    names = comma == std::string_view::npos ? std::string_view() : names.substr(comma + 1);
    while (name.starts_with(' ')) name.remove_prefix(1);
    while (name.ends_with(' ')) name.remove_suffix(1);
    for (int i = 0; i < kDownloadStepCount; ++i) {
      const auto step = static_cast<DownloadStep>(i);
      if (name == DownloadStepName(step)) changes.Add(step);
    }
  }
  return changes;
}

}  // namespace brindle
