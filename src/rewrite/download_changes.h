// What the filters did to one downloaded message: which steps changed its
// text. The channel fills it while filtering; the filter log writes it as one
// line and the status page counts per step.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brindle {

enum class DownloadStep : uint8_t {
  kControlChars,
  kBeginLines,
  kSubjectMarked,
  kSpammerList,
  kMultipartRelabelled,
};
inline constexpr int kDownloadStepCount = 5;

// The name the filter log writes for a step ("control characters", ...).
const char* DownloadStepName(DownloadStep step);

class DownloadChanges {
 public:
  void Add(DownloadStep step) { bits_ |= Bit(step); }
  bool Has(DownloadStep step) const { return (bits_ & Bit(step)) != 0; }
  bool Any() const { return bits_ != 0; }
  // The changed steps' names in step order, joined by ", ".
  std::string Names() const;
  // The inverse of Names(); unknown names are skipped.
  static DownloadChanges FromNames(std::string_view names);

  bool operator==(const DownloadChanges&) const = default;

 private:
  static uint8_t Bit(DownloadStep step) { return uint8_t(1u << static_cast<unsigned>(step)); }
  uint8_t bits_ = 0;
};

}  // namespace brindle
