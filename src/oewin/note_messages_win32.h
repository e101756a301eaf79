// CNewsMsg and CMailMsg: the envelope of the note window being reworked, its
// fields being dialog items of the note's "OE_Envelope" child.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "oewin/quote_fix_message.h"

namespace brindle {

enum EnvelopeItem : int {
  kNewsgroupsItem = 1002,
  kCCItem = 1003,
  kSubjectItem = 1004,
  kBCCItem = 1026,
};

// The note's envelope window; null when the note has none.
HWND FindEnvelope(HWND note);

class CNewsMsg final : public QuoteMessage {
 public:
  explicit CNewsMsg(HWND note) : hwnd(note), envelope_(FindEnvelope(note)) {}

  std::string Subject() override { return Read(kSubjectItem); }
  MessageKind Kind() const override { return MessageKind::kNews; }
  std::string Newsgroups() { return Read(kNewsgroupsItem); }
  std::string CC() { return Read(kCCItem); }
  void SetSubject(std::string_view v) { Write(kSubjectItem, v); }
  void SetNewsgroups(std::string_view v) { Write(kNewsgroupsItem, v); }
  void SetCC(std::string_view v) { Write(kCCItem, v); }

  const HWND hwnd;

 private:
  std::string Read(int item);
  void Write(int item, std::string_view value);

  HWND envelope_;
};

class CMailMsg final : public QuoteMessage {
 public:
  explicit CMailMsg(HWND note) : hwnd(note), envelope_(FindEnvelope(note)) {}

  // The subject as it was when first read: the user may already be typing
  // over it while the note is reworked.
  std::string Subject() override;
  MessageKind Kind() const override { return MessageKind::kMail; }
  void SetSubject(std::string_view v);
  // Written as if typed: the client resolves the addresses on End and ";".
  void SetCC(std::string_view v);
  void SetBCC(std::string_view v);

  const HWND hwnd;

 private:
  HWND envelope_;
  std::optional<std::string> subject_;
};

// A news note shows a Newsgroups field; a mail note does not.
bool IsNewsNote(HWND note);

}  // namespace brindle
