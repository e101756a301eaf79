#include "web/web_server.h"

#include <restinio/all.hpp>

#include "core/log.h"
#include "web/web_view.h"

namespace brindle::web {
namespace {

// One thread: no strands, no locks.
using Traits =
    restinio::single_thread_traits_t<restinio::asio_timer_manager_t, restinio::null_logger_t>;

std::string HeaderOf(const restinio::request_t& req, restinio::http_field_t field) {
  return std::string(req.header().get_field_or(field, std::string()));
}

restinio::http_status_line_t StatusLine(int status) {
  const char* reason = "Error";
  switch (status) {
    case 200:
      reason = "OK";
      break;
    case 303:
      reason = "See Other";
      break;
    case 400:
      reason = "Bad Request";
      break;
    case 403:
      reason = "Forbidden";
      break;
    case 404:
      reason = "Not Found";
      break;
    case 405:
      reason = "Method Not Allowed";
      break;
    case 413:
      reason = "Payload Too Large";
      break;
    case 415:
      reason = "Unsupported Media Type";
      break;
  }
  return restinio::http_status_line_t{restinio::http_status_code_t{static_cast<uint16_t>(status)},
                                      reason};
}

}  // namespace

struct WebServer::Impl {
  Impl(asio::io_context& io, WebView& view, uint16_t port)
      : server(restinio::external_io_context(io),
               restinio::server_settings_t<Traits>{}
                   .address("127.0.0.1")
                   .port(port)
                   .incoming_http_msg_limits(restinio::incoming_http_msg_limits_t{}
                                                 .max_url_size(4096)
                                                 .max_field_name_size(256)
                                                 .max_field_value_size(8192)
                                                 .max_field_count(64)
                                                 .max_body_size(kMaxBodySize))
                   .read_next_http_message_timelimit(std::chrono::seconds(30))
                   .handle_request_timeout(std::chrono::seconds(10))
                   .request_handler(
                       [&view](restinio::request_handle_t req) { return Serve(view, *req); })) {}

  static restinio::request_handling_status_t Serve(WebView& view, restinio::request_t& req) {
    WebRequest request;
    request.method = req.header().method().c_str();
    request.target = std::string(req.header().request_target());
    request.host = HeaderOf(req, restinio::http_field::host);
    request.origin = HeaderOf(req, restinio::http_field::origin);
    request.referer = HeaderOf(req, restinio::http_field::referer);
    request.cookie = HeaderOf(req, restinio::http_field::cookie);
    request.contentType = HeaderOf(req, restinio::http_field::content_type);
    request.body = req.body();
    WebResponse answer;
    try {
      answer = view.Handle(request);
    } catch (const std::exception& e) {
      log::Warning(std::string("Browser view request failed: ") + e.what());
      answer = {500, "text/plain; charset=utf-8", "Internal error.\n", {}};
    }
    auto response = req.create_response(StatusLine(answer.status));
    response.append_header(restinio::http_field::content_type, answer.contentType);
    response.append_header("X-Content-Type-Options", "nosniff");
    response.append_header("X-Frame-Options", "DENY");
    response.append_header("Content-Security-Policy",
                           "default-src 'self'; frame-ancestors 'none'; form-action 'self'");
    for (const auto& [name, value] : answer.headers) response.append_header(name, value);
    response.connection_close();
    response.set_body(std::move(answer.body));
    return response.done();
  }

  restinio::http_server_t<Traits> server;
};

WebServer::WebServer(asio::io_context& io, WebView& view, uint16_t port)
    : impl_(std::make_unique<Impl>(io, view, port)) {}

WebServer::~WebServer() {
  Close();
}

bool WebServer::Open(std::string& error) {
  try {
    impl_->server.open_sync();
    return true;
  } catch (const std::exception& e) {
    error = e.what();
    return false;
  }
}

void WebServer::Close() {
  try {
    impl_->server.close_sync();
  } catch (const std::exception& e) {
    log::Warning(std::string("Browser view close: ") + e.what());
  }
}

}  // namespace brindle::web
