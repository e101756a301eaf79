// The settings snapshot that the note-window code (tracking, the ROT coder's
// captions) reads on the client's thread. The program names the source once
// at start; until then the defaults hold.
#pragma once

#include <functional>
#include <memory>

#include "core/settings.h"

namespace brindle {

using NoteSettingsSource = std::function<std::shared_ptr<const Settings>()>;

void SetNoteSettingsSource(NoteSettingsSource source);
std::shared_ptr<const Settings> NoteSettings();

}  // namespace brindle
