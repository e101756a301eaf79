#include "ui/status_model.h"

#include "proxy/channel_pair.h"
#include "proxy/proxy.h"
#include "proxy/transfer_display.h"
#include "proxy/tunnel.h"

namespace brindle::ui {

std::string ChannelStateName(const CChannel& c) {
  if (c.PassesUnprocessed()) return "TLS, passed through";
  if (c.blnWorking) return "processing";
  return c.StateName();
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
                              pair.BytesFromServer(), c.PassesUnprocessed()});
  });
  model.recentlyTransferred = proxy.Display().RecentlyTransferredData();
  model.piecesShown = proxy.Display().PiecesShown();
  model.counts = proxy.Counts();
  return model;
}

}  // namespace brindle::ui
