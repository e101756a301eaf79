#include "bench_messages.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace brindle::bench {

namespace {

// Fixed-seed generator: the same words on every run and machine.
class Words {
 public:
  std::string_view Next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return kWords[(state_ >> 33) % kWords.size()];
  }
  uint32_t Below(uint32_t n) { return static_cast<uint32_t>((Next().size() * 7919u) % n); }

 private:
  // ISO-8859-2 Polish words: about one byte in eight above 127.
  static constexpr std::array<std::string_view, 24> kWords = {"nie",
                                                              "\xbf"
                                                              "e",
                                                              "si\xea",
                                                              "jest",
                                                              "tak",
                                                              "ale",
                                                              "mo\xbfna",
                                                              "by\xb3o",
                                                              "kt\xf3ry",
                                                              "dzi\xea"
                                                              "ki",
                                                              "serwer",
                                                              "grupa",
                                                              "wiadomo\xb6\xe6",
                                                              "list",
                                                              "edytor",
                                                              "w\xb1tek",
                                                              "pi\xeaknie",
                                                              "ja",
                                                              "ty",
                                                              "to",
                                                              "co",
                                                              "gdzie",
                                                              "\xbf\xf3\xb3ty",
                                                              "ko\xf1"};
  uint64_t state_ = 0x2545F4914F6CDD1DULL;
};

void AppendLine(std::string& out, Words& words, std::string_view prefix, size_t width) {
  out += prefix;
  const size_t start = out.size();
  while (out.size() - start < width) {
    out += words.Next();
    out += ' ';
  }
  out.back() = '\r';
  out += '\n';
}

// About 3 KB of uuencoded data of a small archive, well terminated.
void AppendUuencodedBlock(std::string& out, int number) {
  out += "begin 644 zalacznik" + std::to_string(number) + ".zip\r\n";
  for (int line = 0; line < 48; ++line) {
    out += 'M';
    for (int i = 0; i < 60; ++i) out += static_cast<char>(33 + (line * 61 + i * 7 + number) % 64);
    out += "\r\n";
  }
  out += "`\r\nend\r\n";
}

// Paragraphs of text and quotes until the body reaches `bytes`, with the two
// uuencoded blocks at a third and two thirds of the way.
void AppendBody(std::string& out, size_t bytes, bool uuencoded) {
  Words words;
  const size_t start = out.size();
  int blocks = 0;
  while (out.size() - start < bytes) {
    const size_t done = out.size() - start;
    if (uuencoded && blocks < 2 && done * 3 >= bytes * static_cast<size_t>(blocks + 1)) {
      out += "\r\n";
      AppendUuencodedBlock(out, ++blocks);
      out += "\r\n";
    }
    out += "U\xbfytkownik \"Jan\" <jan@example.org> napisa\xb3:\r\n";
    for (uint32_t i = 0, n = 2 + words.Below(4); i < n; ++i) AppendLine(out, words, ">> ", 66);
    for (uint32_t i = 0, n = 2 + words.Below(5); i < n; ++i) AppendLine(out, words, "> ", 70);
    out += "\r\n";
    for (uint32_t i = 0, n = 3 + words.Below(6); i < n; ++i) AppendLine(out, words, "", 72);
    out += "\r\n";
  }
}

std::string References() {
  std::string line = "References: ";
  for (int i = 0; i < 40; ++i) {
    line += "<et0" + std::to_string(1000 + i * 37) + "$2k1$" + std::to_string(i) +
            "@news.example.org> ";
  }
  line.back() = '\r';
  return line + "\n";
}

constexpr std::string_view kArticleHeaders =
    "From: \"Marek Nowak\" <marek@example.net>\r\n"
    "Newsgroups: pl.comp.os.linux\r\n"
    "Subject: Re: jaki edytor? \xbf\xf3\xb3w\r\n"
    "Date: Mon, 12 Mar 2007 21:14:03 +0100\r\n"
    "Lines: 9\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: text/plain;\r\n"
    "\tcharset=\"iso-8859-2\"\r\n"
    "Content-Transfer-Encoding: 8bit\r\n"
    "X-Priority: 3\r\n"
    "X-MSMail-Priority: Normal\r\n"
    "X-Newsreader: Microsoft Outlook Express 6.00.2900.3028\r\n"
    "X-RFC2646: Format=Flowed; Original\r\n"
    "X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2900.3028\r\n";

