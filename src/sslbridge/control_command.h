// The companion's control language: one command per control connection,
// "a:PORT:HOST:DESTPORT", "d:PORT" or "QUIT", followed by the line "END".
// The program that started the companion opens each connection with the
// line "k:KEY" before the command.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brindle::sslbridge {

// The protocol a route's server speaks before it switches to TLS inside it.
enum class UpgradeProtocol { kNntp, kPop3, kSmtp };

struct ControlCommand {
  enum class Kind { kAddRoute, kDeleteRoute, kQuit };
  Kind kind = Kind::kQuit;
  uint16_t port = 0;      // the local listening port (add, delete)
  std::string host;       // the real server (add)
  uint16_t destPort = 0;  // the real server's port (add)
  // "s:PROTOCOL:PORT:HOST:DESTPORT" adds a route whose server is reached in
  // the clear and switched to TLS with the protocol's own command.
  std::optional<UpgradeProtocol> upgrade;
};

// "nntp", "pop3", "smtp" (as the "s:" command names them).
std::optional<UpgradeProtocol> ParseUpgradeProtocol(std::string_view name);

// Parses the command line (without its CR LF). A host may itself hold ':'
// (an IPv6 literal): the first field is the local port, the last one the
// destination port, everything between is the host. Returns nullopt for
// anything malformed.
std::optional<ControlCommand> ParseControlCommand(std::string_view line);

// What has been read from a control connection so far. Complete once the
// terminator line "END" has arrived; `eof` says the peer has closed, in which
// case a full command line is taken even without the terminator.
struct ControlMessage {
  bool complete = false;
  std::optional<std::string> key;  // the "k:" line's value, when one came first
  std::string command;
};
ControlMessage ExamineControlText(std::string_view text, bool eof);

// The text as a log line may show it: control characters and bytes from
// 0x7F up as \xNN, cut after `limit` bytes.
std::string EscapeForLog(std::string_view text, size_t limit = 200);

// Ports are decimal, 1..65535, without sign or blanks.
std::optional<uint16_t> ParsePort(std::string_view text);

}  // namespace brindle::sslbridge
