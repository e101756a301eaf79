#include "proxy/channel_registry.h"

#include <asio/post.hpp>

#include "core/log.h"

namespace brindle {

ChannelRegistry::ChannelRegistry(asio::io_context& io, ChannelServices services,
                                 ChannelTimeouts timeouts)
    : io_(io), services_(services), timeouts_(timeouts) {}

ChannelRegistry::~ChannelRegistry() {
  CloseAll();
}

bool ChannelRegistry::Open(asio::ip::tcp::socket client, const ChannelTarget& target) {
  int16_t index = pool_.GetChannelSocket();
  if (index < 1) {
    log::Debug("All channel pairs busy: a client connection waits");
    held_.emplace_back(std::move(client), target);
    return false;
  }
  std::shared_ptr<ChannelPair> pair;
  try {
    pair = std::make_shared<ChannelPair>(io_, index, std::move(client), target, services_,
                                         timeouts_, weak_from_this());
    Channels[std::to_string(index)] = pair;
  } catch (const std::exception& e) {  // out of memory: this one connection goes
    log::Warning(std::string("A client connection was dropped: ") + e.what());
    Channels.erase(std::to_string(index));
    // The client socket went with the failed construction, or closes here.
    if (!pair) pool_.SetState(index, kPairFree);
    return HasFreePair();
  }
  services_.display.ShowConnections(Channels.size());
  pair->Start();
  return HasFreePair();
}

void ChannelRegistry::WhenPairFree(std::function<void()> resume) {
  waiting_.push_back(std::move(resume));
}

void ChannelRegistry::Remove(int16_t index) {
  if (pool_.State(index) != kPairInUse) return;  // already going
  auto found = Channels.find(std::to_string(index));
  if (found == Channels.end()) return;
  std::shared_ptr<ChannelPair> pair = std::move(found->second);
  Channels.erase(found);
  pool_.SetState(index, kPairDestroying);
  services_.display.ShowConnections(Channels.size());
  pair->Close();
}

void ChannelRegistry::CloseAll() {
  held_.clear();
  waiting_.clear();
  auto all = std::move(Channels);
  Channels.clear();
  for (auto& [key, pair] : all) {
    pool_.SetState(pair->Channel().SockIndex(), kPairDestroying);
    pair->Close();
  }
  if (!all.empty()) services_.display.ShowConnections(0);
}

void ChannelRegistry::PairDestroyed(int16_t index) {
  pool_.SetState(index, kPairFree);
  // Not from inside the destructor that called: new channels start from the loop.
  asio::post(io_, [weak = weak_from_this()] {
    if (auto self = weak.lock()) self->ServeWaiting();
  });
}

void ChannelRegistry::ServeWaiting() {
  while (!held_.empty() && pool_.FreeCount() > 0) {
    auto [client, target] = std::move(held_.front());
    held_.pop_front();
    Open(std::move(client), target);
  }
  if (!HasFreePair()) return;
  auto resume = std::move(waiting_);
  waiting_.clear();
  for (auto& r : resume) r();
}

CChannel* ChannelRegistry::Find(int16_t index) {
  auto found = Channels.find(std::to_string(index));
  return found == Channels.end() ? nullptr : &found->second->Channel();
}

}  // namespace brindle