std::string SignedMailHeaders() {
  return "Return-Path: <jan@example.org>\r\n"
         "Received: from mail.example.org ([192.0.2.10]) by pop.example.net\r\n"
         "\twith ESMTP id 4f2a; Mon, 12 Mar 2007 21:14:07 +0100\r\n"
         "From: \"Jan Kowalski\" <jan@example.org>\r\n"
         "To: <marek@example.net>\r\n"
         "Subject: Re: zjazd \xbf\xf3\xb3tej grupy\r\n"
         "Date: Mon, 12 Mar 2007 21:14:03 +0100\r\n"
         "MIME-Version: 1.0\r\n"
         "Content-Type: multipart/signed;\r\n"
         "\tprotocol=\"application/x-pkcs7-signature\";\r\n"
         "\tmicalg=SHA1;\r\n"
         "\tboundary=\"----=_NextPart_000_0007_01C76512.4E2B1A40\"\r\n"
         "X-Mailer: Microsoft Outlook Express 6.00.2900.3028\r\n"
         "X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2900.3028\r\n"
         "\r\n"
         "This is a multi-part message in MIME format.\r\n"
         "\r\n"
         "------=_NextPart_000_0007_01C76512.4E2B1A40\r\n"
         "Content-Type: text/plain;\r\n"
         "\tcharset=\"iso-8859-2\"\r\n"
         "Content-Transfer-Encoding: 8bit\r\n"
         "\r\n";
}

constexpr std::string_view kSignaturePart =
    "------=_NextPart_000_0007_01C76512.4E2B1A40\r\n"
    "Content-Type: application/x-pkcs7-signature;\r\n"
    "\tname=\"smime.p7s\"\r\n"
    "\r\n"
    "MIAGCSqGSIb3DQEHAqCAMIACAQExCzAJBgUrDgMCGgUAMIAGCSqGSIb3DQEHAQAAoIIEAzCC\r\n"
    "------=_NextPart_000_0007_01C76512.4E2B1A40--\r\n";

std::string Finish(std::string text) {
  if (text.size() < 2 || text.compare(text.size() - 2, 2, "\r\n") != 0) text += "\r\n";
  return text + ".\r\n";
}

}  // namespace

std::string DownloadedArticle(size_t bytes) {
  std::string text = "220 4711 <et0c7f$9qd$1@news.example.org> article\r\n";
  text += "Path: news.example.org!not-for-mail\r\n";
  text += kArticleHeaders;
  text += References();
  text += "Message-ID: <et0c7f$9qd$1@news.example.org>\r\n\r\n";
  AppendBody(text, bytes > text.size() ? bytes - text.size() : 0, true);
  return Finish(std::move(text));
}

std::string DownloadedMail(size_t bytes) {
  std::string text = "+OK " + std::to_string(bytes) + " octets\r\n" + SignedMailHeaders();
  AppendBody(text, bytes > text.size() + 300 ? bytes - text.size() - 300 : 0, true);
  text += kSignaturePart;
  return Finish(std::move(text));
}

std::string OutgoingArticle(size_t bytes) {
  std::string text(kArticleHeaders);
  text += References();
  text += "\r\n";
  AppendBody(text, bytes > text.size() ? bytes - text.size() : 0, true);
  return Finish(std::move(text));
}

std::string OutgoingMail(size_t bytes) {
  std::string text = SignedMailHeaders();
  AppendBody(text, bytes > text.size() + 300 ? bytes - text.size() - 300 : 0, false);
  text += kSignaturePart;
  return Finish(std::move(text));
}

std::string ReplyEditorText(size_t bytes) {
  std::string text =
      "\r\n-- \r\nMarek\r\n"
      "----- Original Message ----- \r\n"
      "From: \"Jan Kowalski\" <jan@example.org>\r\n"
      "To: \"Marek Nowak\" <marek@example.net>\r\n"
      "Sent: Tuesday, March 13, 2007 9:15 AM\r\n"
      "Subject: Re: spotkanie\r\n"
      "\r\n"
      "\r\n";
  std::string body;
  AppendBody(body, bytes > text.size() + 60 ? bytes - text.size() - 60 : 0, false);
  // The client quotes every line of the message it answers with "> ".
  size_t lineStart = 0;
  for (size_t end = body.find("\r\n"); end != std::string::npos;
       lineStart = end + 2, end = body.find("\r\n", lineStart)) {
    text += "> ";
    text.append(body, lineStart, end + 2 - lineStart);
  }
  text += "> \r\n> -- \r\n> Jan Kowalski\r\n> tel. 600 000 000\r\n";
  return text;
}

Settings RewritingSettings() {
  Settings s;
  s.intXNewsreader = 1;
  s.intXMimeOLE = 1;
  s.intXMimeOLEMail = 1;
  s.strXNewsreader = "OE Brindle";
  s.strXMimeOLE = "Produced By OE Brindle";
  s.strXMailer = "OE Brindle";
  s.strXMimeOLEMail = "Produced By OE Brindle";
  s.intStripRef = 950;
  for (auto* table : {&s.newsHeaders, &s.mailHeaders}) {
    (*table)[0] = {"X-Face", "From", "\"8xw5&Qm4(>4N^y$]7BQ9#nU"};
    (*table)[1] = {"X-No-Archive", "", "yes"};
    (*table)[2] = {"Organization", "Subject", "Brindle users"};
  }
  SignatureRecord& sig = s.signatures[0];
  sig.UserName = "Marek Nowak";
  sig.email = "marek@example.net";
  sig.text = "-- \r\nMarek \xa3ukasz Nowak\r\nhttp://example.net/~marek";
  sig.Distance = 1;
  return s;
}

}  // namespace brindle::bench
