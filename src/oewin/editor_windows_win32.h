// The client's editors as Win32 sees them: which window holds a note's (or
// the preview pane's) text, the HTML document behind an "Internet
// Explorer_Server" window, and the two Editor adapters over them.
#pragma once

#include <windows.h>

#include <mshtml.h>

#include <memory>

#include "oewin/com_ref_win32.h"
#include "oewin/editor.h"

namespace brindle {

// How long a hung editor may keep the client's thread waiting for its document.
inline constexpr UINT kDocumentRequestTimeoutMs = 10000;

struct EditorWindow {
  HWND window = nullptr;
  EditorKind kind = EditorKind::kHtmlDocument;
};

// The editor of a note window ("ATH_Note") or of the main window's preview
// pane ("Outlook Express Browser Class"); no window when it has none (yet).
EditorWindow FindEditorWindow(HWND noteOrMainWindow);

// The document of an "Internet Explorer_Server" window, asked for with
// WM_HTML_GETOBJECT; empty when the window does not answer in time or refuses.
ComRef<IHTMLDocument2> RequestHtmlDocument(HWND server);

// The document's element with this id; empty when there is none.
ComRef<IHTMLElement> FindElementById(IHTMLDocument2* document, const wchar_t* id);

// Empties the document's undo stack; false when the document has no undo
// manager to ask.
bool DiscardUndoHistory(IUnknown* document);

std::unique_ptr<Editor> MakeHtmlEditor(ComRef<IHTMLDocument2> document);
std::unique_ptr<Editor> MakeRichEditEditor(HWND control);

// The editor of the window: the rich-edit control, or the HTML document (an
// editor that does not hand out its document gives none).
std::unique_ptr<Editor> OpenEditor(const EditorWindow& found);

}  // namespace brindle
