// A stand-in for the TLS companion in the program's tests: it takes the
// control commands on --control-port, appends each one (without its "END"
// line) to the file named by FAKE_COMPANION_LOG, listens on the ports that
// "a:" assigns and closes them on "d:", and ends on "QUIT" — unless
// FAKE_COMPANION_DEAF is set, in which case it ignores QUIT so that the
// program has to end it. A command must open with the key the program handed
// over in BRINDLE_COMPANION_KEY; one without it is recorded as "refused".
// It ends with the program that started it, so that a test that fails
// halfway leaves nothing running that holds the test runner's output open.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

namespace {

int Listen(int port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int one = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, 8) != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

std::string ReadCommand(int connection) {
  std::string text;
  char buffer[512];
  while (text.find("\r\nEND") == std::string::npos) {
    const ssize_t n = read(connection, buffer, sizeof buffer);
    if (n <= 0) break;
    text.append(buffer, static_cast<size_t>(n));
  }
  const auto end = text.find("\r\nEND");
  return end == std::string::npos ? text : text.substr(0, end);
}

void Record(const std::string& command) {
  const char* path = std::getenv("FAKE_COMPANION_LOG");
  if (path == nullptr) return;
  if (FILE* f = std::fopen(path, "a")) {
    std::fprintf(f, "%s\n", command.c_str());
    std::fclose(f);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int controlPort = 5555;
  for (int i = 1; i + 1 < argc; ++i)
    if (std::strcmp(argv[i], "--control-port") == 0) controlPort = std::atoi(argv[i + 1]);
  const int control = Listen(controlPort);
  if (control < 0) {
    std::perror("fake companion: control port");
    return 1;
  }
  const bool deaf = std::getenv("FAKE_COMPANION_DEAF") != nullptr;
  if (const char* log = std::getenv("FAKE_COMPANION_LOG")) {  // where a test finds whom to kill
    if (FILE* f = std::fopen((std::string(log) + ".pid").c_str(), "w")) {
      std::fprintf(f, "%d\n", static_cast<int>(getpid()));
      std::fclose(f);
    }
  }
  const pid_t program = getppid();
  std::map<int, int> routes;  // port -> listening socket
  for (;;) {
    pollfd waiting{control, POLLIN, 0};
    if (poll(&waiting, 1, 200) == 0) {
      if (getppid() != program) return 0;
      continue;
    }
    const int connection = accept(control, nullptr, nullptr);
    if (connection < 0) continue;
    std::string command = ReadCommand(connection);
    if (command.empty()) {  // a probe: connected and left
      close(connection);
      continue;
    }
    // Recorded and done before the connection closes: the program takes the
    // close as the command's answer, so all is in place when it goes on.
    const char* key = std::getenv("BRINDLE_COMPANION_KEY");
    const std::string keyLine = key ? "k:" + std::string(key) + "\r\n" : "";
    const bool keyed = command.compare(0, keyLine.size(), keyLine) == 0;
    command.erase(0, keyed ? keyLine.size() : 0);
    Record(keyed ? command : "refused");
    if (keyed && command.rfind("a:", 0) == 0) {
      const int port = std::atoi(command.c_str() + 2);
      if (routes.count(port) == 0) routes[port] = Listen(port);
    } else if (keyed && command.rfind("d:", 0) == 0) {
      const auto it = routes.find(std::atoi(command.c_str() + 2));
      if (it != routes.end()) {
        close(it->second);
        routes.erase(it);
      }
    }
    close(connection);
    if (keyed && command == "QUIT" && !deaf) return 0;
  }
}
