// Rewriting steps of outgoing articles and mails, each step on its own and
// the two fixed pipelines, against a memchr pass over the same buffer. The
// steps that add text (signature, custom headers) would grow a text handed
// through by move, so every iteration starts from a copy, as the channel does;
// the copy alone is measured too.
#include <benchmark/benchmark.h>

#include <string>
#include <utility>

#include "bench_messages.h"
#include "bench_support.h"
#include "rewrite/outgoing_headers.h"
#include "rewrite/signature.h"

namespace brindle::bench {
namespace {

// Always the same numbers: the signature choice costs the same on every run.
class FixedRandom : public RandomSource {
 public:
  double Next() override { return 0.25; }
};

const Settings& Rewriting() {
  static const Settings settings = RewritingSettings();
  return settings;
}

template <class Step>
void FromCopy(benchmark::State& state, Kind kind, Step step) {
  const std::string& message = Message(kind, state.range(0));
  for (auto _ : state) {
    std::string text = step(std::string(message));
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * message.size()));
}

void BM_NewsMemchr(benchmark::State& s) {
  Memchr(s, Kind::kOutgoingArticle);
}
void BM_NewsCopy(benchmark::State& s) {
  Copy(s, Kind::kOutgoingArticle);
}
void BM_MailMemchr(benchmark::State& s) {
  Memchr(s, Kind::kOutgoingMail);
}

void BM_AppendSignature(benchmark::State& s) {
  FixedRandom random;
  FromCopy(s, Kind::kOutgoingArticle,
           [&](std::string t) { return AppendSignature(std::move(t), Rewriting(), random); });
}
void BM_CutReferences(benchmark::State& s) {
  FromCopy(s, Kind::kOutgoingArticle,
           [](std::string t) { return CutReferences(std::move(t), Rewriting().intStripRef); });
}
void BM_ChangeNewsHeaders(benchmark::State& s) {
  FromCopy(s, Kind::kOutgoingArticle,
           [](std::string t) { return ChangeNewsHeaders(std::move(t), Rewriting()); });
}
void BM_InsertNewsCustomHeaders(benchmark::State& s) {
  FromCopy(s, Kind::kOutgoingArticle,
           [](std::string t) { return InsertNewsCustomHeaders(std::move(t), Rewriting()); });
}
void BM_ChangeMailHeaders(benchmark::State& s) {
  FromCopy(s, Kind::kOutgoingMail,
           [](std::string t) { return ChangeMailHeaders(std::move(t), Rewriting()); });
}
void BM_InsertMailCustomHeaders(benchmark::State& s) {
  FromCopy(s, Kind::kOutgoingMail,
           [](std::string t) { return InsertMailCustomHeaders(std::move(t), Rewriting()); });
}

void BM_NewsPipeline(benchmark::State& s) {
  FixedRandom random;
  FromCopy(s, Kind::kOutgoingArticle, [&](std::string t) {
    const Settings& settings = Rewriting();
    t = AppendSignature(std::move(t), settings, random);
    t = CutReferences(std::move(t), settings.intStripRef);
    t = ChangeNewsHeaders(std::move(t), settings);
    return InsertNewsCustomHeaders(std::move(t), settings);
  });
}

void BM_MailPipeline(benchmark::State& s) {
  FromCopy(s, Kind::kOutgoingMail, [](std::string t) {
    t = ChangeMailHeaders(std::move(t), Rewriting());
    return InsertMailCustomHeaders(std::move(t), Rewriting());
  });
}

BENCHMARK(BM_NewsMemchr)->Apply(MessageSizes);
BENCHMARK(BM_NewsCopy)->Apply(MessageSizes);
BENCHMARK(BM_AppendSignature)->Apply(MessageSizes);
BENCHMARK(BM_CutReferences)->Apply(MessageSizes);
BENCHMARK(BM_ChangeNewsHeaders)->Apply(MessageSizes);
BENCHMARK(BM_InsertNewsCustomHeaders)->Apply(MessageSizes);
BENCHMARK(BM_NewsPipeline)->Apply(MessageSizes);
BENCHMARK(BM_MailMemchr)->Apply(MessageSizes);
BENCHMARK(BM_ChangeMailHeaders)->Apply(MessageSizes);
BENCHMARK(BM_InsertMailCustomHeaders)->Apply(MessageSizes);
BENCHMARK(BM_MailPipeline)->Apply(MessageSizes);

}  // namespace
}  // namespace brindle::bench

BENCHMARK_MAIN();
