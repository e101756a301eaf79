// Child programs on POSIX: the companion and the client of --client. They are
// started with posix_spawn and reaped asynchronously on the io_context, so
// the program never blocks waiting for one of them.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>

#include "core/status.h"

namespace brindle::app {

// Starts `program` with `args` (not including the program name), the
// environment inherited. `searchPath`: look the program up in PATH like a
// shell does. `ownProcessGroup`: start it in a process group of its own, so
// that a Ctrl-C at the terminal reaches only this program, which then ends
// the child in its own order. Returns the process id.
Expected<pid_t> SpawnProcess(const std::string& program, const std::vector<std::string>& args,
                             bool searchPath, bool ownProcessGroup = false);

// The exit status as a shell reports it: the code of a normal exit, 128 + the
// signal number of a child killed by a signal.
int ShellStatus(int waitStatus);

// Calls back when a watched child has ended. Create it before spawning the
// children it is to watch, so that no SIGCHLD is missed.
class ChildWatcher {
 public:
  explicit ChildWatcher(asio::io_context& io);
  void Watch(pid_t pid, std::function<void(int shellStatus)> ended);
  bool Running(pid_t pid) const { return watched_.count(pid) != 0; }
  // Reaps whatever has ended by now (the SIGCHLD handler does the same).
  void Poll();

 private:
  void Wait();
  asio::signal_set signals_;
  std::map<pid_t, std::function<void(int)>> watched_;
};

}  // namespace brindle::app
