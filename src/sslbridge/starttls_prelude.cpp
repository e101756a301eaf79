#include "sslbridge/starttls_prelude.h"

#include <utility>

#include <asio/ip/host_name.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>

#include "core/text.h"

namespace brindle::sslbridge {
namespace {

// A reply line longer than this is no plain opening of a mail or news server.
constexpr size_t kLongestReply = 64 * 1024;

}  // namespace

StartTlsPrelude::StartTlsPrelude(asio::ip::tcp::socket& server, UpgradeProtocol protocol, Done done)
    : server_(server), protocol_(protocol), done_(std::move(done)) {}

void StartTlsPrelude::Start() {
  ReadReply();
}

void StartTlsPrelude::ReadReply() {
  asio::async_read_until(
      server_, asio::dynamic_buffer(input_, kLongestReply), '\n',
      [self = shared_from_this()](std::error_code ec, size_t n) {
        if (ec) {
          return self->Fail("the server ended the plain opening: " + ec.message());
        }
        std::string line = self->input_.substr(0, n);
        self->input_.erase(0, n);
        self->OnLine(std::move(line));
      });
}

void StartTlsPrelude::OnLine(std::string line) {
  reply_ += line;
  // SMTP replies go on while the fourth character is '-'.
  const bool goesOn = protocol_ == UpgradeProtocol::kSmtp && line.size() >= 4 && line[3] == '-';
  if (step_ == Step::kEhlo && line.size() >= 4 &&
      StartsWithNoCase(WithoutLineEnd(line.substr(4)), "STARTTLS")) {
    offersSwitch_ = true;
  }
  if (goesOn) return ReadReply();
  OnReply(line);
}

void StartTlsPrelude::OnReply(std::string_view lastLine) {
  const std::string reply = std::exchange(reply_, std::string());
  const bool ok =
      protocol_ == UpgradeProtocol::kPop3 ? lastLine.starts_with("+OK") : lastLine.size() >= 3;
  const std::string_view code = lastLine.substr(0, 3);
  switch (step_) {
    case Step::kGreeting:
      if (!ok || (protocol_ == UpgradeProtocol::kSmtp && code != "220") ||
          (protocol_ == UpgradeProtocol::kNntp && code != "200" && code != "201")) {
        return Fail("the server's greeting is a refusal: " + std::string(WithoutLineEnd(lastLine)));
      }
      greeting_ = reply;
      if (protocol_ == UpgradeProtocol::kSmtp) {
        step_ = Step::kEhlo;
        return Send("EHLO " + EhloName() + "\r\n");
      }
      step_ = Step::kSwitch;
      return Send(protocol_ == UpgradeProtocol::kPop3 ? "STLS\r\n" : "STARTTLS\r\n");
    case Step::kEhlo:
      if (code != "250") return Fail("EHLO refused: " + std::string(WithoutLineEnd(lastLine)));
      if (!offersSwitch_) return Fail("the server does not offer STARTTLS");
      step_ = Step::kSwitch;
      return Send("STARTTLS\r\n");
    case Step::kSwitch: {
      const bool accepted = protocol_ == UpgradeProtocol::kPop3   ? lastLine.starts_with("+OK")
                            : protocol_ == UpgradeProtocol::kNntp ? code == "382"
                                                                  : code == "220";
      if (!accepted) {
        return Fail("the switch to TLS was refused: " + std::string(WithoutLineEnd(lastLine)));
      }
      if (!input_.empty()) return Fail("the server sent more than its answer before TLS");
      auto done = std::move(done_);
      return done({}, std::move(greeting_));
    }
  }
}

void StartTlsPrelude::Send(std::string command) {
  command_ = std::move(command);
  asio::async_write(server_, asio::buffer(command_),
                    [self = shared_from_this()](std::error_code ec, size_t) {
                      if (ec) return self->Fail("sending to the server: " + ec.message());
                      self->ReadReply();
                    });
}

void StartTlsPrelude::Fail(const std::string& why) {
  if (!done_) return;
  auto done = std::move(done_);
  done(why, {});
}

// EHLO wants the machine's domain name; without a dot in the host name the
// address literal of this end of the connection stands in.
std::string StartTlsPrelude::EhloName() const {
  asio::error_code ec;
  std::string name = asio::ip::host_name(ec);
  if (!ec && name.find('.') != std::string::npos) return name;
  const auto local = server_.local_endpoint(ec);
  if (ec) return "[127.0.0.1]";
  const std::string address = local.address().to_string();
  return local.address().is_v6() ? "[IPv6:" + address + "]" : "[" + address + "]";
}

}  // namespace brindle::sslbridge
