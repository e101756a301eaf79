// The plain opening of a route whose server switches to TLS inside its own
// protocol (SMTP STARTTLS, POP3 STLS, NNTP STARTTLS): the server's greeting,
// for SMTP an EHLO, then the switch command, each answer checked. What comes
// back is the greeting, kept for the client: the client side of the route
// stays plain and never sees the switch, so brindle can still read and
// rewrite what the client sends, while the server leg is encrypted.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <asio/ip/tcp.hpp>

#include "sslbridge/control_command.h"

namespace brindle::sslbridge {

class StartTlsPrelude : public std::enable_shared_from_this<StartTlsPrelude> {
 public:
  // `error` is empty on success; `greeting` is the server's greeting then.
  using Done = std::function<void(const std::string& error, std::string greeting)>;

  // `server` is connected and outlives the prelude's work.
  StartTlsPrelude(asio::ip::tcp::socket& server, UpgradeProtocol protocol, Done done);
  void Start();

 private:
  enum class Step { kGreeting, kEhlo, kSwitch };

  void ReadReply();
  void OnLine(std::string line);
  void OnReply(std::string_view lastLine);
  void Send(std::string command);
  void Fail(const std::string& why);
  std::string EhloName() const;

  asio::ip::tcp::socket& server_;
  UpgradeProtocol protocol_;
  Done done_;
  Step step_ = Step::kGreeting;
  std::string input_;
  std::string reply_;  // the lines of the reply being read
  std::string greeting_;
  std::string command_;
  bool offersSwitch_ = false;  // SMTP: the EHLO answer lists STARTTLS
};

}  // namespace brindle::sslbridge
