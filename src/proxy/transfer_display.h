// What the status page shows of the proxy's traffic: the most recently
// transferred piece ("Recently transferred data") and the number of live
// channels ("Current connections"). Both also go to the log at debug level.
// Credentials never get here in clear: AUTHINFO lines keep only their first
// 13 characters, POP3 PASS and SMTP/POP3 AUTH lines lose their secret, and
// the client's answers inside an authentication exchange are hidden whole,
// however the client splits such a line into pieces (CredentialMask).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace brindle {

// Follows one channel's client stream line by line, across pieces, and
// gives each piece as it may be shown.
class CredentialMask {
 public:
  // `inAuthExchange`: the server has asked the client for credentials, so a
  // line that starts now is an answer to hide. With `produce` false only the
  // line state is followed (nothing is shown or logged), at memchr speed.
  std::string Mask(std::string_view piece, bool inAuthExchange, bool produce = true);

 private:
  enum class Line : uint8_t {
    kStart,   // nothing of the line seen yet
    kHead,    // its first bytes may still become a credential command
    kPlain,   // shown as it is
    kShowN,   // AUTHINFO: the command part is still shown, then the mask
    kMech,    // AUTH: the mechanism is shown, then the mask
    kHidden,  // the rest of the line is hidden
  };

  Line state_ = Line::kStart;
  std::string head_;
  size_t showLeft_ = 0;
  bool lineEndShown_ = true;
};

class TransferDisplay {
 public:
  static constexpr size_t kClientPieceLimit = 2000;
  static constexpr size_t kServerPieceLimit = 30000;

  // Told of every change of what is shown, on the proxy's thread: the main
  // window's boxes post it over to their own thread.
  using Observer = std::function<void(const std::string& recent, size_t connections)>;
  void SetObserver(Observer observer) { observer_ = std::move(observer); }

  // The status page turns the display on while it is shown.
  void SetEnabled(bool on) { enabled_ = on; }
  bool Enabled() const { return enabled_; }
  // Worth preparing a piece for: shown, or logged.
  bool Wanted() const;

  // `inAuthExchange`: the server has asked the client for credentials.
  void ShowClientPiece(std::string_view piece, CredentialMask& mask, bool inAuthExchange);
  void ShowServerPiece(std::string_view piece);
  void ShowConnections(size_t count);

  const std::string& RecentlyTransferredData() const { return recent_; }
  size_t CurrentConnections() const { return connections_; }
  // Pieces shown so far: lets a watcher tell a new piece from a repeated one.
  uint64_t PiecesShown() const { return pieces_; }

 private:
  void Show(std::string text);

  Observer observer_;
  bool enabled_ = false;
  std::string recent_;
  size_t connections_ = 0;
  uint64_t pieces_ = 0;
};

}  // namespace brindle
