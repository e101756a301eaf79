// Two small tools of the channel's byte work: finding where a dot-terminated
// text ends in a stream of pieces, and building what goes on from a piece
// without copying it when it goes on whole.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brindle {

// Finds the line holding one "." that ends a message or an answer body. The
// text starts at a line start, so a body that is only ".\r\n" ends at once.
class TerminatorScan {
 public:
  void Reset() { tail_ = "\r\n"; }
  // Offset in `piece` just past the terminator, or npos (the piece is all
  // text, and its end is remembered for the next one).
  size_t Find(std::string_view piece);

 private:
  std::string tail_ = "\r\n";  // the last bytes before this piece (at most 4)
};

// What goes on from one piece: runs of the piece and texts of our own, in
// order. When the piece goes on whole it is handed back without a copy.
class PieceOutput {
 public:
  explicit PieceOutput(std::string& piece) : piece_(piece) {}
  void Pass(size_t from, size_t to);
  void Add(std::string text);
  std::string Take();

 private:
  void Flush();

  std::string& piece_;
  std::string text_;
  size_t from_ = 0;
  size_t to_ = 0;         // [from_, to_): the run of the piece not yet in text_
  bool ownText_ = false;  // text_ holds something: the piece is no longer handed back
};

}  // namespace brindle
