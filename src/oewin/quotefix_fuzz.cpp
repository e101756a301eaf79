// Feeds arbitrary reply texts through QuoteFix with settings taken from the
// first bytes, and checks what must hold for any text: no crash, the cursor
// marker exactly once in a reply, and the ROT coder undoing itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "oewin/quote_fix.h"
#include "oewin/rewrap.h"
#include "oewin/rot.h"

namespace {

size_t Count(std::string_view text, std::string_view what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  const uint8_t flags = data[0];
  const int wrap = data[1] % 100;
  const std::string_view text(reinterpret_cast<const char*>(data + 2), size - 2);

  brindle::Settings s;
  s.intBottomPosting = flags & 1;
  s.intHorizontalQCompression = (flags >> 1) & 1;
  s.intVerticalQCompression = (flags >> 2) & 1;
  s.intWrotkaNews = (flags >> 3) & 1;
  s.strWrotkaNews = "%n <%e> %nt %i %d %s ###kursor###";
  s.intWrap = static_cast<int16_t>(wrap);
  const bool ctrl = (flags >> 4) & 1;
  const bool reply = (flags >> 5) & 1;

  brindle::PlainQuoteMessage m(reply ? "Re: fuzz" : "fuzz", brindle::MessageKind::kNews);
  const std::string out = brindle::QuoteFix(m, text, brindle::QuoteFixOptions{s, ctrl});
  if (reply && Count(out, brindle::kCursorMarker) != 1) std::abort();
  if (!reply && out != text) std::abort();

  brindle::Rewrap(text, wrap);
  const int64_t shift = static_cast<int8_t>(data[1]);
  if (brindle::rotate(brindle::rotate(text, shift), -shift) != text) std::abort();
  return 0;
}
