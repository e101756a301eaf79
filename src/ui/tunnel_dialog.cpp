#include "ui/tunnel_dialog.h"

#include <cctype>
#include <charconv>

namespace brindle::ui {
namespace {

// A port box holds digits only (blanks around them allowed), 1..65535.
std::optional<int32_t> Port(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
    text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
    text.remove_suffix(1);
  int32_t port = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (port < 1 || port > 65535) return std::nullopt;
  return port;
}

bool Blank(const std::string& s) {
  for (char c : s)
    if (!std::isspace(static_cast<unsigned char>(c))) return false;
  return true;
}

}  // namespace

TunnelDialog::TunnelDialog() : adding_(true) {}

TunnelDialog::TunnelDialog(const TunnelRecord& editing)
    : txtServer(editing.Server),
      txtSrcPort(std::to_string(editing.SrcPort)),
      txtDestPort(std::to_string(editing.DestPort)),
      chkAutoStart(editing.AutoStart),
      chkSSL(editing.SSL),
      tType(editing.tType),
      adding_(false),
      startTls_(editing.StartTLS) {}

std::optional<PageMessage> TunnelDialog::Validate() const {
  if (Blank(txtServer)) return PageMessage{85, 86, {}};
  if (!Port(txtSrcPort) || !Port(txtDestPort)) return PageMessage{88, 87, {}};
  return std::nullopt;
}

TunnelRecord TunnelDialog::Record() const {
  TunnelRecord r;
  r.Server = txtServer;
  r.SrcPort = Port(txtSrcPort).value_or(0);
  r.DestPort = Port(txtDestPort).value_or(0);
  r.AutoStart = chkAutoStart;
  r.SSL = chkSSL && SslAvailable();
  r.tType = tType;
  r.StartTLS = startTls_;
  return r;
}

}  // namespace brindle::ui
