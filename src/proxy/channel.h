// CChannel: the protocol side of one relayed connection. It sees every piece
// the client sends and every piece the server sends, and says what goes on
// to the other side: commands pass line by line, a posted article or a sent
// mail is held until complete and rewritten once, a downloaded article or
// mail is held until complete and filtered once. Which answer belongs to
// which command is the protocol's business (dialogue.h); the channel splits
// the streams into lines, bodies and messages, holds what must be held, and
// keeps both sides within their limits. It owns no sockets: the pair that
// carries it (channel_pair.h) feeds it and writes what it returns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "core/settings_store.h"
#include "oewin/super_string.h"
#include "proxy/channel_limits.h"
#include "proxy/dialogue.h"
#include "proxy/filter_records.h"
#include "proxy/message_steps.h"
#include "proxy/stream_parts.h"
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
  CChannel(int16_t sockIndex, ChannelServices services,
           const ChannelLimits& limits = ChannelLimits::FromEnvironment());
  ~CChannel();
  CChannel(const CChannel&) = delete;
  CChannel& operator=(const CChannel&) = delete;

  int32_t cType() const { return cType_; }
  void cType(int32_t value);  // stored only while still unset (-1)
  int16_t SockIndex() const { return SockIndex_; }

  // One piece from the client; returns what goes to the server now (may be empty).
  std::string ProcessClientData(std::string piece);
  // One piece from the server; returns what goes to the client now (may be empty).
  std::string ProcessServerData(std::string piece);

  // The server connection is up; `localAddress` is its local end.
  void ServerConnected(const std::string& localAddress);

  // A side broke a limit: the channel is to end once `Farewell` (the
  // protocol's error answer, possibly empty) has gone to the client.
  bool Ending() const { return ending_; }
  const std::string& Farewell() const { return farewell_; }

  // For the status page: what the channel is doing ("posting", "collecting",
  // "sending mail", "relaying"), and whether the client switched to TLS (or
  // compression) inside a plain tunnel, so its messages pass unprocessed.
  const char* StateName() const;
  bool PassesUnprocessed() const { return opaque_; }

  // True while ProcessClientData runs.
  bool blnWorking = false;

  // How the filter log names the tunnel the channel came through.
  std::string tunnelName;

 private:
  enum class ClientPart : uint8_t { kCommands, kMessage };
  enum class ServerPart : uint8_t { kStatusLine, kBody };

  void ClientCommands(std::string& piece, size_t& at, PieceOutput& out);
  void ClientMessage(std::string& piece, size_t& at, PieceOutput& out);
  void ServerStatusLine(std::string& piece, size_t& at, PieceOutput& out);
  void ServerBody(std::string& piece, size_t& at, PieceOutput& out);
  void EndAnswer(PieceOutput& out, size_t lastPieceLength);
  // Holds `text` in `buffer`; past the held-message limit, hands what is
  // held and `text` on to `out` and reports false from then on.
  bool Hold(CSuperString& buffer, bool& oversize, std::string_view text, PieceOutput& out,
            const char* what);
  void End(std::string_view why, std::string_view farewell);
  void BecomeOpaque();

  ChannelServices services_;
  ChannelLimits limits_;
  int32_t cType_ = kTypeUnset;
  int16_t SockIndex_;
  std::unique_ptr<Dialogue> dialogue_;
  CredentialMask mask_;

  ClientPart clientPart_ = ClientPart::kCommands;
  std::string clientLine_;     // a command line not complete yet
  CSuperString clientBuffer_;  // the message being sent
  TerminatorScan clientEnd_;
  bool clientOversize_ = false;

  ServerPart serverPart_ = ServerPart::kStatusLine;
  std::string serverLine_;     // a status line not complete yet
  CSuperString serverBuffer_;  // the answer being held
  TerminatorScan serverEnd_;
  bool holding_ = false;
  bool serverOversize_ = false;

  bool opaque_ = false;
  bool ending_ = false;
  std::string farewell_;
};

}  // namespace brindle
