#include <gtest/gtest.h>

#include <map>

#include "proxy/proxy_test_support.h"
#include "proxy/tunnel.h"
#include "ui/proxy_tunnel_control.h"
#include "ui/settings_apply.h"
#include "ui/tunnels_page.h"

namespace brindle::ui {
namespace {

TunnelRecord Record(std::string server, int32_t port, int32_t type = kTypeNntp) {
  return {std::move(server), port, 119, true, false, type};
}

TEST(TunnelDialog, RefusesAnEmptyAddressAndPortsOutside1To65535) {
  TunnelDialog d;
  d.txtSrcPort = "1119";
  d.txtDestPort = "119";
  EXPECT_EQ(d.Validate(), (PageMessage{85, 86, {}}));
  d.txtServer = "news.example.org";
  EXPECT_EQ(d.Validate(), std::nullopt);
  for (const char* bad : {"0", "65536", "12a", "", "-1", "1 2"}) {
    d.txtDestPort = bad;
    EXPECT_EQ(d.Validate(), (PageMessage{88, 87, {}})) << bad;
  }
  d.txtDestPort = " 65535 ";
  d.chkSSL = true;
  EXPECT_EQ(d.Validate(), std::nullopt);
  EXPECT_EQ(d.Record().DestPort, 65535);
  EXPECT_FALSE(d.Record().SSL);  // not kept for news tunnels
  d.tType = kTypePop3;
  EXPECT_TRUE(d.Record().SSL);
}

TEST(PlanTunnels, RestartsChangedRemovesMissingAndKeepsTheRunningOrder) {
  std::vector<TunnelRecord> before = {Record("a", 1), Record("b", 2), Record("c", 3),
                                      Record("d", 4)};
  // Same records position for position: nothing to do.
  EXPECT_TRUE(PlanTunnels(before, before, {}).Empty());

  std::vector<TunnelRecord> after = {Record("a", 1), Record("c", 33), Record("d", 4),
                                     Record("e", 5)};
  TunnelPlan plan = PlanTunnels(before, after, {0, 2, 3, std::nullopt});
  ASSERT_EQ(plan.restarts.size(), 1u);
  EXPECT_EQ(plan.restarts[0].first, 2u);
  EXPECT_EQ(plan.restarts[0].second.SrcPort, 33);
  EXPECT_EQ(plan.removals, std::vector<size_t>{1});
  ASSERT_EQ(plan.additions.size(), 1u);
  EXPECT_EQ(plan.additions[0].Server, "e");

  // A tunnel moved before another, or after a new one, is made again at its
  // place; so is one whose type differs.
  after = {Record("b", 2), Record("a", 1), Record("x", 9), Record("c", 3),
           Record("d", 4, kTypeSmtp)};
  plan = PlanTunnels(before, after, {1, 0, std::nullopt, 2, 3});
  EXPECT_TRUE(plan.restarts.empty());
  EXPECT_EQ(plan.removals, (std::vector<size_t>{3, 2, 0}));
  ASSERT_EQ(plan.additions.size(), 4u);
  EXPECT_EQ(plan.additions[0].Server, "a");
  EXPECT_EQ(plan.additions[3].tType, kTypeSmtp);
}

// Answers at once; records what was asked.
class FakeControl : public TunnelControl {
 public:
  std::vector<bool> running;
  std::vector<std::string> calls;
  TunnelPlan plan;
  void Running(std::function<void(std::vector<bool>)> done) override { done(running); }
  void Start(size_t p, std::function<void(int)> done) override {
    calls.push_back("start " + std::to_string(p));
    running.at(p) = true;
    done(0);
  }
  void Stop(size_t p, std::function<void()> done) override {
    calls.push_back("stop " + std::to_string(p));
    running.at(p) = false;
    done();
  }
  void Reconfigure(TunnelPlan p, std::function<void()> done) override {
    calls.push_back("reconfigure");
    plan = std::move(p);
    if (done) done();
  }
};

TEST(TunnelsPage, StartStopActAtOnceWhileEditsWaitForApply) {
  Settings s;
  s.tunnels = {Record("a", 1), Record("b", 2, kTypePop3), Record("c", 3)};
  SettingsStore store(s);
  FakeControl control;
  control.running = {true, false, false};
  TunnelsPage page(&control);
  page.Load(s);
  page.Refresh();
  EXPECT_EQ(page.StateOffset(0), 77);
  EXPECT_EQ(page.StateOffset(1), 78);

  page.StartAll();
  EXPECT_EQ(control.calls, (std::vector<std::string>{"start 1", "start 2"}));
  control.calls.clear();
  page.Stop(2);
  page.Delete(0);
  TunnelDialog edit = *page.EditDialog(0);
  edit.txtSrcPort = "20";
  edit.tType = kTypeSmtp;  // the type of an existing tunnel stays
  page.Edit(0, edit);
  TunnelDialog added;
  added.txtServer = "d";
  added.txtSrcPort = added.txtDestPort = "4";
  page.Add(added);
  page.Start(2);  // not applied yet: nothing runs for it
  EXPECT_EQ(control.calls, (std::vector<std::string>{"stop 2"}));
  EXPECT_EQ(page.StateOffset(1), 78);  // "c" is stopped now, at its new place

  int saves = 0;
  SettingsApplier applier(store, &control, [&](const Settings&) { return ++saves > 0; });
  Settings next = s;
  page.Apply(next);
  bool done = false;
  EXPECT_TRUE(applier.Apply(next, page.Origins(), [&] { done = true; }));
  EXPECT_TRUE(done);
  EXPECT_EQ(saves, 1);
  EXPECT_EQ(store.Current()->tunnels.size(), 3u);
  EXPECT_EQ(store.Current()->tunnels[0].tType, kTypePop3);
  ASSERT_EQ(control.plan.restarts.size(), 1u);
  EXPECT_EQ(control.plan.restarts[0].first, 1u);
  EXPECT_EQ(control.plan.removals, std::vector<size_t>{0});
  EXPECT_EQ(control.plan.additions.size(), 1u);
}

// The plan carried out on a real proxy: the changed tunnel listens on its new
// port only, the deleted one is gone, the added one is there but stopped.
TEST(ProxyTunnelControl, ReconfiguresTheProxysTunnels) {
  using namespace proxytest;
  asio::io_context io;
  Settings s;
  s.tunnels = {Record("127.0.0.1", UnusedPort(io)), Record("127.0.0.1", UnusedPort(io))};
  SettingsStore store(s);
  ProxyOptions options;
  options.companionControlPort = UnusedPort(io);
  Proxy proxy(io, store, options);
  int started = 0;
  for (const auto& r : s.tunnels) proxy.AddTunnel(r, [&](int e) { started += e == 0; });
  ASSERT_TRUE(RunUntil(io, [&] { return started == 2; }));

  ProxyTunnelControl control(
      io, [&] { return &proxy; }, [](std::function<void()> f) { f(); });
  SettingsApplier applier(store, &control, [](const Settings&) { return true; });
  Settings next = s;
  const int32_t oldPort = next.tunnels[0].SrcPort;
  next.tunnels[0].SrcPort = UnusedPort(io);
  next.tunnels[1] = Record("127.0.0.1", UnusedPort(io), kTypeSmtp);
  next.tunnels[1].AutoStart = false;
  bool done = false;
  applier.Apply(next, {0, std::nullopt}, [&] { done = true; });
  ASSERT_TRUE(RunUntil(io, [&] { return done; }));

  ASSERT_EQ(proxy.Tunnels().size(), 2u);
  EXPECT_TRUE(proxy.Tunnels()[0]->IsRunning());
  EXPECT_EQ(proxy.Tunnels()[0]->SrcPort, next.tunnels[0].SrcPort);
  EXPECT_EQ(proxy.Tunnels()[1]->tType(), kTypeSmtp);
  EXPECT_FALSE(proxy.Tunnels()[1]->IsRunning());
  std::error_code ec;
  tcp::acceptor old(io);
  old.open(tcp::v4());
  old.bind({asio::ip::address_v4::loopback(), static_cast<uint16_t>(oldPort)}, ec);
  EXPECT_FALSE(ec) << "the old port is still taken";
  EXPECT_TRUE(Connect(io, static_cast<uint16_t>(next.tunnels[0].SrcPort)));

  std::vector<bool> running;
  control.Running([&](std::vector<bool> r) { running = r; });
  ASSERT_TRUE(RunUntil(io, [&] { return !running.empty(); }));
  EXPECT_EQ(running, (std::vector<bool>{true, false}));

  // An Apply that wants no word back (the browser's, the main window's toggles)
  // reconfigures all the same.
  next.tunnels[0].SrcPort = UnusedPort(io);
  applier.Apply(next, {0, 1});
  EXPECT_TRUE(RunUntil(io, [&] {
    return proxy.Tunnels()[0]->SrcPort == next.tunnels[0].SrcPort &&
           proxy.Tunnels()[0]->IsRunning();
  }));
}

}  // namespace
}  // namespace brindle::ui
