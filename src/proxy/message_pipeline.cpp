#include "proxy/message_pipeline.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "core/log.h"
#include "rewrite/downloaded_headers.h"
#include "rewrite/fast_find.h"
#include "rewrite/incoming_filters.h"
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

// One outgoing step, counted in `tally` when it changed the text.
template <typename Step>
std::string Counted(uint64_t& tally, std::string t, Step&& step) {
  std::string before = t;
  t = step(std::move(t));
  if (t != before) ++tally;
  return t;
}

// Notes which steps of a downloaded message change its text, without
// copying a large message for any step: a step that inserts or shortens
// (subject mark, multipart relabelling) changes the text exactly when it
// changes its length; blanking control characters changes it exactly when
// it holds one; the uuencode check edits only the byte before a "begin "
// (a doubled CR made a line end) and the blank after it (disarmed), so only
// those are remembered and compared. Without a record the steps only run.
// Once the message is through, the steps it changed are added to `counts`.
class StepNotes {
 public:
  StepNotes(DownloadFiltering* filtering, StepCounts& counts)
      : filtering_(filtering), counts_(counts) {}

  template <typename Step>
  std::string BeginLines(std::string text, Step&& step) {
    if (!filtering_) return step(std::move(text));
    struct Spot {
      size_t at;
      char before, blank;
    };
    std::vector<Spot> spots;
    for (size_t at = FastFind(text, "begin "); at != std::string::npos;
         at = FastFind(text, "begin ", at + 1))
      spots.push_back({at, at > 0 ? text[at - 1] : '\0', text[at + 5]});
    const size_t size = text.size();
    std::string after = step(std::move(text));
    const bool changed =
        after.size() != size || std::any_of(spots.begin(), spots.end(), [&](const Spot& s) {
          return (s.at > 0 && after[s.at - 1] != s.before) || after[s.at + 5] != s.blank;
        });
    if (changed) changes_.Add(DownloadStep::kBeginLines);
    return after;
  }

  template <typename Step>
  std::string ControlChars(std::string text, Step&& step) {
    if (filtering_ && HasFilteredControls(text)) changes_.Add(DownloadStep::kControlChars);
    return step(std::move(text));
  }

  template <typename Step>
  std::string Resizing(DownloadStep which, std::string text, Step&& step) {
    const size_t before = text.size();
    std::string after = step(std::move(text));
    if (after.size() != before) changes_.Add(which);
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
    counts_.controlCharsBlanked += changes_.Has(DownloadStep::kControlChars);
    counts_.beginLinesDisarmed += changes_.Has(DownloadStep::kBeginLines);
    counts_.subjectsMarked += changes_.Has(DownloadStep::kSubjectMarked);
    counts_.sendersListed += changes_.Has(DownloadStep::kSpammerList);
    counts_.multipartsRelabelled += changes_.Has(DownloadStep::kMultipartRelabelled);
    return text;
  }

 private:
  DownloadFiltering* filtering_;
  StepCounts& counts_;
  DownloadChanges changes_;
};

}  // namespace

std::string RewriteNewsArticle(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a posted article", std::move(text), [&](std::string t) {
    StepCounts c;
    t = Counted(c.signaturesAppended, std::move(t),
                [&](std::string x) { return steps.AppendSignature(std::move(x), settings); });
    t = Counted(c.referencesShortened, std::move(t), [&](std::string x) {
      return steps.CutReferences(std::move(x), settings.intStripRef);
    });
    t = Counted(c.headersReplaced, std::move(t),
                [&](std::string x) { return steps.ChangeNewsHeaders(std::move(x), settings); });
    t = Counted(c.customHeadersInserted, std::move(t), [&](std::string x) {
      return steps.InsertNewsCustomHeaders(std::move(x), settings);
    });
    steps.counts += c;  // only a message that went through is counted
    return t;
  });
}

std::string RewriteMail(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a sent mail", std::move(text), [&](std::string t) {
    StepCounts c;
    t = Counted(c.headersReplaced, std::move(t),
                [&](std::string x) { return steps.ChangeMailHeaders(std::move(x), settings); });
    t = Counted(c.customHeadersInserted, std::move(t), [&](std::string x) {
      return steps.InsertMailCustomHeaders(std::move(x), settings);
    });
    steps.counts += c;
    return t;
  });
}

std::string FilterNewsArticle(std::string text, size_t lastPieceLength, const Settings& settings,
                              MessageSteps& steps, DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded article", std::move(text), [&](std::string t) {
    StepNotes notes(filtering, steps.counts);
    if (settings.intBeginFilter == 1 && lastPieceLength < kFilterBeginPieceLimit) {
      t = notes.BeginLines(std::move(t),
                           [&](std::string s) { return steps.FilterBegin(std::move(s)); });
    }
    if (settings.intCharFiltering == 1) {
      t = notes.ControlChars(std::move(t), [&](std::string s) {
        return steps.FilterChars(std::move(s), settings.intCharFiltering);
      });
    }
    t = notes.Resizing(DownloadStep::kMultipartRelabelled, std::move(t),
                       [&](std::string s) { return steps.FixBoundary(std::move(s)); });
    return notes.MarkListedSender(std::move(t), settings);
  });
}

std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps,
                              DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded mail", std::move(text), [&](std::string t) {
    StepNotes notes(filtering, steps.counts);
    if (settings.intAsianFilter == 1) {
      t = notes.Resizing(DownloadStep::kSubjectMarked, std::move(t), [&](std::string s) {
        return steps.MarkAsianSpam(std::move(s), settings.intAFPercentage, settings.intAFMin);
      });
    }
    t = notes.Resizing(DownloadStep::kMultipartRelabelled, std::move(t),
                       [&](std::string s) { return steps.FixBoundary(std::move(s)); });
    return notes.MarkListedSender(std::move(t), settings);
  });
}

}  // namespace brindle
