// The HTTP side of the browser view: RESTinio on the proxy's own
// io_context (no thread of its own), listening on 127.0.0.1 only, with
// bounded request sizes; each request goes to WebView::Handle.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <asio/io_context.hpp>

namespace brindle::web {

class WebView;

class WebServer {
 public:
  WebServer(asio::io_context& io, WebView& view, uint16_t port);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  // Binds and listens; false (and why) when the port cannot be had.
  bool Open(std::string& error);
  // Stops listening; requests under way are abandoned.
  void Close();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace brindle::web
