// Reads arbitrary bytes as a settings file, writes the result, reads that
// back and writes it again: the two written files must be the same. The one
// deliberate exception is a language the file has no code for (Spanish):
// its line is left unfinished, so the next read falls back to the default
// language and loses the attachment path. From the second write on, the
// files must agree in every case.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/log.h"
#include "core/settings_defaults.h"
#include "core/settings_file.h"
#include "core/settings_keys.h"

namespace {

std::string LoadAndSave(std::string_view bytes, brindle::Settings* loaded = nullptr) {
  brindle::Settings s = brindle::DefaultSettings("fuzz", brindle::kLangEnglish);
  size_t sunk = 0;
  brindle::LoadSettings(bytes, s,
                        [&](const brindle::TunnelRecord&, const brindle::Settings&) { ++sunk; });
  if (sunk != s.tunnels.size()) std::abort();
  std::string text = brindle::SettingsFileText(s);
  if (loaded) *loaded = std::move(s);
  return text;
}

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "settings round trip: %s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool quiet = (brindle::log::SetSink(nullptr), true);
  (void)quiet;
  brindle::Settings first;
  std::string save1 =
      LoadAndSave(std::string_view(reinterpret_cast<const char*>(data), size), &first);
  std::string save2 = LoadAndSave(save1);
  if (!brindle::ini::WrittenLanguageCode(first.intLanguage).empty()) {
    Check(save2 == save1, "second save differs from the first");
  } else {
    Check(LoadAndSave(save2) == save2, "third save differs from the second");
  }
  return 0;
}
