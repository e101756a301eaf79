#include "proxy/transfer_display.h"

#include "core/log.h"
#include "core/text.h"

namespace brindle {
namespace {

constexpr std::string_view kHidden = " ********";
constexpr size_t kAuthInfoShown = 13;  // "AUTHINFO PASS" / "AUTHINFO USER"

// One client line (without its line end) as it may be shown.
std::string MaskLine(std::string_view line, bool inAuthExchange) {
  if (StartsWithNoCase(line, "AUTHINFO")) {
    return std::string(line.substr(0, kAuthInfoShown)).append(kHidden);
  }
  if (StartsWithNoCase(line, "PASS ")) return std::string("PASS").append(kHidden);
  if (StartsWithNoCase(line, "AUTH ")) {
    // "AUTH PLAIN <initial response>": the mechanism stays, the response goes.
    size_t end = line.find(' ', 5);
    if (end == std::string_view::npos) return std::string(line);
    return std::string(line.substr(0, end)).append(kHidden);
  }
  if (inAuthExchange && !line.empty()) return std::string(kHidden.substr(1));
  return std::string(line);
}

}  // namespace

std::string MaskClientPiece(std::string_view piece, bool inAuthExchange) {
  // The classic form: a piece that starts with AUTHINFO shows as its command
  // part and the mask, nothing more.
  if (StartsWithNoCase(piece, "AUTHINFO")) {
    return std::string(piece.substr(0, kAuthInfoShown)).append(kHidden);
  }
  std::string shown;
  size_t from = 0;
  while (from < piece.size() && shown.size() <= TransferDisplay::kClientPieceLimit) {
    size_t end = piece.find('\n', from);
    size_t next = end == std::string_view::npos ? piece.size() : end + 1;
    std::string_view whole = piece.substr(from, next - from);
    std::string_view line = whole;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    shown.append(MaskLine(line, inAuthExchange)).append(whole.substr(line.size()));
    from = next;
  }
  if (shown.size() > TransferDisplay::kClientPieceLimit)
    shown.resize(TransferDisplay::kClientPieceLimit);
  return shown;
}

bool TransferDisplay::Wanted() const {
  return enabled_ || log::Enabled(log::Level::kDebug);
}

void TransferDisplay::ShowClientPiece(std::string_view piece, bool inAuthExchange) {
  if (Wanted()) Show(MaskClientPiece(piece, inAuthExchange));
}

void TransferDisplay::ShowServerPiece(std::string_view piece) {
  if (Wanted()) Show(std::string(piece.substr(0, kServerPieceLimit)));
}

void TransferDisplay::ShowConnections(size_t count) {
  connections_ = count;
  log::Debug("Current connections: " + std::to_string(count));
}

void TransferDisplay::Show(std::string text) {
  log::Debug("Recently transferred data: " + text);
  ++pieces_;
  if (enabled_) recent_ = std::move(text);
}

}  // namespace brindle
