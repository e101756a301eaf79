// POP3: a downloaded mail (RETR or TOP answer) is filtered once whole; every
// other answer passes as it comes.
#include <deque>
#include <utility>

#include "proxy/dialogue.h"
#include "proxy/message_pipeline.h"
#include "core/text.h"

namespace brindle {
namespace {

class Pop3Dialogue final : public Dialogue {
 public:
  explicit Pop3Dialogue(int16_t) {}

  bool OnCommand(std::string_view line, std::string&) override {
    if (inAuthExchange_) return false;  // an answer inside AUTH
    const std::string_view command = WithoutLineEnd(line);
    Owed owed = Owed::kPlain;
    if (StartsWithNoCase(command, "RETR ") || StartsWithNoCase(command, "TOP ")) {
      owed = Owed::kMail;
      ++mailsOwed_;
      blnCollecting = true;
    } else if (EqualsNoCase(command, "CAPA") || EqualsNoCase(command, "LIST") ||
               EqualsNoCase(command, "UIDL") || EqualsNoCase(command, "AUTH")) {
      owed = Owed::kList;  // without an argument these answer with a list
    } else if (EqualsNoCase(command, "STLS")) {
      owed = Owed::kSwitch;
    } else if (StartsWithNoCase(command, "AUTH ")) {
      owed = Owed::kAuth;
    }
    owed_.push_back(owed);
    return false;
  }

  bool MessageStarts() override { return false; }  // a POP3 client sends no message
  std::string Rewrite(std::string text, const Settings&, MessageSteps&) override { return text; }
  void MessageEnded() override {}

  LinePlan OnStatusLine(std::string_view line) override {
    LinePlan plan;
    if (owed_.empty()) return plan;
    const bool ok = line.starts_with("+OK");
    switch (owed_.front()) {
      case Owed::kGreeting:
      case Owed::kPlain:
        break;
      case Owed::kMail:
        if (ok) {
          plan.after = AfterLine::kBody;
          plan.hold = true;
        }
        break;
      case Owed::kList:
        if (ok) plan.after = AfterLine::kBody;
        break;
      case Owed::kSwitch:
        plan.opaque = ok;
        break;
      case Owed::kAuth:
        inAuthExchange_ = line.starts_with("+ ") || WithoutLineEnd(line) == "+";
        break;
    }
    return plan;
  }

  std::string Held(std::string text, size_t, const Settings& settings, MessageSteps& steps,
                   DownloadFiltering* filtering) override {
    return FilterMailMessage(std::move(text), settings, steps, filtering);
  }

  void OnAnswerEnd() override {
    if (owed_.empty()) return;
    if (owed_.front() == Owed::kAuth && inAuthExchange_) return;  // the exchange goes on
    if (owed_.front() == Owed::kMail && --mailsOwed_ == 0) blnCollecting = false;
    owed_.pop_front();
  }

  bool InAuthExchange() const override { return inAuthExchange_; }
  const char* StateName() const override { return blnCollecting ? "collecting" : "relaying"; }
  std::string_view LineTooLongAnswer() const override { return "-ERR command line too long\r\n"; }

 private:
  enum class Owed : uint8_t { kGreeting, kPlain, kMail, kList, kSwitch, kAuth };

  std::deque<Owed> owed_{Owed::kGreeting};
  size_t mailsOwed_ = 0;
  bool blnCollecting = false;  // a RETR/TOP answer is owed
  bool inAuthExchange_ = false;
};

}  // namespace

std::unique_ptr<Dialogue> MakePop3Dialogue(int16_t index) {
  return std::make_unique<Pop3Dialogue>(index);
}

}  // namespace brindle
