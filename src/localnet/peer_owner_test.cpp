// The owner lookup against the real socket tables: both ends of a loopback
// connection made here belong to this user. (Another user's end is the
// stranger tests' business: they need a second user.)
#include "localnet/peer_owner.h"

#include <gtest/gtest.h>

#include <asio/connect.hpp>
#include <asio/io_context.hpp>

#include "localnet/control_key.h"

namespace brindle::localnet {
namespace {

using asio::ip::tcp;

TEST(PeerOwner, BothEndsOfOurOwnLoopbackConnectionAreOurs) {
  if (!CanTellOwners()) GTEST_SKIP() << "this system names no socket owners";
  for (const auto& loopback : {asio::ip::address(asio::ip::address_v4::loopback()),
                               asio::ip::address(asio::ip::address_v6::loopback())}) {
    asio::io_context io;
    tcp::acceptor acceptor(io);
    std::error_code ec;
    acceptor.open(loopback.is_v4() ? tcp::v4() : tcp::v6(), ec);
    if (!ec) acceptor.bind({loopback, 0}, ec);
    if (ec) continue;  // no IPv6 on this machine
    acceptor.listen();
    tcp::socket client(io);
    client.connect(acceptor.local_endpoint());
    tcp::socket server = acceptor.accept();
    EXPECT_EQ(OwnerOfPeer(client), PeerOwner::kOurUser) << loopback.to_string();
    EXPECT_EQ(OwnerOfPeer(server), PeerOwner::kOurUser) << loopback.to_string();
  }
}

TEST(ControlKey, FreshEachTimeAndComparedWhole) {
  const std::string a = NewControlKey(), b = NewControlKey();
  EXPECT_EQ(a.size(), 64u);
  EXPECT_NE(a, b);
  EXPECT_TRUE(SameKey(a, a));
  EXPECT_FALSE(SameKey(a, b));
  EXPECT_FALSE(SameKey(a, a.substr(0, 63)));
  EXPECT_FALSE(SameKey(a, ""));
}

}  // namespace
}  // namespace brindle::localnet
