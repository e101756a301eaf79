// A recording stand-in for the client's HTML document, with the element,
// collection, selection, text-range and undo-manager objects the HTML editor
// adapter uses. Built on the C form of the interfaces so that only the
// methods the adapter calls need writing (the rest answer E_NOTIMPL).
#pragma once

#include <unknwn.h>

#include <string>
#include <vector>

namespace brindle::testing {

struct FakeDocumentState {
  std::wstring bodyText;           // what the body's innerText gives
  std::wstring bodyHtml;           // the body's innerHTML as last written
  std::wstring selection;          // the selected range's text
  std::vector<std::string> calls;  // what was asked, in order
};

// A new document (as IUnknown, one reference for the caller) over `state`.
IUnknown* NewFakeHtmlDocument(FakeDocumentState* state);

}  // namespace brindle::testing
