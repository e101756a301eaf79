#include <windows.h>

#include <memory>

#include "core/log.h"
#include "oewin/editor_windows_win32.h"
#include "oewin/note_messages_win32.h"
#include "oewin/note_settings.h"
#include "oewin/note_tracker.h"
#include "oewin/note_watch.h"

namespace brindle {
namespace {

HWND AsWindow(WindowId id) {
  return reinterpret_cast<HWND>(id);
}

class Win32NoteDesktop final : public NoteDesktop {
 public:
  WindowId Foreground() override { return reinterpret_cast<WindowId>(GetForegroundWindow()); }

  std::string ClassName(WindowId window) override {
    char name[256] = {};
    const int n = GetClassNameA(AsWindow(window), name, sizeof name);
    return std::string(name, n > 0 ? static_cast<size_t>(n) : 0);
  }

  void Maximise(WindowId window) override {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    if (!GetWindowPlacement(AsWindow(window), &placement)) return;
    placement.showCmd = SW_MAXIMIZE;
    SetWindowPlacement(AsWindow(window), &placement);
  }

  EditorLookup FindEditor(WindowId window) override {
    const EditorWindow found = FindEditorWindow(AsWindow(window));
    if (found.window == nullptr) return {};
    std::unique_ptr<Editor> editor = OpenEditor(found);
    if (!editor) return {EditorLookup::Outcome::kFailed, nullptr};
    return {EditorLookup::Outcome::kFound, std::move(editor)};
  }

  std::unique_ptr<QuoteMessage> OpenMessage(WindowId window) override {
    if (IsNewsNote(AsWindow(window))) return std::make_unique<CNewsMsg>(AsWindow(window));
    return std::make_unique<CMailMsg>(AsWindow(window));
  }

  void WriteMailCopies(QuoteMessage& message, std::string_view cc, std::string_view bcc) override {
    auto& mail = static_cast<CMailMsg&>(message);  // a mail note's message is a CMailMsg
    if (!cc.empty()) mail.SetCC(cc);
    if (!bcc.empty()) mail.SetBCC(bcc);
  }

  bool CtrlHeld() override { return GetKeyState(VK_CONTROL) < 0; }
};

struct Tracking {
  Win32NoteDesktop desktop;
  NoteTracker tracker{desktop};
  UINT_PTR timer = 0;
  bool ticking = false;
};
Tracking* g_tracking = nullptr;

void CALLBACK OnTick(HWND, UINT, UINT_PTR, DWORD) {
  // The copy fields yield to pending events, which may hold the next tick.
  if (g_tracking == nullptr || g_tracking->ticking) return;
  g_tracking->ticking = true;
  try {
    g_tracking->tracker.Tick(*NoteSettings());
  } catch (const std::exception& e) {
    log::Warning(std::string("note-window tracking: ") + e.what());
  }
  g_tracking->ticking = false;
}

}  // namespace

NoteWindowWatch::NoteWindowWatch() {
  if (g_tracking != nullptr) return;
  owner_ = true;
  g_tracking = new Tracking;
  g_tracking->timer = SetTimer(nullptr, 0, kNoteTickMs, OnTick);
}

NoteWindowWatch::~NoteWindowWatch() {
  if (!owner_) return;
  KillTimer(nullptr, g_tracking->timer);
  delete g_tracking;
  g_tracking = nullptr;
}

}  // namespace brindle
