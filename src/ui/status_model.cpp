#include "ui/status_model.h"

#include "proxy/channel_pair.h"
#include "proxy/proxy.h"
#include "proxy/transfer_display.h"
#include "proxy/tunnel.h"

namespace brindle::ui {

std::string ChannelStateName(const CChannel& c) {
  if (c.Relaying()) return "TLS, passed through";
  if (c.blnWorking) return "processing";
  switch (c.cType()) {
    case kTypeNntp:
      if (c.intArticleMode == 0) return "posting";
      if (c.intArticleMode == 2) return "collecting";
      return "commands";
    case kTypePop3:
      return c.blnCollecting ? "collecting" : "commands";
    case kTypeSmtp:
      switch (c.intMode) {
        case 2:
          return "sending mail";
        case 4:
          return "mail sent";
        case 0:
          return "recipients";
        case 1:
          return "greeted";
      }
      return "commands";
  }
  return "commands";
}

StatusModel ReadStatus(const Proxy& proxy) {
  StatusModel model;
  for (const auto& t : proxy.Tunnels()) {
    const TunnelTraffic& traffic = t->Traffic();
    model.tunnels.push_back({t->tType(), t->SrcPort, t->Server, t->DestPort, t->SSL, t->IsRunning(),
                             t->IsRunning() ? 0 : t->StartError(), traffic.fromClient,
                             traffic.fromServer, traffic.channels});
  }
  proxy.ForEachChannel([&](const ChannelPair& pair) {
    const CChannel& c = pair.Channel();
    model.channels.push_back({c.SockIndex(), c.cType(), ChannelStateName(c), pair.BytesFromClient(),
                              pair.BytesFromServer(), c.Relaying()});
  });
  model.recentlyTransferred = proxy.Display().RecentlyTransferredData();
  model.piecesShown = proxy.Display().PiecesShown();
  model.counts = proxy.Counts();
  return model;
}

}  // namespace brindle::ui
