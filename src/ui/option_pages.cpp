#include "ui/option_pages.h"

namespace brindle::ui {

std::array<OptionPage*, OptionPages::kCount> OptionPages::Pages() {
  return {&frmHeaders, &frmHeadersMail, &frmFilters, &frmMiscellaneous,
          &frmTunele,  &frmSygnaturka,  &frmWrotki,  &frmTextProcessing,
          &frmFiles,   &frmIcon,        &frmOEStart};
}

void OptionPages::Load(std::shared_ptr<const Settings> snapshot) {
  base_ = std::move(snapshot);
  for (OptionPage* page : Pages()) page->Load(*base_);
}

std::optional<std::pair<OptionPage*, PageMessage>> OptionPages::Validate() {
  for (OptionPage* page : Pages()) {
    if (auto message = page->Validate()) return std::make_pair(page, *message);
  }
  return std::nullopt;
}

Settings OptionPages::Build() {
  Settings next = *base_;
  for (OptionPage* page : Pages()) page->Apply(next);
  return next;
}

std::optional<std::pair<OptionPage*, PageMessage>> OptionPages::Apply(
    SettingsApplier& applier, std::function<void()> tunnelsDone) {
  if (auto refusal = Validate()) return refusal;
  applier.Apply(Build(), frmTunele.Origins(), std::move(tunnelsDone));
  // Keep the slider and the selected sender where the user left them.
  const int newsSlider = frmHeaders.vscSuwak(), mailSlider = frmHeadersMail.vscSuwak();
  const int sender = frmSygnaturka.selected();
  Load(applier.store().Current());
  frmHeaders.SetSlider(newsSlider);
  frmHeadersMail.SetSlider(mailSlider);
  frmSygnaturka.Select(sender);
  return std::nullopt;
}

}  // namespace brindle::ui
