// Lines of the settings file. The file is read with any of the three line
// ends (CR LF, LF, lone CR) and always written with CR LF; multi-line values
// (attribution and signature texts) hold their lines joined by CR LF.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brindle {

// Number of CR LF pairs in a multi-line value plus one: the count written
// before the value so that the loader reads exactly its lines back.
int32_t CountLines(std::string_view text);

namespace ini {

// The text with every line end (LF, lone CR) as CR LF.
std::string CrLfLineEnds(std::string_view text);

// Reads a file's bytes one line at a time, without the line ends.
class LineReader {
 public:
  explicit LineReader(std::string_view bytes) : bytes_(bytes) {}
  bool AtEnd() const { return pos_ >= bytes_.size(); }
  // The next line; only valid when !AtEnd().
  std::string_view Next();

 private:
  std::string_view bytes_;
  size_t pos_ = 0;
};

}  // namespace ini

}  // namespace brindle
