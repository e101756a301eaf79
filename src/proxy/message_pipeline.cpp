#include "proxy/message_pipeline.h"

#include <exception>
#include <functional>
#include <string_view>

#include "core/log.h"
#include "rewrite/downloaded_headers.h"
#include "rewrite/spammer_mark.h"

namespace brindle {
namespace {

inline constexpr size_t kFilterBeginPieceLimit = 30000;

// Runs `steps` on the text in place; a failing step leaves it whole, and it
// goes on as the steps before left it.
template <typename Steps>
std::string Guarded(const char* what, std::string text, Steps&& run) {
  try {
    run(text);
  } catch (const std::exception& e) {
    log::Warning(std::string(what) +
                 " failed, message passed on as the earlier steps left it: " + e.what());
  } catch (...) {
    log::Warning(std::string(what) + " failed, message passed on as the earlier steps left it");
  }
  return text;
}

// Tells a changed text from an unchanged one without keeping a copy of it.
struct Fingerprint {
  explicit Fingerprint(const std::string& text)
      : size(text.size()), hash(std::hash<std::string_view>{}(text)) {}
  bool operator==(const Fingerprint&) const = default;
  size_t size;
  size_t hash;
};

// Notes which steps of a downloaded message change its text. Without a
// record to fill it only runs them.
class StepNotes {
 public:
  explicit StepNotes(DownloadFiltering* filtering) : filtering_(filtering) {}

  template <typename Step>
  void Run(DownloadStep which, std::string& text, Step&& step) {
    if (!filtering_) {
      text = step(std::move(text));
      return;
    }
    const Fingerprint before(text);
    text = step(std::move(text));
    if (!(Fingerprint(text) == before)) changes_.Add(which);
  }

  // The list is checked after every filter, on the text they leave.
  void MarkListedSender(std::string& text, const Settings& settings) {
    if (!filtering_) return;
    std::string sender = MailboxOf(HeaderValue(text, "From"));
    if (filtering_->spammers && filtering_->spammers->Matches(sender)) {
      text = MarkListedSpammer(std::move(text), settings.strSpammerAddress);
      changes_.Add(DownloadStep::kSpammerList);
    }
    // Only a filtering that went through to here is recorded.
    filtering_->changes = changes_;
    filtering_->sender = std::move(sender);
  }

 private:
  DownloadFiltering* filtering_;
  DownloadChanges changes_;
};

}  // namespace

std::string RewriteNewsArticle(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a posted article", std::move(text), [&](std::string& t) {
    t = steps.AppendSignature(std::move(t), settings);
    t = steps.CutReferences(std::move(t), settings.intStripRef);
    t = steps.ChangeNewsHeaders(std::move(t), settings);
    t = steps.InsertNewsCustomHeaders(std::move(t), settings);
  });
}

std::string RewriteMail(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a sent mail", std::move(text), [&](std::string& t) {
    t = steps.ChangeMailHeaders(std::move(t), settings);
    t = steps.InsertMailCustomHeaders(std::move(t), settings);
  });
}

std::string FilterNewsArticle(std::string text, size_t lastPieceLength, const Settings& settings,
                              MessageSteps& steps, DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded article", std::move(text), [&](std::string& t) {
    StepNotes notes(filtering);
    if (settings.intBeginFilter == 1 && lastPieceLength < kFilterBeginPieceLimit) {
      notes.Run(DownloadStep::kBeginLines, t,
                [&](std::string&& s) { return steps.FilterBegin(std::move(s)); });
    }
    if (settings.intCharFiltering == 1) {
      notes.Run(DownloadStep::kControlChars, t, [&](std::string&& s) {
        return steps.FilterChars(std::move(s), settings.intCharFiltering);
      });
    }
    notes.Run(DownloadStep::kMultipartRelabelled, t,
              [&](std::string&& s) { return steps.FixBoundary(std::move(s)); });
    notes.MarkListedSender(t, settings);
  });
}

std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps,
                              DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded mail", std::move(text), [&](std::string& t) {
    StepNotes notes(filtering);
    if (settings.intAsianFilter == 1) {
      notes.Run(DownloadStep::kSubjectMarked, t, [&](std::string&& s) {
        return steps.MarkAsianSpam(std::move(s), settings.intAFPercentage, settings.intAFMin);
      });
    }
    notes.Run(DownloadStep::kMultipartRelabelled, t,
              [&](std::string&& s) { return steps.FixBoundary(std::move(s)); });
    notes.MarkListedSender(t, settings);
  });
}

}  // namespace brindle
