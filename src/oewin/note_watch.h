// The main timer that drives note-window tracking on the client's thread.
#pragma once

namespace brindle {

// How often the window in front is looked at: fast enough that a reply is
// reworked before the user types, slow enough to cost nothing.
inline constexpr unsigned kNoteTickMs = 250;

// Starts ticking on the calling thread, which must run a message loop (the
// client's); stops when it goes. One per program.
class NoteWindowWatch {
 public:
  NoteWindowWatch();
  ~NoteWindowWatch();
  NoteWindowWatch(const NoteWindowWatch&) = delete;
  NoteWindowWatch& operator=(const NoteWindowWatch&) = delete;

 private:
  bool owner_ = false;  // a second watch leaves the first one ticking
};

}  // namespace brindle
