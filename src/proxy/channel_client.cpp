// The client's side of a channel: commands, posted articles, sent mails.
#include <algorithm>

#include "core/text.h"
#include "proxy/channel.h"
#include "proxy/host_name.h"
#include "proxy/message_pipeline.h"

namespace brindle {

std::string CChannel::NntpClient(const Settings& settings) {
  const std::string& buffer = clientBuffer_.Text();
  if (intArticleMode == 0) {
    if (!buffer.ends_with(kTerminator)) return {};  // the article goes on
    std::string article = RewriteNewsArticle(TakeClientBuffer(), settings, services_.steps);
    intArticleMode = 1;
    return article;
  }
  if (EqualsNoCase(buffer, "POST\r\n")) {
    intArticleMode = 0;  // the article follows the server's go-ahead
    Expecting(Expect::kPost);
  } else if (EqualsNoCase(buffer, "STARTTLS\r\n")) {
    Expecting(Expect::kTls);
  } else if (StartsWithNoCase(buffer, "AUTHINFO SASL ")) {
    Expecting(Expect::kAuth);
  }
  if (StartsWithNoCase(buffer, "ARTICLE ")) intArticleMode = 2;  // its answer is filtered
  return TakeClientBuffer();
}

std::string CChannel::Pop3Client() {
  const std::string& buffer = clientBuffer_.Text();
  if (StartsWithNoCase(buffer, "RETR ") || StartsWithNoCase(buffer, "TOP ")) blnCollecting = true;
  if (EqualsNoCase(buffer, "STLS\r\n")) {
    Expecting(Expect::kTls);
  } else if (StartsWithNoCase(buffer, "AUTH ") && !inAuthExchange_) {
    Expecting(Expect::kAuth);
  }
  return TakeClientBuffer();
}

namespace {

// Does the piece hold a DATA command line (the mail text follows its go-ahead)?
bool HasDataLine(std::string_view text) {
  for (size_t from = 0; from < text.size();) {
    size_t end = text.find(kCrLf, from);
    if (end == std::string_view::npos) return false;
    if (EqualsNoCase(text.substr(from, end - from), "DATA")) return true;
    from = end + 2;
  }
  return false;
}

}  // namespace

// Every SMTP command owes one reply; DATA, STARTTLS and AUTH replies steer
// the dialogue. Answers inside an authentication exchange are no commands.
void CChannel::CountSmtpCommands(std::string_view forwarded) {
  if (inAuthExchange_) return;
  for (size_t from = 0; from < forwarded.size();) {
    size_t end = forwarded.find(kCrLf, from);
    if (end == std::string_view::npos) break;
    std::string_view line = forwarded.substr(from, end - from);
    if (EqualsNoCase(line, "DATA")) {
      Expecting(Expect::kData);
    } else if (EqualsNoCase(line, "STARTTLS")) {
      Expecting(Expect::kTls);
    } else if (StartsWithNoCase(line, "AUTH ")) {
      Expecting(Expect::kAuth);
    } else {
      Expecting(Expect::kPlain);
    }
    from = end + 2;
  }
}

std::string CChannel::SmtpClient(const Settings& settings) {
  const std::string& buffer = clientBuffer_.Text();
  if (intMode == 2) {
    if (!buffer.ends_with(kTerminator)) return {};  // the mail goes on
    std::string mail = RewriteMail(TakeClientBuffer(), settings, services_.steps);
    intMode = 4;
    Expecting(Expect::kPlain);  // the server's verdict on the mail
    return mail;
  }
  if (HasDataLine(buffer)) {
    intMode = 2;
  } else if (settings.intFQDN == 1 && intMode == 3) {
    // The server sees the machine's full name, however the client greeted.
    TakeClientBuffer();
    intMode = 1;
    std::string greeting = "EHLO " + HostFullName() + "\r\n";
    CountSmtpCommands(greeting);
    return greeting;
  } else if (StartsWithNoCase(buffer, "RCPT TO:")) {
    intMode = 0;
  }
  std::string commands = TakeClientBuffer();
  CountSmtpCommands(commands);
  return commands;
}

}  // namespace brindle
