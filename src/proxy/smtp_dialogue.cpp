// SMTP: a sent mail is rewritten once whole. Every mail must go through
// DATA, so the extensions that would carry it past the rewriting (CHUNKING's
// BDAT, and BINARYMIME, which needs it) are taken out of the EHLO answer.
#include <deque>
#include <utility>

#include "core/log.h"
#include "proxy/dialogue.h"
#include "proxy/host_name.h"
#include "proxy/message_pipeline.h"
#include "core/text.h"

namespace brindle {
namespace {

// The EHLO answer without the lines offering `hidden` extensions; the last
// line kept becomes the last line of the answer.
std::string WithoutExtensions(std::string_view answer, bool& removed) {
  std::string kept;
  kept.reserve(answer.size());
  size_t lastLine = 0;
  for (size_t from = 0; from < answer.size();) {
    const size_t end = answer.find('\n', from);
    const size_t next = end == std::string_view::npos ? answer.size() : end + 1;
    const std::string_view line = answer.substr(from, next - from);
    const std::string_view keyword = WithoutLineEnd(line.substr(std::min<size_t>(4, line.size())));
    if (from > 0 && (IsCommand(keyword, "CHUNKING") || IsCommand(keyword, "BINARYMIME"))) {
      removed = true;
    } else {
      lastLine = kept.size();
      kept.append(line);
    }
    from = next;
  }
  if (kept.size() > lastLine + 3 && kept[lastLine + 3] == '-') kept[lastLine + 3] = ' ';
  return kept;
}

class SmtpDialogue final : public Dialogue {
 public:
  SmtpDialogue(int16_t index, SettingsStore& settings) : index_(index), settings_(settings) {}

  bool OnCommand(std::string_view line, std::string& replaced) override {
    if (inAuthExchange_) return false;  // an answer inside AUTH
    const std::string_view command = WithoutLineEnd(line);
    const bool first = std::exchange(firstCommand_, false);
    Owed owed = Owed::kPlain;
    bool replace = false;
    if (EqualsNoCase(command, "DATA")) {
      intMode = Mode::kCollecting;  // the mail text follows the server's go-ahead
      owed = Owed::kData;
    } else if (IsCommand(command, "HELO") || IsCommand(command, "EHLO")) {
      owed = Owed::kEhlo;
      // The server sees the machine's full name, however the client greeted.
      if (first && intMode == Mode::kFresh && settings_.Current()->intFQDN == 1) {
        replaced = "EHLO " + GreetingName() + "\r\n";
        intMode = Mode::kEhloReplaced;
        replace = true;
      }
    } else if (StartsWithNoCase(command, "RCPT TO:")) {
      intMode = Mode::kRecipient;
    } else if (EqualsNoCase(command, "STARTTLS")) {
      owed = Owed::kSwitch;
    } else if (StartsWithNoCase(command, "AUTH ")) {
      owed = Owed::kAuth;
    }
    owed_.push_back(owed);
    return replace;
  }

  bool MessageStarts() override { return std::exchange(goAhead_, false); }

  std::string Rewrite(std::string text, const Settings& settings, MessageSteps& steps) override {
    return RewriteMail(std::move(text), settings, steps);
  }

  void MessageEnded() override {
    intMode = Mode::kSent;
    owed_.push_back(Owed::kPlain);  // the server's verdict on the mail
  }

  LinePlan OnStatusLine(std::string_view line) override {
    LinePlan plan;
    const bool goesOn = line.size() >= 4 && line[3] == '-';
    if (goesOn) plan.after = AfterLine::kMoreLines;
    if (owed_.empty()) return plan;
    const int code = StatusCode(line);
    switch (owed_.front()) {
      case Owed::kGreeting:
      case Owed::kPlain:
        break;
      case Owed::kEhlo:
        plan.hold = true;  // rewritten whole in Held
        break;
      case Owed::kData:
        if (goesOn) break;
        if (code == 354) {
          goAhead_ = true;
        } else if (intMode == Mode::kCollecting) {
          intMode = Mode::kRecipient;
          log::Debug("Channel " + std::to_string(index_) + ": DATA refused by the server");
        }
        break;
      case Owed::kSwitch:
        plan.opaque = !goesOn && code == 220;
        break;
      case Owed::kAuth:
        if (!goesOn) inAuthExchange_ = code == 334;
        break;
    }
    return plan;
  }

  std::string Held(std::string text, size_t, const Settings&, MessageSteps&,
                   DownloadFiltering*) override {
    bool removed = false;
    std::string answer = WithoutExtensions(text, removed);
    if (removed) {
      log::Debug("Channel " + std::to_string(index_) +
                 ": CHUNKING/BINARYMIME taken out of the EHLO answer, mails go through DATA");
    }
    return answer;
  }

  void OnAnswerEnd() override {
    if (owed_.empty()) return;
    if (owed_.front() == Owed::kAuth && inAuthExchange_) return;  // the exchange goes on
    owed_.pop_front();
  }

  bool InAuthExchange() const override { return inAuthExchange_; }
  const char* StateName() const override {
    return intMode == Mode::kCollecting ? "sending mail" : "relaying";
  }
  std::string_view LineTooLongAnswer() const override { return "500 5.5.2 Line too long\r\n"; }

  void ServerConnected(std::string addressLiteral) override {
    localAddress_ = std::move(addressLiteral);
  }

 private:
  enum class Mode : int32_t {
    kRecipient = 0,
    kEhloReplaced = 1,
    kCollecting = 2,
    kFresh = 3,
    kSent = 4,
  };
  enum class Owed : uint8_t { kGreeting, kPlain, kEhlo, kData, kSwitch, kAuth };

  std::string GreetingName() const {
    const std::string full = HostFullName();
    std::string name = EhloName(full, localAddress_);
    if (name != full) {
      log::Info("Channel " + std::to_string(index_) + ": the host name \"" + full +
                "\" has no domain; EHLO carries the address " + name + " instead");
    }
    return name;
  }

  int16_t index_;
  SettingsStore& settings_;
  Mode intMode = Mode::kFresh;
  std::deque<Owed> owed_{Owed::kGreeting};  // an SMTP server speaks first
  std::string localAddress_;
  bool firstCommand_ = true;
  bool goAhead_ = false;  // the server accepted DATA: the mail comes next
  bool inAuthExchange_ = false;
};

}  // namespace

std::unique_ptr<Dialogue> MakeSmtpDialogue(int16_t index, SettingsStore& settings) {
  return std::make_unique<SmtpDialogue>(index, settings);
}

}  // namespace brindle
