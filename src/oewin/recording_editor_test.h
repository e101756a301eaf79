// An editor for tests: holds a text and a selection and records what was
// asked of it.
#pragma once

#include <string>
#include <vector>

#include "oewin/editor.h"

namespace brindle::testing {

class RecordingEditor : public Editor {
 public:
  explicit RecordingEditor(EditorKind kind = EditorKind::kHtmlDocument) : kind_(kind) {}

  EditorKind Kind() const override { return kind_; }
  std::optional<std::string> Text() override { return text; }
  bool SetText(std::string_view t) override {
    calls.push_back("SetText");
    text = t;
    return true;
  }
  bool SelectAndRemoveMarker() override {
    calls.push_back("SelectAndRemoveMarker");
    return true;
  }
  std::optional<std::string> SelectionText() override { return selection; }
  bool ReplaceSelection(std::string_view t) override {
    calls.push_back("ReplaceSelection:" + std::string(t));
    selection = t;
    return true;
  }
  bool ClearUndo() override {
    calls.push_back("ClearUndo");
    return true;
  }

  std::string text, selection;
  std::vector<std::string> calls;

 private:
  EditorKind kind_;
};

}  // namespace brindle::testing
