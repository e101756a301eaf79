// The message a compose window holds while its quoted reply is reworked.
// The window layer's CMailMsg/CNewsMsg read the subject from the window's
// envelope; the command-line tool and the tests use PlainQuoteMessage.
#pragma once

#include <string>
#include <utility>

namespace brindle {

enum class MessageKind { kMail, kNews };

class QuoteMessage {
 public:
  virtual ~QuoteMessage() = default;

  // Non-const: a mail window reads its subject field once and keeps it.
  virtual std::string Subject() = 0;
  // News and mail replies take different attribution templates.
  virtual MessageKind Kind() const = 0;

  // Filled by QuoteFix and kept for the life of the object.
  std::string QuotedText;   // the quoted body
  std::string QuoteHeader;  // the client's separator block, or the attribution line
  std::string TopText;      // what the client put above the separator (the signature)
};

class PlainQuoteMessage final : public QuoteMessage {
 public:
  PlainQuoteMessage(std::string subject, MessageKind kind)
      : subject_(std::move(subject)), kind_(kind) {}

  std::string Subject() override { return subject_; }
  MessageKind Kind() const override { return kind_; }

 private:
  std::string subject_;
  MessageKind kind_;
};

}  // namespace brindle
