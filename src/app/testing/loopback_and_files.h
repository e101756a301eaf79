// Helpers of the program's tests on both platforms: loopback ports and whole
// files. Asio's sockets keep them free of the two socket APIs (and start
// Winsock where it needs starting).
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

namespace brindle::app::testing {

// A loopback port that was free a moment ago.
inline uint16_t FreePort() {
  asio::io_context io;
  asio::ip::tcp::acceptor acceptor(io, {asio::ip::address_v4::loopback(), 0});
  return acceptor.local_endpoint().port();
}

// Does something accept connections on this loopback port?
inline bool Listening(uint16_t port) {
  asio::io_context io;
  asio::ip::tcp::socket socket(io);
  std::error_code ec;
  socket.connect({asio::ip::address_v4::loopback(), port}, ec);
  return !ec;
}

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace brindle::app::testing
