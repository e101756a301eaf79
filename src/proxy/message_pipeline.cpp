#include "proxy/message_pipeline.h"

#include <exception>

#include "core/log.h"

namespace brindle {
namespace {

inline constexpr size_t kFilterBeginPieceLimit = 30000;

// Runs `steps` on a copy; on any failure the original goes on unchanged
// and nothing is counted.
template <typename Steps>
std::string Guarded(const char* what, std::string text, StepCounts& counts, Steps&& run) {
  try {
    StepCounts changed;
    std::string out = run(std::string(text), changed);
    counts += changed;
    return out;
  } catch (const std::exception& e) {
    log::Warning(std::string(what) + " failed, message passed on unchanged: " + e.what());
  } catch (...) {
    log::Warning(std::string(what) + " failed, message passed on unchanged");
  }
  return text;
}

// One step, counted in `tally` when it changed the text.
template <typename Step>
std::string Counted(uint64_t& tally, std::string t, Step&& step) {
  std::string before = t;
  t = step(std::move(t));
  if (t != before) ++tally;
  return t;
}

}  // namespace

std::string RewriteNewsArticle(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Rewriting of a posted article", std::move(text), steps.counts,
                 [&](std::string t, StepCounts& c) {
                   t = Counted(c.signaturesAppended, std::move(t), [&](std::string x) {
                     return steps.AppendSignature(std::move(x), settings);
                   });
                   t = Counted(c.referencesShortened, std::move(t), [&](std::string x) {
                     return steps.CutReferences(std::move(x), settings.intStripRef);
                   });
                   t = Counted(c.headersReplaced, std::move(t), [&](std::string x) {
                     return steps.ChangeNewsHeaders(std::move(x), settings);
                   });
                   return Counted(c.customHeadersInserted, std::move(t), [&](std::string x) {
                     return steps.InsertNewsCustomHeaders(std::move(x), settings);
                   });
                 });
}

std::string RewriteMail(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded(
      "Rewriting of a sent mail", std::move(text), steps.counts, [&](std::string t, StepCounts& c) {
        t = Counted(c.headersReplaced, std::move(t),
                    [&](std::string x) { return steps.ChangeMailHeaders(std::move(x), settings); });
        return Counted(c.customHeadersInserted, std::move(t), [&](std::string x) {
          return steps.InsertMailCustomHeaders(std::move(x), settings);
        });
      });
}

std::string FilterNewsArticle(std::string text, size_t lastPieceLength, const Settings& settings,
                              MessageSteps& steps) {
  return Guarded("Filtering of a downloaded article", std::move(text), steps.counts,
                 [&](std::string t, StepCounts& c) {
                   if (settings.intBeginFilter == 1 && lastPieceLength < kFilterBeginPieceLimit) {
                     t = Counted(c.beginLinesDisarmed, std::move(t),
                                 [&](std::string x) { return steps.FilterBegin(std::move(x)); });
                   }
                   if (settings.intCharFiltering == 1)
                     t = Counted(c.controlCharsBlanked, std::move(t), [&](std::string x) {
                       return steps.FilterChars(std::move(x), settings.intCharFiltering);
                     });
                   return Counted(c.multipartsRelabelled, std::move(t),
                                  [&](std::string x) { return steps.FixBoundary(std::move(x)); });
                 });
}

std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Filtering of a downloaded mail", std::move(text), steps.counts,
                 [&](std::string t, StepCounts& c) {
                   if (settings.intAsianFilter == 1) {
                     t = Counted(c.subjectsMarked, std::move(t), [&](std::string x) {
                       return steps.MarkAsianSpam(std::move(x), settings.intAFPercentage,
                                                  settings.intAFMin);
                     });
                   }
                   return Counted(c.multipartsRelabelled, std::move(t),
                                  [&](std::string x) { return steps.FixBoundary(std::move(x)); });
                 });
}

}  // namespace brindle
