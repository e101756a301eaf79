// Out of file descriptors, a tunnel's accept fails at once for as long as
// the shortage lasts: it must wait and try again, not spin, and serve the
// waiting client once descriptors are free.
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

#include "core/log.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

class DescriptorShortageTest : public ProxyFixture {
 protected:
  void TearDown() override {
    for (int fd : held_) close(fd);
    setrlimit(RLIMIT_NOFILE, &limit_);
  }

  // Takes every descriptor the process may still open but one.
  void TakeAllButOne() {
    getrlimit(RLIMIT_NOFILE, &limit_);
    rlimit low = limit_;
    low.rlim_cur = std::min<rlim_t>(limit_.rlim_cur, 512);  // keeps the loop short
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    for (int fd; (fd = dup(2)) >= 0;) held_.push_back(fd);
    ASSERT_FALSE(held_.empty());
    close(held_.back());
    held_.pop_back();
  }

  ScriptedServer server_{io_, "200 ready\r\n"};
  rlimit limit_{};
  std::vector<int> held_;
};

TEST_F(DescriptorShortageTest, AcceptWaitsOutTheShortageAndThenServesTheClient) {
  const uint16_t port = Tunnel(kTypeNntp, server_);
  const auto span = std::chrono::milliseconds(600);
  io_.restart();
  const size_t quiet = io_.run_for(span);  // the proxy's own timers
  log::Capture log;
  TakeAllButOne();
  auto client = Connect(io_, port);  // its socket takes the last descriptor
  ASSERT_TRUE(client);

  // A spinning accept runs thousands of handlers in this span; waiting
  // ones (50 ms, doubling) add a handful to the quiet loop's.
  io_.restart();
  const size_t handlers = io_.run_for(span);
  EXPECT_LT(handlers, quiet + 40) << quiet << " when quiet";
  const std::string text = log.Text();
  EXPECT_NE(text.find("accept failed, trying again shortly"), std::string::npos) << text;
  EXPECT_EQ(text.find("accept failed"), text.rfind("accept failed")) << "said once";

  for (int fd : held_) close(fd);
  held_.clear();
  EXPECT_TRUE(Receives(client, "200 ready\r\n"));
}

}  // namespace
}  // namespace brindle::proxytest
