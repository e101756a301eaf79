// What every page of the options window has in common, for every view of it
// (the Win32 dialogs and the browser pages alike): a working copy of the
// settings it edits, filled by Load from a settings snapshot, checked by
// Validate, and written by Apply into a new Settings that the apply path
// publishes. Pages know nothing of windows; texts are byte strings in the
// settings' code page, as the settings file holds them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/settings.h"

namespace brindle::ui {

// A box a page asks its view to show: the text and the title as language
// string offsets (the title goes after "OE Brindle - "), and an optional
// detail the view puts after the text.
struct PageMessage {
  int text = 0;
  int title = 0;
  std::string detail;
  bool operator==(const PageMessage&) const = default;
};

class OptionPage {
 public:
  virtual ~OptionPage() = default;
  // The language string offset of the page's title (its tab's caption).
  virtual int TitleOffset() const = 0;
  // Fills the working copy from the snapshot; earlier edits are dropped.
  virtual void Load(const Settings& s) = 0;
  // The first complaint about the working copy, or nothing when Apply may run.
  virtual std::optional<PageMessage> Validate() const { return std::nullopt; }
  // Writes the working copy into `s` (a copy of the snapshot being replaced).
  virtual void Apply(Settings& s) const = 0;
};

// A number typed into a text box: the decimal number the text starts with
// (0 when it starts with none), rounded and clamped into lo..hi. Clamping
// rather than refusing keeps the box's value whatever was typed.
int16_t ClampedNumber(std::string_view text, int16_t lo, int16_t hi);

inline int16_t Flag(bool on) {
  return on ? 1 : 0;
}

}  // namespace brindle::ui
