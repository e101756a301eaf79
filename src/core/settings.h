// The settings variables of the program, kept exactly as the settings file
// "OE_Brindle.ini" names and types them. Texts are byte strings in the
// system's single-byte code page; they are never converted on the way in or out.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace brindle {

// Protocol of a tunnel or channel (CTunnel::tType, CChannel::cType).
enum TunnelType : int32_t { kTypeUnset = -1, kTypeNntp = 0, kTypePop3 = 1, kTypeSmtp = 2 };

// "NNTP", "POP3", "SMTP": the protocol as the logs and status displays name it.
constexpr const char* ProtocolName(int32_t type) {
  switch (type) {
    case kTypeNntp:
      return "NNTP";
    case kTypePop3:
      return "POP3";
    case kTypeSmtp:
      return "SMTP";
  }
  return "?";
}

// One sender of the signature table ([Signature] sections).
struct SignatureRecord {
  std::string text;      // SigLines: lines joined by CR LF, no trailing line end
  std::string UserName;  // shown on the pages only
  std::string email;     // key "e-mail"; selects the record; empty = free
  uint8_t Distance = 0;  // empty lines between body and "-- "
  bool RandomSig = false;
  std::vector<std::string> SigFile;  // file names for RandomSig, in file order

  bool IsEmpty() const { return UserName.empty() && email.empty(); }
};

// One entry of a custom header table ([CustomHeader] / [CustomMailHeader]).
struct CustomHeader {
  std::string HeaderName;  // without colon; empty = free
  std::string InsertAfter;
  std::string HeaderBody;
};

// One tunnel as the settings file describes it ([NNTPServer] ...).
struct TunnelRecord {
  std::string Server;
  int32_t SrcPort = 0;
  int32_t DestPort = 0;
  bool AutoStart = false;
  bool SSL = false;
  int32_t tType = kTypeUnset;
  // The server leg switches to TLS inside the protocol (STARTTLS/STLS),
  // done by the companion; the client side stays plain.
  bool StartTLS = false;
};

inline constexpr int kSignatureCount = 101;    // indexes 0..100
inline constexpr int kCustomHeaderCount = 50;  // indexes 0..49

// Language bases (intLanguage).
inline constexpr int16_t kLangPolish = 1000;
inline constexpr int16_t kLangEnglish = 2000;
inline constexpr int16_t kLangGerman = 3000;
inline constexpr int16_t kLangSlovenian = 4000;
inline constexpr int16_t kLangFrench = 5000;
inline constexpr int16_t kLangSpanish = 6000;

struct Settings {
  // Where the file lives. strIniPath empty means "the program's own folder".
  std::string strSettingsDir;
  std::string strIniPath;
  std::string strIniComment;  // "//" lines at the head of the file, each + CR LF

  // [Miscellaneous]
  int16_t intISO = 1;
  int16_t intMinimizeOE = 1;
  int16_t intWrap = 76;
  int16_t intBottomPosting = 1;
  int16_t intStripRef = 950;
  int16_t intXNewsreader = 0;
  int16_t intXMimeOLE = 0;
  int16_t intXMimeOLEMail = 0;
  int16_t intXMailer = 0;
  std::string strXNewsreader;
  std::string strXMimeOLE;
  std::string strXMimeOLEMail;
  std::string strXMailer;
  int16_t intBeginFilter = 1;
  int16_t intCharFiltering = 0;
  int16_t intAsianFilter = 0;
  int16_t intAFPercentage = 90;
  int16_t intAFMin = 10;
  int16_t intPreview = 1;
  int16_t intQuoteFix = 1;
  int16_t intPreviewProcessing = 1;
  int16_t intOVRWarning = 0;
  int16_t intTrayIcon = 1;
  std::string strSpammerAddress;
  std::string strSpammers;
  std::string strLog;
  std::string strStyles;
  int16_t intOEWindowStartupState = 0;
  int16_t intCoursorOnTop = 1;
  int16_t intLanguage = kLangEnglish;
  std::string strAttachmentPath;
  int16_t intVerticalQCompression = 1;
  int16_t intHorizontalQCompression = 1;
  int16_t intClickSecWindow = 0;
  int16_t intTrayDoubleClick = 0;
  int16_t intWinamp = 0;
  int16_t intLogoffAfterClose = 0;
  int16_t intFQDN = 0;
  int16_t intAutoMaximize = 0;
  std::string strCCAddress;
  std::string strBCCAddress;

  // [NewsQuoteHeader] / [MailQuoteHeader]
  std::string strWrotkaNews;
  int16_t intWrotkaNews = 0;
  std::string strWrotkaMail;
  int16_t intWrotkaMail = 0;

  // [Backgrounds]
  std::string strTlo = "FFFFFF";
  std::string strMsgBgPict;
  std::string strTloListy = "FFFFFF";
  std::string strListBgPict;

  std::array<SignatureRecord, kSignatureCount> signatures;
  std::array<CustomHeader, kCustomHeaderCount> newsHeaders;  // [CustomHeader]
  std::array<CustomHeader, kCustomHeaderCount> mailHeaders;  // [CustomMailHeader]

  // Tunnels in file order (the live CTunnel objects belong to the proxy).
  std::vector<TunnelRecord> tunnels;
};

// Receives each tunnel record as soon as the loader has completed it, in file
// order, so that the proxy can create (and AutoStart) it at once, with the
// settings read so far (a tunnel that cannot start speaks the language in
// force at that point of the file). readSoFar is only lent for the call.
using TunnelSink = std::function<void(const TunnelRecord&, const Settings& readSoFar)>;

}  // namespace brindle
