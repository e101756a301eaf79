#include "proxy/stream_parts.h"

#include "core/text.h"
#include "rewrite/fast_find.h"

namespace brindle {

size_t TerminatorScan::Find(std::string_view piece) {
  // A terminator across the piece boundary: the remembered tail and the
  // first bytes of the piece.
  std::string seam = tail_;
  seam.append(piece.substr(0, kTerminator.size() - 1));
  const size_t across = seam.find(kTerminator);
  if (across != std::string::npos) return across + kTerminator.size() - tail_.size();
  const size_t at = FastFind(piece, kTerminator);
  if (at != std::string_view::npos) return at + kTerminator.size();
  if (piece.size() >= kTerminator.size() - 1) {
    tail_.assign(piece.substr(piece.size() - (kTerminator.size() - 1)));
  } else {
    tail_.append(piece);
    tail_.erase(0, tail_.size() - std::min(tail_.size(), kTerminator.size() - 1));
  }
  return std::string_view::npos;
}

void PieceOutput::Pass(size_t from, size_t to) {
  if (from == to) return;
  if (to_ != from_ && from != to_) Flush();
  if (to_ == from_) from_ = from;
  to_ = to;
}

void PieceOutput::Add(std::string text) {
  Flush();
  if (!ownText_ && text_.empty()) {
    text_ = std::move(text);
  } else {
    text_.append(text);
  }
  ownText_ = true;
}

void PieceOutput::Flush() {
  if (to_ == from_) return;
  text_.append(piece_, from_, to_ - from_);
  ownText_ = true;
  from_ = to_ = 0;
}

std::string PieceOutput::Take() {
  if (!ownText_) {
    if (from_ == 0 && to_ == piece_.size()) return std::move(piece_);
    return piece_.substr(from_, to_ - from_);
  }
  Flush();
  return std::move(text_);
}

}  // namespace brindle
