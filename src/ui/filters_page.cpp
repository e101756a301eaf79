#include "ui/filters_page.h"

namespace brindle::ui {

void FiltersPage::Load(const Settings& s) {
  chkBeginFilter = s.intBeginFilter == 1;
  // A value outside 0..2 (hand-edited file) selects the first button, so the
  // page never shows no choice at all.
  charFilter = s.intCharFiltering >= 0 && s.intCharFiltering <= 2
                   ? static_cast<CharFilter>(s.intCharFiltering)
                   : CharFilter::optCharFilterNothing;
  chkAsianFilter = s.intAsianFilter == 1;
  txtAFPercentage = std::to_string(s.intAFPercentage);
  txtAFMin = std::to_string(s.intAFMin);
}

void FiltersPage::Apply(Settings& s) const {
  s.intBeginFilter = Flag(chkBeginFilter);
  s.intCharFiltering = static_cast<int16_t>(charFilter);
  s.intAsianFilter = Flag(chkAsianFilter);
  s.intAFPercentage = ClampedNumber(txtAFPercentage, kPercentageMin, kPercentageMax);
  s.intAFMin = ClampedNumber(txtAFMin, kCountMin, kCountMax);
}

}  // namespace brindle::ui
