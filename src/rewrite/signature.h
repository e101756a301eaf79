// Per-sender signatures of outgoing news articles.
#pragma once

#include <string>
#include <string_view>

#include "core/settings.h"

namespace brindle {

// Uniform random numbers in [0, 1). The program seeds one source once at start.
class RandomSource {
 public:
  virtual ~RandomSource() = default;
  virtual double Next() = 0;
};

// The process-wide source, seeded once from the clock and the system's entropy.
RandomSource& DefaultRandomSource();

// 0..n inclusive: integer part of Next() * (n + 1).
int RandomIndex(int n, RandomSource& random);

// The From header's value after "From:" and one blank; empty when there is no From.
std::string GetSender(std::string_view text);

// Replaces the six Polish letters that differ between windows-1250 and
// ISO-8859-2 by their ISO-8859-2 codes.
void ConvertSignatureISO(std::string& signature);

// Places the sender's signature before the final "\r\n.\r\n".
std::string AppendSignature(std::string&& text, const Settings& settings, RandomSource& random);

}  // namespace brindle
