#include "core/settings_keys.h"

#include <array>

#include "core/language.h"
#include "core/text.h"

namespace brindle::ini {
namespace {

using R = MiscRule;
using S = Settings;

const std::array kMiscKeys{
    MiscKey{"ISO", R::kOneOrZero, &S::intISO},
    MiscKey{"MinimizeOE", R::kNumber, &S::intMinimizeOE},
    MiscKey{"WrapText", R::kNumber, &S::intWrap},
    MiscKey{"BottomPosting", R::kNumber, &S::intBottomPosting},
    MiscKey{"StripReferences", R::kNumber, &S::intStripRef},
    MiscKey{"ChangeXNewsreader", R::kNumber, &S::intXNewsreader},
    MiscKey{"ChangeXMimeOLE", R::kNumber, &S::intXMimeOLE},
    MiscKey{"ChangeXMimeOLEMail", R::kNumber, &S::intXMimeOLEMail},
    MiscKey{"ChangeXMailer", R::kNumber, &S::intXMailer},
    MiscKey{"XNewsreader", R::kText, nullptr, &S::strXNewsreader},
    MiscKey{"XMimeOLE", R::kText, nullptr, &S::strXMimeOLE},
    MiscKey{"XMimeOLEMail", R::kText, nullptr, &S::strXMimeOLEMail},
    MiscKey{"XMailer", R::kText, nullptr, &S::strXMailer},
    MiscKey{"BeginFilter", R::kNumber, &S::intBeginFilter},
    MiscKey{"CharFiltering", R::kFilterMode, &S::intCharFiltering},
    MiscKey{"AsianFilter", R::kNumber, &S::intAsianFilter},
    MiscKey{"AFPercentage", R::kNumber, &S::intAFPercentage},
    MiscKey{"AFMin", R::kNumber, &S::intAFMin},
    MiscKey{"Preview", R::kOneOrZero, &S::intPreview},
    MiscKey{"QuoteFix", R::kNumber, &S::intQuoteFix},
    MiscKey{"PreviewProcessing", R::kNumber, &S::intPreviewProcessing},
    MiscKey{"OVRWarning", R::kNumber, &S::intOVRWarning},
    MiscKey{"TrayIcon", R::kNumber, &S::intTrayIcon},
    MiscKey{"SpammerAddress", R::kText, nullptr, &S::strSpammerAddress},
    MiscKey{"SpammersBase", R::kText, nullptr, &S::strSpammers},
    MiscKey{"LogFile", R::kText, nullptr, &S::strLog},
    MiscKey{"Styles", R::kText, nullptr, &S::strStyles},
    MiscKey{"OEWindowStartupState", R::kNumber, &S::intOEWindowStartupState},
    MiscKey{"CursorOnTop", R::kNumber, &S::intCoursorOnTop},
    MiscKey{"Language", R::kLanguage, &S::intLanguage},
    MiscKey{"AttachmentPath", R::kText, nullptr, &S::strAttachmentPath},
    MiscKey{"VerticalQCompression", R::kNumber, &S::intVerticalQCompression},
    MiscKey{"HorizontalQCompression", R::kNumber, &S::intHorizontalQCompression},
    MiscKey{"ClickSecWindow", R::kNumber, &S::intClickSecWindow},
    MiscKey{"TrayDoubleClick", R::kNumber, &S::intTrayDoubleClick},
    MiscKey{"Winamp", R::kNumber, &S::intWinamp},
    MiscKey{"LogoffAfterClose", R::kNumber, &S::intLogoffAfterClose},
    MiscKey{"FQDNAfterEHLO", R::kNumber, &S::intFQDN},
    MiscKey{"AutoMaximize", R::kNumber, &S::intAutoMaximize},
    MiscKey{"AutoCC", R::kText, nullptr, &S::strCCAddress},
    MiscKey{"AutoBCC", R::kText, nullptr, &S::strBCCAddress},
};

}  // namespace

std::span<const MiscKey> MiscKeys() {
  return kMiscKeys;
}

const MiscKey* FindMiscKey(std::string_view key) {
  if (EqualsNoCase(key, "CoursorOnTop")) key = "CursorOnTop";
  for (const MiscKey& k : kMiscKeys) {
    if (EqualsNoCase(k.name, key)) return &k;
  }
  return nullptr;
}

// Spanish came after the writer: it is read as "SP" but never written.
std::string_view WrittenLanguageCode(int16_t base) {
  return base == kLangSpanish ? std::string_view{} : TwoLetterCode(base);
}

}  // namespace brindle::ini
