// The client's side of a channel: command lines one by one, and the posted
// article or sent mail held whole from the server's go-ahead to its
// terminator line.
#include "proxy/channel.h"

namespace brindle {

std::string CChannel::ProcessClientData(std::string piece) {
  if (opaque_) return piece;
  if (ending_) return {};
  blnWorking = true;
  struct Done {
    bool& flag;
    ~Done() { flag = false; }
  } done{blnWorking};

  services_.display.ShowClientPiece(piece, mask_, dialogue_ && dialogue_->InAuthExchange());
  if (!dialogue_) return piece;
  PieceOutput out(piece);
  size_t at = 0;
  while (at < piece.size() && !ending_) {
    switch (clientPart_) {
      case ClientPart::kCommands:
        ClientCommands(piece, at, out);
        break;
      case ClientPart::kMessage:
        ClientMessage(piece, at, out);
        break;
    }
  }
  return out.Take();
}

void CChannel::ClientCommands(std::string& piece, size_t& at, PieceOutput& out) {
  if (clientLine_.empty() && dialogue_->MessageStarts()) {
    clientPart_ = ClientPart::kMessage;
    clientEnd_.Reset();
    return;
  }
  const size_t end = piece.find('\n', at);
  const size_t next = end == std::string::npos ? piece.size() : end + 1;
  const bool joined = !clientLine_.empty() || end == std::string::npos;
  if (joined) clientLine_.append(piece, at, next - at);
  const size_t length = joined ? clientLine_.size() : next - at;
  if (length > limits_.longestCommandLine) {
    return End("a command line longer than " + std::to_string(limits_.longestCommandLine) +
                   " bytes (BRINDLE_MAX_COMMAND_LINE)",
               dialogue_->LineTooLongAnswer());
  }
  at = next;
  if (end == std::string::npos) return;  // the line goes on in the next piece

  const std::string_view line = joined ? std::string_view(clientLine_)
                                       : std::string_view(piece).substr(next - length, length);
  std::string replaced;
  if (dialogue_->OnCommand(line, replaced)) {
    out.Add(std::move(replaced));
  } else if (joined) {
    out.Add(std::move(clientLine_));
  } else {
    out.Pass(next - length, next);
  }
  clientLine_.clear();
}

void CChannel::ClientMessage(std::string& piece, size_t& at, PieceOutput& out) {
  const std::string_view rest = std::string_view(piece).substr(at);
  const size_t found = clientEnd_.Find(rest);
  const size_t stop = found == std::string_view::npos ? piece.size() : at + found;
  if (clientOversize_) {
    out.Pass(at, stop);
  } else {
    Hold(clientBuffer_, clientOversize_, rest.substr(0, stop - at), out, "a message to send");
  }
  at = stop;
  if (found == std::string_view::npos) return;  // the message goes on
  if (!clientOversize_) {
    auto settings = services_.settings.Current();
    out.Add(dialogue_->Rewrite(clientBuffer_.Take(), *settings, services_.steps));
  }
  clientOversize_ = false;
  clientPart_ = ClientPart::kCommands;
  dialogue_->MessageEnded();
}

}  // namespace brindle
