// How many messages each rewriting and filter step has changed since the
// program started. A step counts only when its output differs from its
// input, so "signatures appended" says how often a signature really went on,
// not how often the step was asked.
#pragma once

#include <cstdint>

namespace brindle {

struct StepCounts {
  uint64_t headersReplaced = 0;
  uint64_t customHeadersInserted = 0;
  uint64_t referencesShortened = 0;
  uint64_t signaturesAppended = 0;
  uint64_t controlCharsBlanked = 0;
  uint64_t beginLinesDisarmed = 0;
  uint64_t subjectsMarked = 0;
  uint64_t multipartsRelabelled = 0;
  uint64_t sendersListed = 0;  // marked because the spammer list names them

  StepCounts& operator+=(const StepCounts& o) {
    headersReplaced += o.headersReplaced;
    customHeadersInserted += o.customHeadersInserted;
    referencesShortened += o.referencesShortened;
    signaturesAppended += o.signaturesAppended;
    controlCharsBlanked += o.controlCharsBlanked;
    beginLinesDisarmed += o.beginLinesDisarmed;
    subjectsMarked += o.subjectsMarked;
    multipartsRelabelled += o.multipartsRelabelled;
    sendersListed += o.sendersListed;
    return *this;
  }
};

}  // namespace brindle
