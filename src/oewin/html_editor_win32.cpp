// The Editor over the client's HTML document: the text is the body's text,
// written back as HTML that shows the same lines; the cursor marker travels
// as an empty element whose place the caret takes.
#include "oewin/ansi_text_win32.h"
#include "oewin/editor_text.h"
#include "oewin/editor_windows_win32.h"

namespace brindle {
namespace {

std::string TakeBstr(BSTR text) {
  std::string out = text != nullptr ? WideToAnsi({text, SysStringLen(text)}) : std::string();
  SysFreeString(text);
  return out;
}

class HtmlEditor final : public Editor {
 public:
  explicit HtmlEditor(ComRef<IHTMLDocument2> document) : document_(std::move(document)) {}

  EditorKind Kind() const override { return EditorKind::kHtmlDocument; }

  std::optional<std::string> Text() override {
    ComRef<IHTMLElement> body = Body();
    BSTR text = nullptr;
    if (!body || FAILED(body->get_innerText(&text))) return std::nullopt;
    return TakeBstr(text);
  }

  bool SetText(std::string_view text) override {
    ComRef<IHTMLElement> body = Body();
    if (!body) return false;
    BSTR html = AnsiToBstr(PlainTextToHtml(text));
    const HRESULT hr = body->put_innerHTML(html);
    SysFreeString(html);
    return SUCCEEDED(hr);
  }

  bool SelectAndRemoveMarker() override {
    const std::wstring id = AnsiToWide(kCursorElementId);
    ComRef<IHTMLElement> marker = FindElementById(document_.get(), id.c_str());
    ComRef<IHTMLBodyElement> body = Body().As<IHTMLBodyElement>(IID_IHTMLBodyElement);
    ComRef<IHTMLTxtRange> range;
    if (!marker || !body || FAILED(body->createTextRange(range.Out())) || !range) return false;
    // The caret goes to where the empty element stands, then the element goes.
    if (FAILED(range->moveToElementText(marker.get())) || FAILED(range->collapse(VARIANT_TRUE)) ||
        FAILED(range->select()))
      return false;
    BSTR nothing = SysAllocString(L"");
    const HRESULT hr = marker->put_outerHTML(nothing);
    SysFreeString(nothing);
    return SUCCEEDED(hr);
  }

  std::optional<std::string> SelectionText() override {
    ComRef<IHTMLTxtRange> range = SelectionRange();
    BSTR text = nullptr;
    if (!range || FAILED(range->get_text(&text))) return std::nullopt;
    return TakeBstr(text);
  }

  bool ReplaceSelection(std::string_view text) override {
    ComRef<IHTMLTxtRange> range = SelectionRange();
    if (!range) return false;
    BSTR value = AnsiToBstr(NormaliseLineEnds(text));
    const HRESULT hr = range->put_text(value);
    SysFreeString(value);
    return SUCCEEDED(hr);
  }

  bool ClearUndo() override { return DiscardUndoHistory(document_.get()); }

 private:
  ComRef<IHTMLElement> Body() {
    ComRef<IHTMLElement> body;
    if (FAILED(document_->get_body(body.Out()))) return {};
    return body;
  }

  ComRef<IHTMLTxtRange> SelectionRange() {
    ComRef<IHTMLSelectionObject> selection;
    ComRef<IDispatch> range;
    if (FAILED(document_->get_selection(selection.Out())) || !selection ||
        FAILED(selection->createRange(range.Out())))
      return {};
    return range.As<IHTMLTxtRange>(IID_IHTMLTxtRange);
  }

  ComRef<IHTMLDocument2> document_;
};

}  // namespace

std::unique_ptr<Editor> MakeHtmlEditor(ComRef<IHTMLDocument2> document) {
  if (!document) return nullptr;
  return std::make_unique<HtmlEditor>(std::move(document));
}

}  // namespace brindle
