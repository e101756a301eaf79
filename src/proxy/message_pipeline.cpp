#include "proxy/message_pipeline.h"

#include <exception>

#include "core/log.h"

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
                              MessageSteps& steps) {
  return Guarded("Filtering of a downloaded article", std::move(text), [&](std::string& t) {
    if (settings.intBeginFilter == 1 && lastPieceLength < kFilterBeginPieceLimit) {
      t = steps.FilterBegin(std::move(t));
    }
    if (settings.intCharFiltering == 1)
      t = steps.FilterChars(std::move(t), settings.intCharFiltering);
    t = steps.FixBoundary(std::move(t));
  });
}

std::string FilterMailMessage(std::string text, const Settings& settings, MessageSteps& steps) {
  return Guarded("Filtering of a downloaded mail", std::move(text), [&](std::string& t) {
    if (settings.intAsianFilter == 1) {
      t = steps.MarkAsianSpam(std::move(t), settings.intAFPercentage, settings.intAFMin);
    }
    t = steps.FixBoundary(std::move(t));
  });
}

}  // namespace brindle
