// frmFilters: the switches of the incoming filters and the two numbers of
// the Asian subject filter.
#pragma once

#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class FiltersPage : public OptionPage {
 public:
  // The three option buttons of CharFiltering, in the order of their values.
  enum class CharFilter { optCharFilterNothing, optCharFilterSpaces, optCharFilterRemove };

  // The Asian filter's numbers as Apply stores them. The share is compared
  // with count/length, which cannot exceed 100 %; a subject line longer than
  // 998 characters is not a valid header line, so larger counts mean nothing.
  static constexpr int16_t kPercentageMin = 0, kPercentageMax = 100;
  static constexpr int16_t kCountMin = 0, kCountMax = 998;

  int TitleOffset() const override { return 41; }
  void Load(const Settings& s) override;
  void Apply(Settings& s) const override;

  bool chkBeginFilter = false;
  // Option buttons: selecting one clears the others, so the last one
  // selected is the one Apply stores.
  CharFilter charFilter = CharFilter::optCharFilterNothing;
  bool chkAsianFilter = false;
  std::string txtAFPercentage;
  std::string txtAFMin;
};

}  // namespace brindle::ui
