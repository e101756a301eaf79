// CChannel: the protocol side of one relayed connection. It sees every piece
// the client sends and every piece the server sends, and says what goes on
// to the other side: commands pass line by line, a posted article or a sent
// mail is held until complete and rewritten once, a downloaded article or
// mail is held until complete and filtered once. It owns no sockets: the
// pair that carries it (channel_pair.h) feeds it and writes what it returns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "core/settings_store.h"
#include "oewin/super_string.h"
#include "proxy/filter_records.h"
#include "proxy/message_steps.h"
#include "proxy/transfer_display.h"

namespace brindle {

// What a channel works with; all of it outlives the channel.
struct ChannelServices {
  SettingsStore& settings;
  MessageSteps& steps;
  TransferDisplay& display;
  FilterRecords& records;
};

class CChannel {
 public:
  CChannel(int16_t sockIndex, ChannelServices services);

  int32_t cType() const { return cType_; }
  void cType(int32_t value);  // stored only while still unset (-1)
  int16_t SockIndex() const { return SockIndex_; }

  // One piece from the client; returns what goes to the server now (may be empty).
  std::string ProcessClientData(std::string piece);
  // One piece from the server; returns what goes to the client now (may be empty).
  std::string ProcessServerData(std::string piece);

  // After the server accepted STARTTLS/STLS: bytes pass both ways untouched.
  bool Relaying() const { return relaying_; }

  // Protocol state (read by tests and the status page).
  bool blnWorking = false;
  int32_t intArticleMode = 1;  // NNTP: 0 posting, 1 relaying, 2 article asked for
  bool blnCollecting = false;  // POP3: a RETR/TOP answer is being collected
  int32_t intMode = 3;         // SMTP: 3 fresh, 2 collecting mail, 1 EHLO replaced, 0 RCPT, 4 sent

  // How the filter log names the tunnel the channel came through.
  std::string tunnelName;

 private:
  // Server replies the channel waits for, oldest first. SMTP records every
  // command so that pipelined replies are matched to their commands; NNTP
  // and POP3 only record the commands whose answer changes the dialogue.
  enum class Expect : uint8_t { kPlain, kPost, kData, kTls, kAuth };

  std::string NntpClient(const Settings& settings);
  std::string Pop3Client();
  std::string SmtpClient(const Settings& settings);
  std::string NntpServer(std::string piece);
  std::string Pop3Server(std::string piece);
  std::string PassOn(std::string piece);

  std::string TakeClientBuffer();
  std::string TakeServerBuffer();
  void Expecting(Expect what);
  void WatchReplies(std::string_view piece);
  void OnReplyLine(std::string_view head);
  bool AcceptsTls(std::string_view head) const;
  bool AsksForCredentials(std::string_view head) const;
  void CountSmtpCommands(std::string_view forwarded);

  ChannelServices services_;
  int32_t cType_ = kTypeUnset;
  int16_t SockIndex_;
  CSuperString clientBuffer_;
  CSuperString serverBuffer_;
  std::deque<Expect> owed_;
  std::string replyHead_;  // first bytes of the server line being received
  bool inAuthExchange_ = false;
  bool relaying_ = false;
};

}  // namespace brindle
