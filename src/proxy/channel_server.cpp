// The server's side of a channel: status lines one by one, bodies up to
// their terminator line, and the answers the protocol holds (downloaded
// articles and mails, SMTP's EHLO answer) handed on once whole.
#include "proxy/channel.h"

namespace brindle {

std::string CChannel::ProcessServerData(std::string piece) {
  if (opaque_) return piece;
  if (ending_) return {};
  services_.display.ShowServerPiece(piece);
  if (!dialogue_) return piece;
  PieceOutput out(piece);
  size_t at = 0;
  while (at < piece.size() && !ending_) {
    switch (serverPart_) {
      case ServerPart::kStatusLine:
        ServerStatusLine(piece, at, out);
        break;
      case ServerPart::kBody:
        ServerBody(piece, at, out);
        break;
    }
  }
  return out.Take();
}

void CChannel::ServerStatusLine(std::string& piece, size_t& at, PieceOutput& out) {
  const size_t end = piece.find('\n', at);
  const size_t next = end == std::string::npos ? piece.size() : end + 1;
  const bool joined = !serverLine_.empty() || end == std::string::npos;
  if (joined) serverLine_.append(piece, at, next - at);
  const size_t length = joined ? serverLine_.size() : next - at;
  if (length > limits_.longestCommandLine) {
    return End("a server status line longer than " + std::to_string(limits_.longestCommandLine) +
                   " bytes (BRINDLE_MAX_COMMAND_LINE)",
               {});
  }
  at = next;
  if (end == std::string::npos) return;  // the line goes on in the next piece

  const std::string_view line = joined ? std::string_view(serverLine_)
                                       : std::string_view(piece).substr(next - length, length);
  const LinePlan plan = dialogue_->OnStatusLine(line);
  if (plan.hold && !holding_) {
    holding_ = true;
    serverOversize_ = false;
  }
  if (holding_ && !serverOversize_) {
    Hold(serverBuffer_, serverOversize_, line, out, "a downloaded answer");
  } else if (joined) {
    out.Add(std::move(serverLine_));
  } else {
    out.Pass(next - length, next);
  }
  serverLine_.clear();
  switch (plan.after) {
    case AfterLine::kAnswerEnds:
      EndAnswer(out, piece.size());
      break;
    case AfterLine::kMoreLines:
      break;
    case AfterLine::kBody:
      serverPart_ = ServerPart::kBody;
      serverEnd_.Reset();
      break;
  }
  if (plan.opaque) {
    BecomeOpaque();
    out.Pass(at, piece.size());
    at = piece.size();
  }
}

void CChannel::ServerBody(std::string& piece, size_t& at, PieceOutput& out) {
  const std::string_view rest = std::string_view(piece).substr(at);
  const size_t found = serverEnd_.Find(rest);
  const size_t stop = found == std::string_view::npos ? piece.size() : at + found;
  if (holding_ && !serverOversize_) {
    Hold(serverBuffer_, serverOversize_, rest.substr(0, stop - at), out, "a downloaded answer");
  } else {
    out.Pass(at, stop);
  }
  at = stop;
  if (found == std::string_view::npos) return;  // the body goes on
  serverPart_ = ServerPart::kStatusLine;
  EndAnswer(out, piece.size());
}

void CChannel::EndAnswer(PieceOutput& out, size_t lastPieceLength) {
  if (holding_ && !serverOversize_) {
    auto settings = services_.settings.Current();
    auto spammers = services_.records.Spammers();
    DownloadFiltering filtering(spammers.get());
    std::string text = dialogue_->Held(serverBuffer_.Take(), lastPieceLength, *settings,
                                       services_.steps, &filtering);
    // SMTP holds only its EHLO answer, which is no downloaded message.
    if (cType_ != kTypeSmtp) services_.records.Downloaded(tunnelName, text, filtering, *settings);
    out.Add(std::move(text));
  }
  holding_ = false;
  serverOversize_ = false;
  dialogue_->OnAnswerEnd();
}

}  // namespace brindle
