// NNTP: a posted article is rewritten once whole, a downloaded article is
// filtered once whole; every other answer passes as it comes.
#include <deque>
#include <utility>

#include "core/log.h"
#include "proxy/dialogue.h"
#include "proxy/message_pipeline.h"
#include "core/text.h"

namespace brindle {
namespace {

// Answers whose status code announces a body ended by a lone "." (211 only
// for LISTGROUP, where it is owed by that command).
bool HasBody(int code) {
  switch (code) {
    case 100:
    case 101:
    case 215:
    case 220:
    case 221:
    case 222:
    case 224:
    case 225:
    case 230:
    case 231:
    case 282:
      return true;
    default:
      return false;
  }
}

class NntpDialogue final : public Dialogue {
 public:
  explicit NntpDialogue(int16_t index) : index_(index) {}

  bool OnCommand(std::string_view line, std::string&) override {
    if (inAuthExchange_) return false;  // an answer inside AUTHINFO SASL
    const std::string_view command = WithoutLineEnd(line);
    Owed owed = Owed::kPlain;
    if (EqualsNoCase(command, "POST")) {
      owed = Owed::kPost;
      intArticleMode = ArticleMode::kPosting;
    } else if (IsCommand(command, "ARTICLE")) {
      owed = Owed::kArticle;
      ++articlesOwed_;
      intArticleMode = ArticleMode::kArticleAsked;
    } else if (IsCommand(command, "LISTGROUP")) {
      owed = Owed::kListGroup;
    } else if (EqualsNoCase(command, "STARTTLS") || IsCommand(command, "COMPRESS")) {
      owed = Owed::kSwitch;
    } else if (StartsWithNoCase(command, "AUTHINFO SASL ")) {
      owed = Owed::kAuth;
    }
    owed_.push_back(owed);
    return false;
  }

  bool MessageStarts() override { return std::exchange(goAhead_, false); }

  std::string Rewrite(std::string text, const Settings& settings, MessageSteps& steps) override {
    return RewriteNewsArticle(std::move(text), settings, steps);
  }

  void MessageEnded() override {
    intArticleMode = ArticleMode::kRelaying;
    owed_.push_back(Owed::kPlain);  // the server's verdict on the article
  }

  LinePlan OnStatusLine(std::string_view line) override {
    LinePlan plan;
    if (owed_.empty()) return plan;  // unasked (a time-out notice): one line
    const int code = StatusCode(line);
    switch (owed_.front()) {
      case Owed::kGreeting:
        break;
      case Owed::kPlain:
        if (HasBody(code)) plan.after = AfterLine::kBody;
        break;
      case Owed::kPost:
        if (code == 340) {
          goAhead_ = true;
        } else if (intArticleMode == ArticleMode::kPosting) {
          intArticleMode = ArticleMode::kRelaying;  // refused: no article follows
          log::Debug("Channel " + std::to_string(index_) + ": POST refused by the server");
        }
        break;
      case Owed::kArticle:
        if (code == 220) {
          plan.after = AfterLine::kBody;
          plan.hold = true;
        }
        break;
      case Owed::kListGroup:
        if (code == 211) plan.after = AfterLine::kBody;
        break;
      case Owed::kSwitch:
        plan.opaque = code == 382 || code == 206;
        break;
      case Owed::kAuth:
        inAuthExchange_ = code == 383;
        break;
    }
    return plan;
  }

  std::string Held(std::string text, size_t lastPieceLength, const Settings& settings,
                   MessageSteps& steps, DownloadFiltering* filtering) override {
    return FilterNewsArticle(std::move(text), lastPieceLength, settings, steps, filtering);
  }

  void OnAnswerEnd() override {
    if (owed_.empty()) return;
    if (owed_.front() == Owed::kAuth && inAuthExchange_) return;  // the exchange goes on
    if (owed_.front() == Owed::kArticle && --articlesOwed_ == 0 &&
        intArticleMode == ArticleMode::kArticleAsked) {
      intArticleMode = ArticleMode::kRelaying;
    }
    owed_.pop_front();
  }

  bool InAuthExchange() const override { return inAuthExchange_; }

  const char* StateName() const override {
    switch (intArticleMode) {
      case ArticleMode::kPosting:
        return "posting";
      case ArticleMode::kArticleAsked:
        return "collecting";
      case ArticleMode::kRelaying:
        break;
    }
    return "relaying";
  }

  std::string_view LineTooLongAnswer() const override { return "501 command line too long\r\n"; }

 private:
  enum class ArticleMode : int32_t { kPosting = 0, kRelaying = 1, kArticleAsked = 2 };
  // The answer each command is owed, oldest first.
  enum class Owed : uint8_t { kGreeting, kPlain, kPost, kArticle, kListGroup, kSwitch, kAuth };

  int16_t index_;
  ArticleMode intArticleMode = ArticleMode::kRelaying;
  std::deque<Owed> owed_{Owed::kGreeting};
  size_t articlesOwed_ = 0;
  bool goAhead_ = false;  // the server accepted POST: the article comes next
  bool inAuthExchange_ = false;
};

}  // namespace

std::unique_ptr<Dialogue> MakeNntpDialogue(int16_t index) {
  return std::make_unique<NntpDialogue>(index);
}

}  // namespace brindle
