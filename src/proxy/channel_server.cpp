// The server's side of a channel: answers, downloaded articles and mails.
#include "core/text.h"
#include "proxy/channel.h"
#include "proxy/message_pipeline.h"

namespace brindle {

// Hands on everything collected so far; a piece that meets an empty buffer
// goes on without being copied.
std::string CChannel::PassOn(std::string piece) {
  if (serverBuffer_.Length() == 0) return piece;
  serverBuffer_.Add(piece);
  return TakeServerBuffer();
}

std::string CChannel::NntpServer(std::string piece) {
  if (intArticleMode != 2) return PassOn(std::move(piece));  // greetings, lists, answers
  const size_t pieceLength = piece.size();
  serverBuffer_.Add(piece);
  const std::string& buffer = serverBuffer_.Text();
  if (!buffer.ends_with(kTerminator)) {
    if (buffer.starts_with("220 ")) return {};  // the article goes on
    // A status line split inside its code is not known yet: wait for it.
    if (buffer.size() < 4 && std::string_view("220 ").starts_with(buffer)) return {};
    intArticleMode = 1;  // any other answer (430, 423, ...) goes on at once
    if (pieceLength == 0) return {};
    return TakeServerBuffer();
  }
  auto settings = services_.settings.Current();
  auto spammers = services_.records.Spammers();
  DownloadFiltering filtering(spammers.get());
  std::string article =
      FilterNewsArticle(TakeServerBuffer(), pieceLength, *settings, services_.steps, &filtering);
  services_.records.Downloaded(tunnelName, article, filtering, *settings);
  intArticleMode = 1;
  return article;
}

std::string CChannel::Pop3Server(std::string piece) {
  if (!blnCollecting) return PassOn(std::move(piece));
  serverBuffer_.Add(piece);
  const std::string& buffer = serverBuffer_.Text();
  // A refused RETR/TOP has no message and no terminator: hand it on now.
  if (buffer.starts_with("-ERR") && buffer.find(kCrLf) != std::string::npos) {
    blnCollecting = false;
    return TakeServerBuffer();
  }
  if (!buffer.ends_with(kTerminator)) return {};  // the message goes on
  auto settings = services_.settings.Current();
  auto spammers = services_.records.Spammers();
  DownloadFiltering filtering(spammers.get());
  std::string message =
      FilterMailMessage(TakeServerBuffer(), *settings, services_.steps, &filtering);
  services_.records.Downloaded(tunnelName, message, filtering, *settings);
  blnCollecting = false;
  return message;
}

}  // namespace brindle
