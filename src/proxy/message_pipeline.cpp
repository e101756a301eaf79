#include "proxy/message_pipeline.h"

#include <exception>

#include "core/log.h"
#include "rewrite/downloaded_headers.h"
#include "rewrite/spammer_mark.h"

namespace brindle {
namespace {

inline constexpr size_t kFilterBeginPieceLimit = 30000;

// Runs `steps` on a copy; on any failure the original goes on unchanged.
template <typename Steps>
std::string Guarded(const char* what, std::string text, Steps&& run) {
  try {
    return run(std::string(text));
  } catch (const std::exception& e) {
    log::Warning(std::string(what) + " failed, message passed on unchanged: " + e.what());
  } catch (...) {
    log::Warning(std::string(what) + " failed, message passed on unchanged");
  }
  return text;
}

// Notes which steps of a downloaded message change its text. Without a
// record to fill it only runs them, so nothing is copied for the comparison.
class StepNotes {
 public:
  explicit StepNotes(DownloadFiltering* filtering) : filtering_(filtering) {}

  template <typename Step>
  std::string Run(DownloadStep which, std::string text, Step&& step) {
    if (!filtering_) return step(std::move(text));
    std::string before = text;
    std::string after = step(std::move(text));
    if (after != before) changes_.Add(which);
    return after;
  }

  // The list is checked after every filter, on the text they leave.
  std::string MarkListedSender(std::string text, const Settings& settings) {
    if (!filtering_) return text;
    std::string sender = MailboxOf(HeaderValue(text, "From"));
    if (filtering_->spammers && filtering_->spammers->Matches(sender)) {
      text = MarkListedSpammer(std::move(text), settings.strSpammerAddress);
      changes_.Add(DownloadStep::kSpammerList);
    }
    // Only a filtering that went through to here is recorded.
    filtering_->changes = changes_;
    filtering_->sender = std::move(sender);
    return text;
  }

 private:
  DownloadFiltering* filtering_;
  DownloadChanges changes_;
};

}  // namespace

std::string RewriteNewsArticle(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a posted article", std::move(text), [&](std::string t) {
    t = steps.AppendSignature(std::move(t), settings);
    t = steps.CutReferences(std::move(t), settings.intStripRef);
    t = steps.ChangeNewsHeaders(std::move(t), settings);
    return steps.InsertNewsCustomHeaders(std::move(t), settings);
  });
}

std::string RewriteMail(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a sent mail", std::move(text), [&](std::string t) {
    t = steps.ChangeMailHeaders(std::move(t), settings);
    return steps.InsertMailCustomHeaders(std::move(t), settings);
  });
}

std::string FilterNewsArticle(std::string text, size_t lastPieceLength, const Settings& settings,
                              MessageSteps& steps, DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded article", std::move(text), [&](std::string t) {
    StepNotes notes(filtering);
    if (settings.intBeginFilter == 1 && lastPieceLength < kFilterBeginPieceLimit) {
      t = notes.Run(DownloadStep::kBeginLines, std::move(t),
                    [&](std::string s) { return steps.FilterBegin(std::move(s)); });
    }
    if (settings.intCharFiltering == 1) {
      t = notes.Run(DownloadStep::kControlChars, std::move(t), [&](std::string s) {
        return steps.FilterChars(std::move(s), settings.intCharFiltering);
      });
    }
    t = notes.Run(DownloadStep::kMultipartRelabelled, std::move(t),
                  [&](std::string s) { return steps.FixBoundary(std::move(s)); });
    return notes.MarkListedSender(std::move(t), settings);
  });
}

std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps,
                              DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded mail", std::move(text), [&](std::string t) {
    StepNotes notes(filtering);
    if (settings.intAsianFilter == 1) {
      t = notes.Run(DownloadStep::kSubjectMarked, std::move(t), [&](std::string s) {
        return steps.MarkAsianSpam(std::move(s), settings.intAFPercentage, settings.intAFMin);
      });
    }
    t = notes.Run(DownloadStep::kMultipartRelabelled, std::move(t),
                  [&](std::string s) { return steps.FixBoundary(std::move(s)); });
    return notes.MarkListedSender(std::move(t), settings);
  });
}

}  // namespace brindle
