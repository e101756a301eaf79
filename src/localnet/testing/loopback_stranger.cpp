// A local stranger for the tests, run under another user id:
//   loopback_stranger send PORT COMMAND   one control command ("END" added);
//                                         prints the answer, if any
//   loopback_stranger squat PORT SECONDS  listens on 127.0.0.1:PORT, prints
//                                         "listening", then after SECONDS
//                                         "received N" (bytes from all comers)
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int Send(int port, const std::string& command) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Loopback(port);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    std::printf("not connected\n");
    return 1;
  }
  const std::string text = command + "\r\nEND";
  if (write(fd, text.data(), text.size()) < 0) return 1;
  timeval limit{5, 0};
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  char buffer[256];
  ssize_t n;
  while ((n = read(fd, buffer, sizeof buffer)) > 0) std::fwrite(buffer, 1, n, stdout);
  close(fd);
  return 0;
}

int Squat(int port, int seconds) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Loopback(port);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 16) != 0) {
    std::printf("cannot listen\n");
    return 1;
  }
  std::printf("listening\n");
  std::fflush(stdout);
  std::vector<pollfd> fds{{listener, POLLIN, 0}};
  size_t received = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (std::chrono::steady_clock::now() < end) {
    if (poll(fds.data(), fds.size(), 50) <= 0) continue;
    for (size_t i = 0; i < fds.size(); ++i) {
      if (!(fds[i].revents & POLLIN)) continue;
      if (i == 0) {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection >= 0) fds.push_back({connection, POLLIN, 0});
        continue;
      }
      char buffer[4096];
      const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
      if (n > 0) received += static_cast<size_t>(n);
      if (n <= 0) fds[i].events = 0;
    }
  }
  std::printf("received %zu\n", received);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "send") == 0) return Send(std::atoi(argv[2]), argv[3]);
  if (argc == 4 && std::strcmp(argv[1], "squat") == 0)
    return Squat(std::atoi(argv[2]), std::atoi(argv[3]));
  std::fprintf(stderr, "usage: loopback_stranger send PORT COMMAND | squat PORT SECONDS\n");
  return 2;
}
