// The rewriting and filter steps a channel applies to whole messages, behind
// one seam so that a channel can be driven with other steps (the benchmark
// and the tests count and order the calls, or make a step fail). Each step
// works on the text handed to it in place and hands it back.
#pragma once

#include <cstdint>
#include <string>

#include "core/settings.h"
#include "proxy/step_counts.h"

namespace brindle {

class MessageSteps {
 public:
  virtual ~MessageSteps() = default;

  // Outgoing news article.
  virtual std::string AppendSignature(std::string&& text, const Settings& settings);
  virtual std::string CutReferences(std::string&& text, int limit);
  virtual std::string ChangeNewsHeaders(std::string&& text, const Settings& settings);
  virtual std::string InsertNewsCustomHeaders(std::string&& text, const Settings& settings);
  // Outgoing mail.
  virtual std::string ChangeMailHeaders(std::string&& text, const Settings& settings);
  virtual std::string InsertMailCustomHeaders(std::string&& text, const Settings& settings);
  // Downloaded article or mail.
  virtual std::string FilterBegin(std::string&& text);
  virtual std::string FilterChars(std::string&& text, int16_t charFiltering);
  virtual std::string MarkAsianSpam(std::string&& text, int16_t afPercentage, int16_t afMin);
  virtual std::string FixBoundary(std::string&& text);

  // Messages these steps changed, step by step; the pipeline adds to them
  // only when a whole message went through without a failure.
  StepCounts counts;
};

// The program's own steps.
MessageSteps& DefaultMessageSteps();

}  // namespace brindle
