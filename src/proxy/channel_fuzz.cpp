// Feeds one channel pieces from both sides in any order: no crash, no hang,
// and with steps that change nothing, what goes on is always a prefix of
// what came in (nothing lost, nothing invented, nothing reordered).
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/log.h"
#include "core/settings_store.h"
#include "proxy/channel.h"

namespace brindle {
namespace {

// Each step hands the text back as it came.
class SameSteps : public MessageSteps {
 public:
  std::string AppendSignature(std::string&& t, const Settings&) override { return t; }
  std::string CutReferences(std::string&& t, int) override { return t; }
  std::string ChangeNewsHeaders(std::string&& t, const Settings&) override { return t; }
  std::string InsertNewsCustomHeaders(std::string&& t, const Settings&) override { return t; }
  std::string ChangeMailHeaders(std::string&& t, const Settings&) override { return t; }
  std::string InsertMailCustomHeaders(std::string&& t, const Settings&) override { return t; }
  std::string FilterBegin(std::string&& t) override { return t; }
  std::string FilterChars(std::string&& t, int16_t) override { return t; }
  std::string MarkAsianSpam(std::string&& t, int16_t, int16_t) override { return t; }
  std::string FixBoundary(std::string&& t) override { return t; }
};

void RequirePrefix(const std::string& out, const std::string& in, const char* side) {
  if (in.compare(0, out.size(), out) == 0) return;
  std::fprintf(stderr, "%s side: output is not a prefix of the input\n", side);
  std::abort();
}

}  // namespace
}  // namespace brindle

// Layout: one byte of set-up (protocol, real or unchanged steps, FQDN), then
// pieces, each a header byte (bit 0: from the server; the rest: length)
// followed by that many bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace brindle;
  if (size < 1) return 0;
  static const bool quiet = [] {
    log::SetSink({});
    return true;
  }();
  (void)quiet;
  const uint8_t setup = data[0];
  Settings settings;
  settings.intFQDN = (setup >> 3) & 1;
  settings.intCharFiltering = 1;
  settings.intAsianFilter = 1;
  SettingsStore store(settings);
  SameSteps same;
  const bool realSteps = (setup >> 2) & 1;
  TransferDisplay display;
  display.SetEnabled(true);
  ChannelLimits limits;
  limits.longestCommandLine = 256;
  limits.largestHeldMessage = 4096;
  static asio::io_context io;
  auto records = std::make_shared<FilterRecords>(io, store, std::chrono::hours(1));
  CChannel channel(1, {store, realSteps ? DefaultMessageSteps() : same, display, *records}, limits);
  const int32_t type = setup % 4 == 3 ? kTypeUnset : setup % 4;
  channel.cType(type);
  channel.ServerConnected((setup >> 4) & 1 ? "::1" : "127.0.0.1");

  std::string clientIn, clientOut, serverIn, serverOut;
  for (size_t at = 1; at < size && !channel.Ending();) {
    const bool fromServer = data[at] & 1;
    const size_t length = std::min<size_t>(data[at] >> 1, size - at - 1);
    std::string piece(reinterpret_cast<const char*>(data) + at + 1, length);
    at += 1 + length;
    if (fromServer) {
      serverIn += piece;
      serverOut += channel.ProcessServerData(std::move(piece));
    } else {
      clientIn += piece;
      clientOut += channel.ProcessClientData(std::move(piece));
    }
  }
  channel.StateName();
  if (realSteps) return 0;
  // SMTP changes the EHLO answer and, with FQDN, the greeting.
  if (type != kTypeSmtp) RequirePrefix(serverOut, serverIn, "server");
  if (type != kTypeSmtp || settings.intFQDN == 0) RequirePrefix(clientOut, clientIn, "client");
  return 0;
}
