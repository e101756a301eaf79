#define CINTERFACE
#define COBJMACROS
#include "oewin/fake_html_document_test.h"

#include <windows.h>

#include <mshtml.h>
#include <ocidl.h>
#include <servprov.h>

namespace brindle::testing {
namespace {

enum class Kind {
  kDocument,
  kServices,
  kUndo,
  kCollection,
  kBody,
  kBodyElement,
  kMarker,
  kSelection,
  kRange
};

struct Fake {
  const void* vtbl;
  LONG refs;
  Kind kind;
  FakeDocumentState* state;
};

Fake* Make(Kind kind, FakeDocumentState* state);

Fake* Self(void* p) {
  return static_cast<Fake*>(p);
}
std::string Narrow(BSTR s) {
  std::string out;
  for (UINT i = 0; s && i < SysStringLen(s); ++i) out += static_cast<char>(s[i] < 128 ? s[i] : '?');
  return out;
}
template <typename I>
HRESULT Give(Fake* f, I** out) {
  *out = reinterpret_cast<I*>(f);
  return S_OK;
}

const IID& PrimaryIid(Kind kind) {
  switch (kind) {
    case Kind::kDocument:
      return IID_IHTMLDocument2;
    case Kind::kServices:
      return IID_IServiceProvider;
    case Kind::kUndo:
      return IID_IOleUndoManager;
    case Kind::kCollection:
      return IID_IHTMLElementCollection;
    case Kind::kBody:
    case Kind::kMarker:
      return IID_IHTMLElement;
    case Kind::kBodyElement:
      return IID_IHTMLBodyElement;
    case Kind::kSelection:
      return IID_IHTMLSelectionObject;
    case Kind::kRange:
      return IID_IHTMLTxtRange;
  }
  return IID_IUnknown;
}

HRESULT STDMETHODCALLTYPE QueryInterfaceImpl(IUnknown* This, REFIID iid, void** out) {
  Fake* f = Self(This);
  *out = nullptr;
  const bool dispatch = f->kind != Kind::kServices && f->kind != Kind::kUndo;
  if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, PrimaryIid(f->kind)) ||
      (dispatch && IsEqualIID(iid, IID_IDispatch))) {
    InterlockedIncrement(&f->refs);
    *out = f;
  } else if (f->kind == Kind::kDocument && IsEqualIID(iid, IID_IServiceProvider)) {
    *out = Make(Kind::kServices, f->state);
  } else if (f->kind == Kind::kBody && IsEqualIID(iid, IID_IHTMLBodyElement)) {
    *out = Make(Kind::kBodyElement, f->state);
  }
  return *out ? S_OK : E_NOINTERFACE;
}
ULONG STDMETHODCALLTYPE AddRefImpl(IUnknown* This) {
  return InterlockedIncrement(&Self(This)->refs);
}
ULONG STDMETHODCALLTYPE ReleaseImpl(IUnknown* This) {
  const LONG n = InterlockedDecrement(&Self(This)->refs);
  if (n == 0) delete Self(This);
  return n;
}
HRESULT STDMETHODCALLTYPE NotImplemented() {
  return E_NOTIMPL;
}

// Every slot E_NOTIMPL, then IUnknown; the caller fills what it uses.
template <typename V>
V MakeVtbl() {
  V v;
  void** slots = reinterpret_cast<void**>(&v);
  for (size_t i = 0; i < sizeof v / sizeof(void*); ++i)
    slots[i] = reinterpret_cast<void*>(&NotImplemented);
  v.QueryInterface = reinterpret_cast<decltype(v.QueryInterface)>(&QueryInterfaceImpl);
  v.AddRef = reinterpret_cast<decltype(v.AddRef)>(&AddRefImpl);
  v.Release = reinterpret_cast<decltype(v.Release)>(&ReleaseImpl);
  return v;
}

// Document.
HRESULT STDMETHODCALLTYPE DocGetAll(IHTMLDocument2* This, IHTMLElementCollection** out) {
  return Give(Make(Kind::kCollection, Self(This)->state), out);
}
HRESULT STDMETHODCALLTYPE DocGetBody(IHTMLDocument2* This, IHTMLElement** out) {
  return Give(Make(Kind::kBody, Self(This)->state), out);
}
HRESULT STDMETHODCALLTYPE DocGetSelection(IHTMLDocument2* This, IHTMLSelectionObject** out) {
  return Give(Make(Kind::kSelection, Self(This)->state), out);
}
HRESULT STDMETHODCALLTYPE ServicesQueryService(IServiceProvider* This, REFGUID service, REFIID iid,
                                               void** out) {
  *out = nullptr;
  if (!IsEqualGUID(service, SID_SOleUndoManager) || !IsEqualIID(iid, IID_IOleUndoManager))
    return E_NOINTERFACE;
  *out = Make(Kind::kUndo, Self(This)->state);
  return S_OK;
}
HRESULT STDMETHODCALLTYPE UndoDiscardFrom(IOleUndoManager* This, IOleUndoUnit* unit) {
  Self(This)->state->calls.push_back(unit == nullptr ? "DiscardFrom(all)" : "DiscardFrom(unit)");
  return S_OK;
}

// The collection knows one id: the marker element, while the body holds it.
HRESULT STDMETHODCALLTYPE CollectionItem(IHTMLElementCollection* This, VARIANT name, VARIANT,
                                         IDispatch** out) {
  Fake* f = Self(This);
  *out = nullptr;
  if (name.vt != VT_BSTR) return E_INVALIDARG;
  f->state->calls.push_back("item:" + Narrow(name.bstrVal));
  if (Narrow(name.bstrVal) == "kursor" &&
      f->state->bodyHtml.find(L"id=kursor") != std::wstring::npos)
    *out = reinterpret_cast<IDispatch*>(Make(Kind::kMarker, f->state));
  return S_OK;
}

