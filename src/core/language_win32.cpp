#include <windows.h>

#include <string>

#include "core/language.h"

namespace brindle {
namespace {

constexpr UINT kIdentifier1000 = 1000;

// Identifier 1000 of the table the platform picks for the user's language,
// as ASCII; empty when the resource is missing or holds anything but digits.
std::string ReadIdentifier1000() {
  const wchar_t* text = nullptr;
  // With a buffer size of 0, LoadStringW hands out a pointer into the
  // resource itself, so no length limit applies.
  int length =
      LoadStringW(GetModuleHandleW(nullptr), kIdentifier1000, reinterpret_cast<LPWSTR>(&text), 0);
  std::string digits;
  for (int i = 0; text && i < length; ++i) {
    if (text[i] < L'0' || text[i] > L'9') return {};
    digits += static_cast<char>(text[i]);
  }
  return digits;
}

}  // namespace

int16_t DefaultLanguageBase() {
  return LanguageBaseFromIdentifier1000(ReadIdentifier1000());
}

}  // namespace brindle
