#include "oewin/editor_windows_win32.h"

#include <oleacc.h>
#include <servprov.h>

namespace brindle {
namespace {

struct DescendantSearch {
  const char* className;
  HWND found;
};

BOOL CALLBACK MatchClass(HWND window, LPARAM l) {
  auto* search = reinterpret_cast<DescendantSearch*>(l);
  char name[256] = {};
  GetClassNameA(window, name, sizeof name);
  if (lstrcmpA(name, search->className) != 0) return TRUE;
  search->found = window;
  return FALSE;
}

// The first window of the class among all descendants: the client nests its
// editor windows at depths that differ between its versions.
HWND FindDescendant(HWND parent, const char* className) {
  if (parent == nullptr) return nullptr;
  DescendantSearch search{className, nullptr};
  EnumChildWindows(parent, MatchClass, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND WindowClassed(HWND window, const char* className) {
  char name[256] = {};
  GetClassNameA(window, name, sizeof name);
  return lstrcmpA(name, className) == 0 ? window : nullptr;
}

}  // namespace

EditorWindow FindEditorWindow(HWND window) {
  HWND start = window;
  if (WindowClassed(window, "Outlook Express Browser Class"))
    start = FindDescendant(window, "Outlook Express Message View");
  HWND host = FindDescendant(start, "ME_DocHost");
  if (HWND server =
          FindDescendant(FindDescendant(host, "##MimeEdit_Server"), "Internet Explorer_Server"))
    return {server, EditorKind::kHtmlDocument};
  if (HWND rich = FindDescendant(host, "RichEdit20W")) return {rich, EditorKind::kRichEdit};
  return {};
}

ComRef<IHTMLDocument2> RequestHtmlDocument(HWND server) {
  static const UINT getObject = RegisterWindowMessageA("WM_HTML_GETOBJECT");
  DWORD_PTR answer = 0;
  if (!SendMessageTimeoutA(server, getObject, 0, 0, SMTO_ABORTIFHUNG, kDocumentRequestTimeoutMs,
                           &answer) ||
      answer == 0)
    return {};
  ComRef<IHTMLDocument2> document;
  if (FAILED(ObjectFromLresult(static_cast<LRESULT>(answer), IID_IHTMLDocument2, 0,
                               reinterpret_cast<void**>(document.Out()))))
    return {};
  return document;
}

ComRef<IHTMLElement> FindElementById(IHTMLDocument2* document, const wchar_t* id) {
  ComRef<IHTMLElementCollection> all;
  if (document == nullptr || FAILED(document->get_all(all.Out())) || !all) return {};
  VARIANT name;
  name.vt = VT_BSTR;
  name.bstrVal = SysAllocString(id);
  VARIANT index;
  index.vt = VT_I4;
  index.lVal = 0;
  ComRef<IDispatch> item;
  const HRESULT hr = all->item(name, index, item.Out());
  VariantClear(&name);
  if (FAILED(hr)) return {};
  return item.As<IHTMLElement>(IID_IHTMLElement);
}

bool DiscardUndoHistory(IUnknown* document) {
  ComRef<IServiceProvider> services;
  if (document == nullptr || FAILED(document->QueryInterface(
                                 IID_IServiceProvider, reinterpret_cast<void**>(services.Out()))))
    return false;
  ComRef<IOleUndoManager> undo;
  if (FAILED(services->QueryService(SID_SOleUndoManager, IID_IOleUndoManager,
                                    reinterpret_cast<void**>(undo.Out()))) ||
      !undo)
    return false;
  return SUCCEEDED(undo->DiscardFrom(nullptr));
}

std::unique_ptr<Editor> OpenEditor(const EditorWindow& found) {
  if (found.window == nullptr) return nullptr;
  if (found.kind == EditorKind::kRichEdit) return MakeRichEditEditor(found.window);
  ComRef<IHTMLDocument2> document = RequestHtmlDocument(found.window);
  if (!document) return nullptr;
  return MakeHtmlEditor(std::move(document));
}

}  // namespace brindle
