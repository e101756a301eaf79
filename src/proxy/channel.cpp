#include "proxy/channel.h"

#include "core/log.h"

namespace brindle {

CChannel::CChannel(int16_t sockIndex, ChannelServices services, const ChannelLimits& limits)
    : services_(services), limits_(limits), SockIndex_(sockIndex) {}

CChannel::~CChannel() = default;

void CChannel::cType(int32_t value) {
  if (cType_ != kTypeUnset) return;
  cType_ = value;
  switch (cType_) {
    case kTypeNntp:
      dialogue_ = MakeNntpDialogue(SockIndex_);
      break;
    case kTypePop3:
      dialogue_ = MakePop3Dialogue(SockIndex_);
      break;
    case kTypeSmtp:
      dialogue_ = MakeSmtpDialogue(SockIndex_, services_.settings);
      break;
    default:
      break;  // no protocol: bytes pass both ways untouched
  }
}

void CChannel::ServerConnected(const std::string& localAddress) {
  if (!dialogue_ || localAddress.empty()) return;
  const bool v6 = localAddress.find(':') != std::string::npos;
  dialogue_->ServerConnected((v6 ? "[IPv6:" : "[") + localAddress + "]");
}

const char* CChannel::StateName() const {
  return dialogue_ && !opaque_ ? dialogue_->StateName() : "relaying";
}

bool CChannel::Hold(CSuperString& buffer, bool& oversize, std::string_view text, PieceOutput& out,
                    const char* what) {
  if (static_cast<size_t>(buffer.Length()) + text.size() <= limits_.largestHeldMessage) {
    buffer.Add(text);
    return true;
  }
  oversize = true;
  log::Warning("Channel " + std::to_string(SockIndex_) + ": " + what + " larger than " +
               std::to_string(limits_.largestHeldMessage) +
               " bytes (BRINDLE_MAX_HELD_MESSAGE) passes on unprocessed");
  out.Add(buffer.Take());
  out.Add(std::string(text));
  return false;
}

void CChannel::End(std::string_view why, std::string_view farewell) {
  ending_ = true;
  farewell_ = farewell;
  log::Warning("Channel " + std::to_string(SockIndex_) + ": " + std::string(why) +
               "; the channel is closed");
}

void CChannel::BecomeOpaque() {
  opaque_ = true;
  log::Warning("Channel " + std::to_string(SockIndex_) +
               ": the client switched to TLS (or compression) inside a plain tunnel; "
               "its messages now pass unprocessed");
}

}  // namespace brindle
