// Every page of the options window, loaded together from one settings
// snapshot and applied together into one new snapshot: OK and Apply of any
// view go through Apply here, Cancel simply drops the pages.
#pragma once

#include <array>
#include <memory>
#include <optional>

#include "ui/client_start_page.h"
#include "ui/files_page.h"
#include "ui/filters_page.h"
#include "ui/headers_page.h"
#include "ui/icon_page.h"
#include "ui/miscellaneous_page.h"
#include "ui/quote_headers_page.h"
#include "ui/settings_apply.h"
#include "ui/signatures_page.h"
#include "ui/text_processing_page.h"
#include "ui/tunnels_page.h"

namespace brindle::ui {

class OptionPages {
 public:
  explicit OptionPages(TunnelControl* tunnels = nullptr) : frmTunele(tunnels) {}
  OptionPages(const OptionPages&) = delete;
  OptionPages& operator=(const OptionPages&) = delete;

  HeadersPage frmHeaders{HeadersPage::Kind::kNews};
  HeadersPage frmHeadersMail{HeadersPage::Kind::kMail};
  FiltersPage frmFilters;
  MiscellaneousPage frmMiscellaneous;
  TunnelsPage frmTunele;
  SignaturesPage frmSygnaturka;
  QuoteHeadersPage frmWrotki;
  TextProcessingPage frmTextProcessing;
  FilesPage frmFiles;
  IconPage frmIcon;
  ClientStartPage frmOEStart;

  // The pages in the order of the window's tabs.
  static constexpr size_t kCount = 11;
  std::array<OptionPage*, kCount> Pages();

  // Loads every page from the snapshot (kept as the base of Build).
  void Load(std::shared_ptr<const Settings> snapshot);
  // The first page that refuses its fields, with its message.
  std::optional<std::pair<OptionPage*, PageMessage>> Validate();
  // The loaded snapshot with every page applied.
  Settings Build();

  // Validates, then applies through `applier`; the pages are loaded again
  // from what was published (the tunnels get their new positions). The
  // refusal, if any, is returned and nothing changes.
  std::optional<std::pair<OptionPage*, PageMessage>> Apply(SettingsApplier& applier,
                                                           std::function<void()> tunnelsDone = {});

 private:
  std::shared_ptr<const Settings> base_ = std::make_shared<const Settings>();
};

}  // namespace brindle::ui
