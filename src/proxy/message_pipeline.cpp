#include "proxy/message_pipeline.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <string_view>
#include <vector>

#include "core/log.h"
#include "rewrite/downloaded_headers.h"
#include "rewrite/fast_find.h"
#include "rewrite/incoming_filters.h"
#include "rewrite/spammer_mark.h"

namespace brindle {
namespace {

inline constexpr size_t kFilterBeginPieceLimit = 30000;

// Runs `steps` on the text in place, so a large message is never copied for
// safety: a failing step leaves the text whole, and it goes on as the steps
// before left it.
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

// One outgoing step, counted in `tally` when it changed the text. Length and
// a fingerprint tell, where a copy to compare with would double the memory.
template <typename Step>
void Counted(uint64_t& tally, std::string& t, Step&& step) {
  const size_t size = t.size();
  const size_t print = std::hash<std::string_view>{}(t);
  t = step(std::move(t));
  if (t.size() != size || std::hash<std::string_view>{}(t) != print) ++tally;
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
  void BeginLines(std::string& text, Step&& step) {
    if (!filtering_) {
      text = step(std::move(text));
      return;
    }
    struct Spot {
      size_t at;
      char before, blank;
    };
    std::vector<Spot> spots;
    for (size_t at = FastFind(text, "begin "); at != std::string::npos;
         at = FastFind(text, "begin ", at + 1))
      spots.push_back({at, at > 0 ? text[at - 1] : '\0', text[at + 5]});
    const size_t size = text.size();
    text = step(std::move(text));
    const bool changed =
        text.size() != size || std::any_of(spots.begin(), spots.end(), [&](const Spot& s) {
          return (s.at > 0 && text[s.at - 1] != s.before) || text[s.at + 5] != s.blank;
        });
    if (changed) changes_.Add(DownloadStep::kBeginLines);
  }

  template <typename Step>
  void ControlChars(std::string& text, Step&& step) {
    if (filtering_ && HasFilteredControls(text)) changes_.Add(DownloadStep::kControlChars);
    text = step(std::move(text));
  }

  template <typename Step>
  void Resizing(DownloadStep which, std::string& text, Step&& step) {
    const size_t before = text.size();
    text = step(std::move(text));
    if (text.size() != before) changes_.Add(which);
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
    counts_.controlCharsBlanked += changes_.Has(DownloadStep::kControlChars);
    counts_.beginLinesDisarmed += changes_.Has(DownloadStep::kBeginLines);
    counts_.subjectsMarked += changes_.Has(DownloadStep::kSubjectMarked);
    counts_.sendersListed += changes_.Has(DownloadStep::kSpammerList);
    counts_.multipartsRelabelled += changes_.Has(DownloadStep::kMultipartRelabelled);
  }

 private:
  DownloadFiltering* filtering_;
  StepCounts& counts_;
  DownloadChanges changes_;
};

}  // namespace

std::string RewriteNewsArticle(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a posted article", std::move(text), [&](std::string& t) {
    StepCounts c;
    Counted(c.signaturesAppended, t,
            [&](std::string&& x) { return steps.AppendSignature(std::move(x), settings); });
    Counted(c.referencesShortened, t, [&](std::string&& x) {
      return steps.CutReferences(std::move(x), settings.intStripRef);
    });
    Counted(c.headersReplaced, t,
            [&](std::string&& x) { return steps.ChangeNewsHeaders(std::move(x), settings); });
    Counted(c.customHeadersInserted, t,
            [&](std::string&& x) { return steps.InsertNewsCustomHeaders(std::move(x), settings); });
    steps.counts += c;  // only a message that went through is counted
  });
}

std::string RewriteMail(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a sent mail", std::move(text), [&](std::string& t) {
    StepCounts c;
    Counted(c.headersReplaced, t,
            [&](std::string&& x) { return steps.ChangeMailHeaders(std::move(x), settings); });
    Counted(c.customHeadersInserted, t,
            [&](std::string&& x) { return steps.InsertMailCustomHeaders(std::move(x), settings); });
    steps.counts += c;
  });
}

std::string FilterNewsArticle(std::string text, size_t lastPieceLength, const Settings& settings,
                              MessageSteps& steps, DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded article", std::move(text), [&](std::string& t) {
    StepNotes notes(filtering, steps.counts);
    if (settings.intBeginFilter == 1 && lastPieceLength < kFilterBeginPieceLimit) {
      notes.BeginLines(t, [&](std::string&& s) { return steps.FilterBegin(std::move(s)); });
    }
    if (settings.intCharFiltering == 1) {
      notes.ControlChars(t, [&](std::string&& s) {
        return steps.FilterChars(std::move(s), settings.intCharFiltering);
      });
    }
    notes.Resizing(DownloadStep::kMultipartRelabelled, t,
                   [&](std::string&& s) { return steps.FixBoundary(std::move(s)); });
    notes.MarkListedSender(t, settings);
  });
}

std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps,
                              DownloadFiltering* filtering) {
  return Guarded("Filtering of a downloaded mail", std::move(text), [&](std::string& t) {
    StepNotes notes(filtering, steps.counts);
    if (settings.intAsianFilter == 1) {
      notes.Resizing(DownloadStep::kSubjectMarked, t, [&](std::string&& s) {
        return steps.MarkAsianSpam(std::move(s), settings.intAFPercentage, settings.intAFMin);
      });
    }
    notes.Resizing(DownloadStep::kMultipartRelabelled, t,
                   [&](std::string&& s) { return steps.FixBoundary(std::move(s)); });
    notes.MarkListedSender(t, settings);
  });
}

}  // namespace brindle
