// The tunnel adding / editing dialog: server address, local and remote
// port, start automatically, encrypted connection, and for a new tunnel its
// type. OK is refused, with the box the view shows, while the address is
// empty or a port is not a number in 1..65535.
#pragma once

#include <optional>
#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class TunnelDialog {
 public:
  // Adding: a new news tunnel; editing: the record as it stands (its type
  // cannot change any more).
  TunnelDialog();
  explicit TunnelDialog(const TunnelRecord& editing);

  bool adding() const { return adding_; }
  int TitleOffset() const { return adding_ ? 80 : 79; }

  std::string txtServer;
  std::string txtSrcPort;
  std::string txtDestPort;
  bool chkAutoStart = false;
  bool chkSSL = false;
  int32_t tType = kTypeNntp;  // only while adding

  // The settings file keeps no encryption flag for news tunnels: the box is
  // off for them, so that a running tunnel never differs from its next load.
  bool SslAvailable() const { return tType != kTypeNntp; }

  std::optional<PageMessage> Validate() const;
  // The record OK stores; call after Validate has passed.
  TunnelRecord Record() const;

 private:
  bool adding_;
  bool startTls_ = false;  // StartTLS is set in the settings file only
};

}  // namespace brindle::ui
