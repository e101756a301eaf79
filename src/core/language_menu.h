// The language menu and the windows that follow it. Choosing a language
// changes every open window at once and is kept in the settings file.
// Everything here runs on the user-interface thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "core/settings.h"
#include "core/settings_store.h"

namespace brindle {

// A window whose captions come from language strings.
class LanguageAware {
 public:
  // Sets every caption of the window from the current language's strings.
  virtual void ChangeLanguage() = 0;

 protected:
  ~LanguageAware() = default;
};

// The open windows that follow the language.
class LanguageWindows {
 public:
  void Register(LanguageAware& window);
  void Unregister(LanguageAware& window);
  bool IsRegistered(const LanguageAware& window) const;

  // Calls ChangeLanguage once on every registered window, in registration
  // order. A window closed (unregistered) by an earlier one's change is
  // skipped; one that fails is logged and the others still change.
  void ChangeLanguage();

 private:
  std::vector<LanguageAware*> windows_;
};

// Registers a window for as long as it lives.
class LanguageRegistration {
 public:
  LanguageRegistration(LanguageWindows& windows, LanguageAware& window);
  ~LanguageRegistration();
  LanguageRegistration(const LanguageRegistration&) = delete;
  LanguageRegistration& operator=(const LanguageRegistration&) = delete;

 private:
  LanguageWindows& windows_;
  LanguageAware& window_;
};

enum class LanguageMenuItem {
  mnuLangPolski,
  mnuLangEnglish,
  mnuLangDeutsch,
  mnuLangSlovene,
  mnuLangFrancais,
  mnuLangSpanish,
};
inline constexpr int kLanguageMenuItemCount = 6;

int16_t LanguageBaseOf(LanguageMenuItem item);
std::optional<LanguageMenuItem> LanguageMenuItemOf(int16_t base);

class LanguageMenu {
 public:
  // Writes the whole settings file (the settings writer's SaveSettings2Ini).
  using SaveSettings = std::function<void(const Settings&)>;

  LanguageMenu(SettingsStore& store, LanguageWindows& windows, SaveSettings save);

  // Start-up: the item of the loaded `intLanguage` is checked (none when the
  // base is unknown).
  void CheckCurrent();

  bool Checked(LanguageMenuItem item) const;

  // The item is chosen: `intLanguage` becomes its base in a new settings
  // snapshot, the check moves to this item, every open window changes its
  // captions, and the settings are saved. Failures are logged, never thrown.
  void Click(LanguageMenuItem item);

 private:
  void CheckOnly(std::optional<LanguageMenuItem> item);

  SettingsStore& store_;
  LanguageWindows& windows_;
  SaveSettings save_;
  std::array<bool, kLanguageMenuItemCount> checked_{};
};

}  // namespace brindle
