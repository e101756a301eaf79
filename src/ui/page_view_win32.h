// The Win32 side of an option page: a child dialog made from its resource
// template inside the options window's tab. A view only moves values
// between its controls and its page model and sets its captions; every rule
// lives in the model. Settings texts go through the "A" functions (the
// system's code page, as the file holds them); captions are UTF-8 language
// strings shown through the "W" functions.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/settings_store.h"

namespace brindle::ui {

class PageView {
 public:
  PageView(const SettingsStore& store, int templateId) : store_(store), templateId_(templateId) {}
  virtual ~PageView();
  PageView(const PageView&) = delete;
  PageView& operator=(const PageView&) = delete;

  // Makes the page's dialog as a hidden child of `parent`.
  bool Create(HWND parent);
  HWND Handle() const { return window_; }

  // Model to controls; controls to model (what has not been stored at once).
  virtual void Show() = 0;
  virtual void Collect() {}
  virtual void ChangeLanguage() = 0;

 protected:
  virtual void Command(int /*id*/, int /*code*/) {}
  virtual void Scroll(HWND /*bar*/, int /*code*/) {}

  std::string_view Text(int offset) const;
  void Caption(int id, int offset) const;
  void Caption(int id, const std::string& utf8) const;
  void SetText(int id, const std::string& bytes) const;
  std::string GetText(int id) const;
  void SetCheck(int id, bool on) const;
  bool GetCheck(int id) const;
  void Box(int textOffset, int titleOffset, const std::string& detail = {}) const;

  const SettingsStore& store_;
  HWND window_ = nullptr;
  bool showing_ = false;  // Show is filling the controls: their change events are ours

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
  int templateId_;
};

// A page whose controls map one to one onto model fields.
class BoundPageView : public PageView {
 public:
  struct Bindings {
    std::vector<std::pair<int, bool*>> checks;
    std::vector<std::pair<int, std::string*>> texts;
    std::vector<std::pair<int, int>> captions;      // control, language string offset
    std::function<void()> show, collect, language;  // whatever is not one to one
  };
  BoundPageView(const SettingsStore& store, int templateId, Bindings bindings)
      : PageView(store, templateId), b_(std::move(bindings)) {}

  void Show() override;
  void Collect() override;
  void ChangeLanguage() override;
  // Adds what is not one to one (radio groups, composed captions).
  void Bind(std::function<void()> show, std::function<void()> collect,
            std::function<void()> language = {}) {
    if (show) b_.show = std::move(show);
    if (collect) b_.collect = std::move(collect);
    if (language) b_.language = std::move(language);
  }

  // For the extra functions: the radio button of a group that is selected.
  int Selected(std::initializer_list<int> ids) const;
  void Select(std::initializer_list<int> ids, int id) const;

 private:
  Bindings b_;
};

// Language string without its accelerator mark and trailing "..."; as tab
// and menu captions use them.
std::wstring PlainCaption(std::string_view text);

}  // namespace brindle::ui
