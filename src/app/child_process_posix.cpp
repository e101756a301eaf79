#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/child_process.h"

extern char** environ;

namespace brindle::app {

Expected<pid_t> SpawnProcess(const std::string& program, const std::vector<std::string>& args,
                             bool searchPath, bool ownProcessGroup) {
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);

  // The children start with the default signal dispositions and an empty
  // mask, whatever the program itself has blocked for its own handling.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  if (ownProcessGroup) {
    flags |= POSIX_SPAWN_SETPGROUP;
    posix_spawnattr_setpgroup(&attributes, 0);
  }
  posix_spawnattr_setflags(&attributes, flags);

  pid_t pid = -1;
  const int result =
      searchPath ? posix_spawnp(&pid, program.c_str(), nullptr, &attributes, argv.data(), environ)
                 : posix_spawn(&pid, program.c_str(), nullptr, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  if (result != 0) return Status::Error(program, {result, std::generic_category()});
  return pid;
}

int ShellStatus(int waitStatus) {
  if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
  if (WIFSIGNALED(waitStatus)) return 128 + WTERMSIG(waitStatus);
  return 1;
}

ChildWatcher::ChildWatcher(asio::io_context& io) : signals_(io, SIGCHLD) {
  Wait();
}

void ChildWatcher::Watch(pid_t pid, std::function<void(int)> ended) {
  watched_[pid] = std::move(ended);
  Poll();  // it may have ended before it was watched
}

void ChildWatcher::Poll() {
  for (auto it = watched_.begin(); it != watched_.end();) {
    int status = 0;
    if (waitpid(it->first, &status, WNOHANG) == it->first) {
      auto ended = std::move(it->second);
      it = watched_.erase(it);
      if (ended) ended(ShellStatus(status));
    } else {
      ++it;
    }
  }
}

void ChildWatcher::Wait() {
  signals_.async_wait([this](const std::error_code& ec, int) {
    if (ec) return;  // cancelled: the watcher is going away
    Poll();
    Wait();
  });
}

}  // namespace brindle::app
