// Out of memory while a channel is served: that one connection goes, the
// program and every other connection stay. The test binary's allocation
// functions can be told to refuse the next large requests.
#include <atomic>
#include <cstdlib>
#include <new>

#include "core/log.h"
#include "proxy/proxy_fixture.h"

namespace {

std::atomic<size_t> refuseFrom{0};  // 0: nothing is refused
std::atomic<int> refusalsLeft{0};

void* Allocate(size_t size) {
  if (size >= refuseFrom.load() && refuseFrom.load() != 0 && refusalsLeft.fetch_sub(1) > 0) {
    throw std::bad_alloc();
  }
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}

}  // namespace

// Every plain and array form, so that what one form takes another gives
// back through the same pair of malloc and free.
void* operator new(size_t size) {
  return Allocate(size);
}
void* operator new[](size_t size) {
  return Allocate(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  try {
    return Allocate(size);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](size_t size, const std::nothrow_t& t) noexcept {
  return operator new(size, t);
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete[](void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, size_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, size_t) noexcept {
  std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}

namespace brindle::proxytest {
namespace {

class AllocationFailureTest : public ProxyFixture {
 protected:
  void TearDown() override { refuseFrom = 0; }
  ScriptedServer server_{io_, "200 ready\r\n"};
};

TEST_F(AllocationFailureTest, AChannelThatCannotGetItsBuffersEndsAloneAndTheNextIsServed) {
  const uint16_t port = Tunnel(kTypeNntp, server_);
  log::Capture log;
  // The relay's read buffers are the only requests this large while a
  // client is let in; the test's own peers read into smaller ones.
  refusalsLeft = 1;
  refuseFrom = 128 * 1024;
  auto refused = Connect(io_, port);
  ASSERT_TRUE(refused);
  EXPECT_TRUE(RunUntil(io_, [&] { return refused->closed; })) << "the client was left hanging";
  EXPECT_TRUE(log.Contains("bad_alloc") || log.Contains("bad allocation")) << log.Text();
  EXPECT_TRUE(RunUntil(io_, [&] { return proxy_->ChannelCount() == 0; }));

  Dialogue served = Open(port, server_, "200 ready\r\n");
  served.client->Send("HELP\r\n");
  EXPECT_TRUE(Receives(served.server, "HELP\r\n"));
}

}  // namespace
}  // namespace brindle::proxytest
