#include "core/language_menu.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <string>

#include "core/log.h"
#include "resources/language_tables.h"

namespace brindle {
namespace {

// The items stand in the tables' order.
static_assert(kLanguageMenuItemCount == resources::kLanguageCount);

std::string Failure(std::string_view what, std::exception_ptr error) {
  std::string text(what);
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& e) {
    text += ": ";
    text += e.what();
  } catch (...) {
    text += ": unknown error";
  }
  return text;
}

}  // namespace

void LanguageWindows::Register(LanguageAware& window) {
  if (!IsRegistered(window)) windows_.push_back(&window);
}

void LanguageWindows::Unregister(LanguageAware& window) {
  windows_.erase(std::remove(windows_.begin(), windows_.end(), &window), windows_.end());
}

bool LanguageWindows::IsRegistered(const LanguageAware& window) const {
  return std::find(windows_.begin(), windows_.end(), &window) != windows_.end();
}

void LanguageWindows::ChangeLanguage() {
  // A window's change may open or close other windows: walk a copy, and ask
  // again before each call whether the window is still there.
  const std::vector<LanguageAware*> snapshot = windows_;
  for (LanguageAware* window : snapshot) {
    if (!IsRegistered(*window)) continue;
    try {
      window->ChangeLanguage();
    } catch (...) {
      log::Error(Failure("a window could not change its language", std::current_exception()));
    }
  }
}

LanguageRegistration::LanguageRegistration(LanguageWindows& windows, LanguageAware& window)
    : windows_(windows), window_(window) {
  windows_.Register(window_);
}

LanguageRegistration::~LanguageRegistration() {
  windows_.Unregister(window_);
}

int16_t LanguageBaseOf(LanguageMenuItem item) {
  return resources::kLanguageTables[static_cast<size_t>(item)].base;
}

std::optional<LanguageMenuItem> LanguageMenuItemOf(int16_t base) {
  const auto& tables = resources::kLanguageTables;
  auto found = std::find_if(tables.begin(), tables.end(),
                            [base](const auto& table) { return table.base == base; });
  if (found == tables.end()) return std::nullopt;
  return static_cast<LanguageMenuItem>(found - tables.begin());
}

LanguageMenu::LanguageMenu(SettingsStore& store, LanguageWindows& windows, SaveSettings save)
    : store_(store), windows_(windows), save_(std::move(save)) {}

void LanguageMenu::CheckCurrent() {
  CheckOnly(LanguageMenuItemOf(store_.Current()->intLanguage));
}

bool LanguageMenu::Checked(LanguageMenuItem item) const {
  return checked_[static_cast<size_t>(item)];
}

void LanguageMenu::CheckOnly(std::optional<LanguageMenuItem> item) {
  checked_.fill(false);
  if (item) checked_[static_cast<size_t>(*item)] = true;
}

void LanguageMenu::Click(LanguageMenuItem item) {
  std::shared_ptr<const Settings> chosen;
  try {
    auto next = std::make_shared<Settings>(*store_.Current());
    next->intLanguage = LanguageBaseOf(item);
    chosen = next;
    store_.Replace(chosen);
  } catch (...) {
    log::Error(Failure("the language could not be changed", std::current_exception()));
    return;
  }
  CheckOnly(item);
  windows_.ChangeLanguage();
  if (!save_) return;
  try {
    save_(*chosen);
  } catch (...) {
    log::Error(Failure("the settings could not be saved", std::current_exception()));
  }
}

}  // namespace brindle
