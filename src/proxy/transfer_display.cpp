#include "proxy/transfer_display.h"

#include "core/log.h"
#include "core/text.h"

namespace brindle {
namespace {

constexpr std::string_view kHidden = " ********";
constexpr size_t kAuthInfoShown = 13;  // "AUTHINFO PASS" / "AUTHINFO USER"

}  // namespace

std::string CredentialMask::Mask(std::string_view piece, bool inAuthExchange, bool produce) {
  std::string out;
  if (!produce) {
    // Every line end starts a fresh line whatever came before, so only the
    // text after the last one needs following.
    const size_t last = piece.rfind('\n');
    if (last != std::string_view::npos) {
      state_ = Line::kStart;
      piece.remove_prefix(last + 1);
    }
  }
  auto emit = [&](std::string_view text) {
    if (produce && out.size() < TransferDisplay::kClientPieceLimit) out.append(text);
  };
  size_t i = 0;
  while (i < piece.size()) {
    const char c = piece[i];
    switch (state_) {
      case Line::kStart:
        head_.clear();
        if (inAuthExchange && c != '\r' && c != '\n') {
          emit(kHidden.substr(1));
          lineEndShown_ = true;
          state_ = Line::kHidden;
        } else {
          state_ = Line::kHead;
        }
        break;
      case Line::kHead:
        head_ += c;
        ++i;
        if (EqualsNoCase(head_, "PASS ")) {
          emit(kHidden);  // the space comes with the mask
          lineEndShown_ = true;
          state_ = Line::kHidden;
          break;
        }
        emit({&c, 1});
        if (EqualsNoCase(head_, "AUTHINFO")) {
          showLeft_ = kAuthInfoShown - head_.size();
          state_ = Line::kShowN;
        } else if (EqualsNoCase(head_, "AUTH ")) {
          state_ = Line::kMech;
        } else if (c == '\n') {
          state_ = Line::kStart;
        } else if (!StartsWithNoCase("AUTHINFO", head_) && !StartsWithNoCase("PASS ", head_)) {
          state_ = Line::kPlain;
        }
        break;
      case Line::kPlain: {
        const size_t end = piece.find('\n', i);
        const size_t next = end == std::string_view::npos ? piece.size() : end + 1;
        emit(piece.substr(i, next - i));
        i = next;
        if (end != std::string_view::npos) state_ = Line::kStart;
        break;
      }
      case Line::kShowN:
        if (c == '\n') {
          emit({&c, 1});
          ++i;
          state_ = Line::kStart;
        } else if (showLeft_ == 0) {
          emit(kHidden);
          lineEndShown_ = false;  // the classic form: nothing after the mask
          state_ = Line::kHidden;
        } else {
          emit({&c, 1});
          --showLeft_;
          ++i;
        }
        break;
      case Line::kMech:
        if (c == ' ') {
          emit(kHidden);
          lineEndShown_ = true;
          state_ = Line::kHidden;
          ++i;
        } else if (c == '\r' || c == '\n') {
          state_ = Line::kPlain;
        } else {
          emit({&c, 1});
          ++i;
        }
        break;
      case Line::kHidden: {
        const size_t end = piece.find('\n', i);
        if (end == std::string_view::npos) {
          i = piece.size();
        } else {
          if (lineEndShown_) emit("\r\n");
          i = end + 1;
          state_ = Line::kStart;
        }
        break;
      }
    }
  }
  if (out.size() > TransferDisplay::kClientPieceLimit)
    out.resize(TransferDisplay::kClientPieceLimit);
  return out;
}

bool TransferDisplay::Wanted() const {
  return enabled_ || log::Enabled(log::Level::kDebug);
}

void TransferDisplay::ShowClientPiece(std::string_view piece, CredentialMask& mask,
                                      bool inAuthExchange) {
  const bool wanted = Wanted();
  std::string shown = mask.Mask(piece, inAuthExchange, wanted);
  if (wanted) Show(std::move(shown));
}

void TransferDisplay::ShowServerPiece(std::string_view piece) {
  if (Wanted()) Show(std::string(piece.substr(0, kServerPieceLimit)));
}

void TransferDisplay::ShowConnections(size_t count) {
  connections_ = count;
  log::Debug("Current connections: " + std::to_string(count));
  if (observer_) observer_(recent_, connections_);
}

void TransferDisplay::Show(std::string text) {
  log::Debug("Recently transferred data: " + text);
  ++pieces_;
  if (!enabled_) return;
  recent_ = std::move(text);
  if (observer_) observer_(recent_, connections_);
}

}  // namespace brindle
