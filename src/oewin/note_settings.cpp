#include "oewin/note_settings.h"

namespace brindle {
namespace {

NoteSettingsSource& Source() {
  static NoteSettingsSource source;
  return source;
}

}  // namespace

void SetNoteSettingsSource(NoteSettingsSource source) {
  Source() = std::move(source);
}

std::shared_ptr<const Settings> NoteSettings() {
  if (Source())
    if (auto settings = Source()()) return settings;
  static const auto defaults = std::make_shared<const Settings>();
  return defaults;
}

}  // namespace brindle
