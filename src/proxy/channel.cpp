#include "proxy/channel.h"

#include "core/log.h"
#include "core/text.h"

namespace brindle {

CChannel::CChannel(int16_t sockIndex, ChannelServices services)
    : services_(services), SockIndex_(sockIndex) {}

void CChannel::cType(int32_t value) {
  if (cType_ != kTypeUnset) return;
  cType_ = value;
  // An SMTP server speaks first; its greeting is the first reply owed.
  if (cType_ == kTypeSmtp) owed_.push_back(Expect::kPlain);
}

namespace {

// Empties a buffer; one that held a whole message gives its storage back, so
// that a channel does not keep the size of the largest message it has seen.
std::string Take(CSuperString& buffer) {
  constexpr int64_t kKeptStorage = 64 * 1024;
  std::string text = buffer.Text();
  if (buffer.Length() > kKeptStorage) {
    buffer = CSuperString();
  } else {
    buffer.Text("");
  }
  return text;
}

}  // namespace

std::string CChannel::TakeClientBuffer() {
  return Take(clientBuffer_);
}

std::string CChannel::TakeServerBuffer() {
  return Take(serverBuffer_);
}

void CChannel::Expecting(Expect what) {
  if (owed_.empty()) replyHead_.clear();  // its answer starts a fresh line
  owed_.push_back(what);
}

// Follows the server's reply lines while an answer matters, keeping only the
// first four bytes of each line: enough for the status code and, in SMTP,
// the '-' that marks a line as not the last of its reply.
void CChannel::WatchReplies(std::string_view piece) {
  size_t from = 0;
  while (from < piece.size() && !owed_.empty()) {
    size_t lineEnd = piece.find('\n', from);
    size_t partEnd = lineEnd == std::string_view::npos ? piece.size() : lineEnd;
    if (replyHead_.size() < 4) {
      replyHead_.append(piece.substr(from, std::min(partEnd - from, 4 - replyHead_.size())));
    }
    if (lineEnd == std::string_view::npos) return;
    std::string head = std::move(replyHead_);
    replyHead_.clear();
    OnReplyLine(head);
    from = lineEnd + 1;
  }
}

void CChannel::OnReplyLine(std::string_view head) {
  if (cType_ == kTypeSmtp && head.size() >= 4 && head[3] == '-') return;  // reply goes on
  if (owed_.empty()) return;
  switch (owed_.front()) {
    case Expect::kPlain:
      break;
    case Expect::kPost:
      // Refused: the client will not send an article, so stop collecting one.
      if (!head.starts_with("340") && intArticleMode == 0) {
        intArticleMode = 1;
        log::Debug("Channel " + std::to_string(SockIndex_) + ": POST refused by the server");
      }
      break;
    case Expect::kData:
      if (!head.starts_with("354") && intMode == 2) {
        intMode = 0;
        log::Debug("Channel " + std::to_string(SockIndex_) + ": DATA refused by the server");
      }
      break;
    case Expect::kTls:
      if (AcceptsTls(head)) relaying_ = true;
      break;
    case Expect::kAuth:
      inAuthExchange_ = AsksForCredentials(head);
      if (inAuthExchange_) return;  // the same command is still being answered
      break;
  }
  owed_.pop_front();
}

bool CChannel::AcceptsTls(std::string_view head) const {
  switch (cType_) {
    case kTypeNntp:
      return head.starts_with("382");
    case kTypePop3:
      return head.starts_with("+OK");
    case kTypeSmtp:
      return head.starts_with("220");
    default:
      return false;
  }
}

bool CChannel::AsksForCredentials(std::string_view head) const {
  switch (cType_) {
    case kTypeNntp:
      return head.starts_with("383");
    case kTypePop3:
      return head.starts_with("+ ") || head == "+\r";
    case kTypeSmtp:
      return head.starts_with("334");
    default:
      return false;
  }
}

std::string CChannel::ProcessClientData(std::string piece) {
  if (relaying_) return piece;
  blnWorking = true;
  struct Done {
    bool& flag;
    ~Done() { flag = false; }
  } done{blnWorking};

  services_.display.ShowClientPiece(piece, inAuthExchange_);
  clientBuffer_.Add(piece);
  if (!clientBuffer_.Text().ends_with(kCrLf)) return {};  // line not complete yet
  auto settings = services_.settings.Current();
  switch (cType_) {
    case kTypeNntp:
      return NntpClient(*settings);
    case kTypePop3:
      return Pop3Client();
    case kTypeSmtp:
      return SmtpClient(*settings);
    default:
      return TakeClientBuffer();
  }
}

std::string CChannel::ProcessServerData(std::string piece) {
  if (relaying_) return piece;
  services_.display.ShowServerPiece(piece);
  WatchReplies(piece);
  switch (cType_) {
    case kTypeNntp:
      return NntpServer(std::move(piece));
    case kTypePop3:
      return Pop3Server(std::move(piece));
    default:
      return piece;  // SMTP answers go on as they come
  }
}

}  // namespace brindle
