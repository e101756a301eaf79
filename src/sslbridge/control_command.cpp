#include "sslbridge/control_command.h"

namespace brindle::sslbridge {

std::optional<uint16_t> ParsePort(std::string_view text) {
  if (text.empty() || text.size() > 5) return std::nullopt;
  unsigned value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<unsigned>(c - '0');
  }
  if (value == 0 || value > 65535) return std::nullopt;
  return static_cast<uint16_t>(value);
}

std::optional<UpgradeProtocol> ParseUpgradeProtocol(std::string_view name) {
  if (name == "nntp") return UpgradeProtocol::kNntp;
  if (name == "pop3") return UpgradeProtocol::kPop3;
  if (name == "smtp") return UpgradeProtocol::kSmtp;
  return std::nullopt;
}

std::optional<ControlCommand> ParseControlCommand(std::string_view line) {
  ControlCommand cmd;
  if (line == "QUIT") return cmd;
  if (line.size() < 2 || line[1] != ':') return std::nullopt;
  std::string_view rest = line.substr(2);
  if (line[0] == 's') {
    const size_t colon = rest.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    cmd.upgrade = ParseUpgradeProtocol(rest.substr(0, colon));
    if (!cmd.upgrade) return std::nullopt;
    rest.remove_prefix(colon + 1);
  } else if (line[0] != 'a' && line[0] != 'd') {
    return std::nullopt;
  }
  if (line[0] == 'd') {
    auto port = ParsePort(rest);
    if (!port) return std::nullopt;
    cmd.kind = ControlCommand::Kind::kDeleteRoute;
    cmd.port = *port;
    return cmd;
  }
  size_t first = rest.find(':');
  size_t last = rest.rfind(':');
  if (first == std::string_view::npos || first == last) return std::nullopt;
  auto port = ParsePort(rest.substr(0, first));
  auto dest = ParsePort(rest.substr(last + 1));
  std::string_view host = rest.substr(first + 1, last - first - 1);
  if (!port || !dest || host.empty()) return std::nullopt;
  for (char c : host) {
    if (static_cast<unsigned char>(c) <= ' ') return std::nullopt;
  }
  cmd.kind = ControlCommand::Kind::kAddRoute;
  cmd.port = *port;
  cmd.host = std::string(host);
  cmd.destPort = *dest;
  return cmd;
}

namespace {

// The next line from `pos` (CR LF or, typed by hand, a bare LF); false while
// it has not ended yet.
bool NextLine(std::string_view text, size_t& pos, std::string_view& line) {
  size_t end = text.find('\n', pos);
  if (end == std::string_view::npos) return false;
  line = text.substr(pos, end - pos);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  pos = end + 1;
  return true;
}

}  // namespace

ControlMessage ExamineControlText(std::string_view text, bool eof) {
  ControlMessage msg;
  size_t pos = 0;
  std::string_view line;
  if (!NextLine(text, pos, line)) return msg;
  if (line.substr(0, 2) == "k:") {
    msg.key = std::string(line.substr(2));
    if (!NextLine(text, pos, line)) return msg;
  }
  msg.command = std::string(line);
  msg.complete = text.substr(pos, 3) == "END" || eof;
  return msg;
}

std::string EscapeForLog(std::string_view text, size_t limit) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text.substr(0, limit)) {
    if (c < ' ' || c >= 0x7F) {
      out += "\\x";
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += static_cast<char>(c);
    }
  }
  if (text.size() > limit) out += "...";
  return out;
}

}  // namespace brindle::sslbridge
