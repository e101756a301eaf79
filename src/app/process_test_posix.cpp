#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include <gtest/gtest.h>
#include <asio/io_context.hpp>

#include "app/child_process.h"
#include "app/instance_lock.h"

namespace brindle::app {
namespace {

std::string TempFolder() {
  char pattern[] = "/tmp/brindle-app-XXXXXX";
  return mkdtemp(pattern);
}

TEST(InstanceLock, OneHolderPerFolderUntilItGoes) {
  const std::string root = TempFolder();
  const std::string folder = root + "/deeper/OE Brindle";  // created on the way
  std::optional<InstanceLock> first, second;
  std::string detail;
  ASSERT_EQ(InstanceLock::Acquire(folder, first, detail), InstanceLock::Result::kAcquired)
      << detail;
  EXPECT_EQ(InstanceLock::Acquire(folder, second, detail), InstanceLock::Result::kHeldByAnother);
  EXPECT_FALSE(second.has_value());

  // A child started while the lock is held does not inherit it: once the
  // holder lets go, the next start gets in although the child still runs.
  asio::io_context io;
  ChildWatcher children(io);
  const pid_t child = SpawnProcess("sleep", {"30"}, true).value();
  ASSERT_GT(child, 0);
  first.reset();
  EXPECT_EQ(InstanceLock::Acquire(folder, second, detail), InstanceLock::Result::kAcquired);
  kill(child, SIGKILL);
  int status = -1;
  children.Watch(child, [&](int s) { status = s; });
  while (status < 0 && io.run_one()) {
  }
  EXPECT_EQ(status, 128 + SIGKILL);
  std::filesystem::remove_all(root);
}

TEST(ChildWatcher, OnlyTheCompanionLeavesTheTerminalsProcessGroup) {
  asio::io_context io;
  ChildWatcher children(io);
  const pid_t client = SpawnProcess("sleep", {"30"}, true).value();
  const pid_t companion = SpawnProcess("sleep", {"30"}, true, /*ownProcessGroup=*/true).value();
  ASSERT_GT(client, 0);
  ASSERT_GT(companion, 0);
  // A client such as a newsreader needs the terminal: it stays in our group.
  EXPECT_EQ(getpgid(client), getpgrp());
  // The companion's group is its own, so a Ctrl-C for us never reaches it.
  EXPECT_EQ(getpgid(companion), companion);
  int ended = 0;
  for (pid_t pid : {client, companion}) {
    children.Watch(pid, [&ended](int) { ++ended; });
    kill(pid, SIGKILL);
  }
  while (ended < 2 && io.run_one()) {
  }
  EXPECT_EQ(ended, 2);
}

}  // namespace
}  // namespace brindle::app