HRESULT STDMETHODCALLTYPE BodyGetInnerText(IHTMLElement* This, BSTR* out) {
  *out = SysAllocString(Self(This)->state->bodyText.c_str());
  return S_OK;
}
HRESULT STDMETHODCALLTYPE BodyPutInnerHtml(IHTMLElement* This, BSTR html) {
  Self(This)->state->bodyHtml.assign(html, SysStringLen(html));
  Self(This)->state->calls.push_back("put_innerHTML");
  return S_OK;
}
HRESULT STDMETHODCALLTYPE MarkerPutOuterHtml(IHTMLElement* This, BSTR html) {
  FakeDocumentState* s = Self(This)->state;
  s->calls.push_back("marker.put_outerHTML:" + Narrow(html));
  const std::wstring marker = L"<SPAN id=kursor></SPAN>";
  if (const size_t at = s->bodyHtml.find(marker); at != std::wstring::npos)
    s->bodyHtml.replace(at, marker.size(), html);
  return S_OK;
}
HRESULT STDMETHODCALLTYPE BodyCreateTextRange(IHTMLBodyElement* This, IHTMLTxtRange** out) {
  return Give(Make(Kind::kRange, Self(This)->state), out);
}
HRESULT STDMETHODCALLTYPE SelectionCreateRange(IHTMLSelectionObject* This, IDispatch** out) {
  return Give(Make(Kind::kRange, Self(This)->state), out);
}

HRESULT STDMETHODCALLTYPE RangeMoveToElementText(IHTMLTxtRange* This, IHTMLElement* element) {
  Fake* target = Self(element);
  Self(This)->state->calls.push_back(target->kind == Kind::kMarker ? "range.moveTo(marker)"
                                                                   : "range.moveTo(other)");
  return S_OK;
}
HRESULT STDMETHODCALLTYPE RangeCollapse(IHTMLTxtRange* This, VARIANT_BOOL start) {
  Self(This)->state->calls.push_back(start ? "range.collapse(start)" : "range.collapse(end)");
  return S_OK;
}
HRESULT STDMETHODCALLTYPE RangeSelect(IHTMLTxtRange* This) {
  Self(This)->state->calls.push_back("range.select");
  return S_OK;
}
HRESULT STDMETHODCALLTYPE RangeGetText(IHTMLTxtRange* This, BSTR* out) {
  *out = SysAllocString(Self(This)->state->selection.c_str());
  return S_OK;
}
HRESULT STDMETHODCALLTYPE RangePutText(IHTMLTxtRange* This, BSTR text) {
  Self(This)->state->selection.assign(text, SysStringLen(text));
  Self(This)->state->calls.push_back("range.put_text:" + Narrow(text));
  return S_OK;
}

const void* VtblFor(Kind kind) {
  static const IHTMLDocument2Vtbl document = [] {
    auto v = MakeVtbl<IHTMLDocument2Vtbl>();
    v.get_all = DocGetAll;
    v.get_body = DocGetBody;
    v.get_selection = DocGetSelection;
    return v;
  }();
  static const IServiceProviderVtbl services = [] {
    auto v = MakeVtbl<IServiceProviderVtbl>();
    v.QueryService = ServicesQueryService;
    return v;
  }();
  static const IOleUndoManagerVtbl undo = [] {
    auto v = MakeVtbl<IOleUndoManagerVtbl>();
    v.DiscardFrom = UndoDiscardFrom;
    return v;
  }();
  static const IHTMLElementCollectionVtbl collection = [] {
    auto v = MakeVtbl<IHTMLElementCollectionVtbl>();
    v.item = CollectionItem;
    return v;
  }();
  static const IHTMLElementVtbl element = [] {
    auto v = MakeVtbl<IHTMLElementVtbl>();
    v.get_innerText = BodyGetInnerText;
    v.put_innerHTML = BodyPutInnerHtml;
    v.put_outerHTML = MarkerPutOuterHtml;
    return v;
  }();
  static const IHTMLBodyElementVtbl bodyElement = [] {
    auto v = MakeVtbl<IHTMLBodyElementVtbl>();
    v.createTextRange = BodyCreateTextRange;
    return v;
  }();
  static const IHTMLSelectionObjectVtbl selection = [] {
    auto v = MakeVtbl<IHTMLSelectionObjectVtbl>();
    v.createRange = SelectionCreateRange;
    return v;
  }();
  static const IHTMLTxtRangeVtbl range = [] {
    auto v = MakeVtbl<IHTMLTxtRangeVtbl>();
    v.moveToElementText = RangeMoveToElementText;
    v.collapse = RangeCollapse;
    v.select = RangeSelect;
    v.get_text = RangeGetText;
    v.put_text = RangePutText;
    return v;
  }();
  switch (kind) {
    case Kind::kDocument:
      return &document;
    case Kind::kServices:
      return &services;
    case Kind::kUndo:
      return &undo;
    case Kind::kCollection:
      return &collection;
    case Kind::kBody:
    case Kind::kMarker:
      return &element;
    case Kind::kBodyElement:
      return &bodyElement;
    case Kind::kSelection:
      return &selection;
    case Kind::kRange:
      return &range;
  }
  return nullptr;
}

Fake* Make(Kind kind, FakeDocumentState* state) {
  return new Fake{VtblFor(kind), 1, kind, state};
}

}  // namespace

IUnknown* NewFakeHtmlDocument(FakeDocumentState* state) {
  return reinterpret_cast<IUnknown*>(Make(Kind::kDocument, state));
}

}  // namespace brindle::testing
