#include "app/program_services.h"

namespace brindle::app {

LoadedSettings ProgramServices::LoadSettings(int16_t defaultLanguage, const TunnelSink& sink) {
  // A tunnel started while the file is read shows its error box in the
  // language in force; until the file is read that is the user's own.
  Settings initial = *store_.Current();
  initial.intLanguage = defaultLanguage;
  store_.Replace(std::move(initial));
  LoadedSettings loaded = hooks_.loadSettings(defaultLanguage, sink);
  store_.Replace(loaded.settings);
  return loaded;
}

}  // namespace brindle::app
