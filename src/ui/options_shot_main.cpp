// options_shot LANGUAGE OUTDIR: opens the options window in one language on
// sample settings and saves every tab as it shows on screen, as
// OUTDIR/NN.bmp, for the pictures in docs/ (scripts/screenshot-options.sh).
#include <windows.h>

#include <cstdio>
#include <string>

#include "core/language.h"
#include "oewin/window_picture_win32.h"
#include "ui/options_window_win32.h"
#include "ui/page_views_win32.h"

namespace {

brindle::Settings Sample(int16_t language) {
  using namespace brindle;
  Settings s;
  s.intLanguage = language;
  s.strIniPath = "Z:\\nonexistent\\OE_Brindle.ini";  // the pictures never save
  s.intXNewsreader = 1;
  s.strXNewsreader = "my newsreader 1.0";
  s.intAsianFilter = 1;
  s.intCharFiltering = 1;
  s.newsHeaders[0] = {"X-Face-URL", "Subject", "https://example.org/~jan/face.png"};
  s.newsHeaders[1] = {"X-No-Archive", "", "yes"};
  s.mailHeaders[0] = {"X-Operating-System", "From", "Debian"};
  s.strWrotkaNews = "%n <%e> wrote:";
  s.intWrotkaNews = 1;
  s.strWrotkaMail = "On %d, %n wrote:";
  s.strStyles = "C:\\OE Brindle\\styles.css";
  s.strSpammers = "C:\\OE Brindle\\spammers.txt";
  s.strSpammerAddress = "spammer@example.invalid";
  s.strLog = "C:\\OE Brindle\\filtered.log";
  s.strCCAddress = "archive@example.org";
  s.signatures[0] = {
      "Jan Kowalski\r\nhttps://example.org/~jan", "Jan Kowalski", "jan@example.org", 1, false, {}};
  s.signatures[1] = {"-- \r\nwork",
                     "Jan Kowalski",
                     "jan@work.example",
                     0,
                     true,
                     {"C:\\sig\\one.txt", "C:\\sig\\two.txt"}};
  s.tunnels = {{"news.example.org", 1119, 119, true, false, kTypeNntp},
               {"mail.example.org", 1110, 995, true, true, kTypePop3},
               {"mail.example.org", 1025, 465, false, true, kTypeSmtp}};
  return s;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: options_shot LANGUAGE OUTDIR\n");
    return 2;
  }
  const auto base = brindle::BaseFromTwoLetterCode(argv[1]);
  if (!base) {
    std::fprintf(stderr, "options_shot: unknown language '%s'\n", argv[1]);
    return 2;
  }
  brindle::SettingsStore store(Sample(*base));
  brindle::ui::SettingsApplier applier(store, nullptr,
                                       [](const brindle::Settings&) { return true; });
  brindle::LanguageWindows windows;
  brindle::ui::OptionsWindow options(applier, windows);
  for (size_t tab = 0; tab < brindle::ui::kTabCount; ++tab) {
    if (!options.Open(nullptr, tab)) return 1;
    brindle::DispatchMessagesFor(tab == 0 ? 1500 : 400);
    char name[16];
    std::snprintf(name, sizeof name, "%02u.bmp", static_cast<unsigned>(tab));
    // The client area: without a window manager there is no frame to show.
    if (!brindle::SaveWindowPicture(options.Handle(), brindle::WindowPart::kClientArea,
                                    std::string(argv[2]) + "\\" + name))
      return 1;
  }
  return 0;
}
