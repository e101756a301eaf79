// CSuperString: a growable text buffer for building long texts from many
// small pieces (a channel collecting an article, a long reply text). An
// append is amortised O(1) and copies the text only when the storage grows;
// Take hands the text on without copying and leaves the buffer empty with
// no storage of its own, so a buffer never keeps the size of the largest
// text it has held.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace brindle {

class CSuperString {
 public:
  CSuperString() = default;

  const std::string& Text() const { return used_; }
  int64_t Length() const { return static_cast<int64_t>(used_.size()); }
  void Add(std::string_view s) { used_.append(s.data(), s.size()); }
  // The text, moved out; the buffer is empty afterwards.
  std::string Take() { return std::exchange(used_, std::string()); }

 private:
  std::string used_;
};

}  // namespace brindle
