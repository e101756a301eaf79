// Shared pieces of the message benchmarks: the sizes every benchmark runs at,
// the generated messages (built once per process) and the baselines that the
// ratios in run.sh are taken against.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

namespace brindle::bench {

enum class Kind {
  kDownloadedArticle,
  kDownloadedMail,
  kOutgoingArticle,
  kOutgoingMail,
  kReplyText
};

// Generated once per kind and size, then shared by every benchmark.
const std::string& Message(Kind kind, size_t bytes);

// 10 KB, 1 MB and 50 MB.
void MessageSizes(benchmark::internal::Benchmark* b);

// memchr for a byte the message does not hold: one pass over the same buffer.
void Memchr(benchmark::State& state, Kind kind);
// A copy of the message, which a step taking its text by value starts with.
void Copy(benchmark::State& state, Kind kind);

}  // namespace brindle::bench
