#include "ui/tunnel_dialog.h"

#include <cctype>

namespace brindle::ui {
namespace {

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
  if (!PortNumber(txtSrcPort) || !PortNumber(txtDestPort)) return PageMessage{88, 87, {}};
  return std::nullopt;
}

TunnelRecord TunnelDialog::Record() const {
  TunnelRecord r;
  r.Server = txtServer;
  r.SrcPort = PortNumber(txtSrcPort).value_or(0);
  r.DestPort = PortNumber(txtDestPort).value_or(0);
  r.AutoStart = chkAutoStart;
  r.SSL = chkSSL && SslAvailable();
  r.tType = tType;
  r.StartTLS = startTls_;
  return r;
}

}  // namespace brindle::ui
