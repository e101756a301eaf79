// Quote fixing of a reply window's text, against a memchr pass over the same
// text. Every iteration works on the client's original text, as each newly
// opened window does.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_support.h"
#include "core/settings.h"
#include "oewin/quote_fix.h"

namespace brindle::bench {
namespace {

void BM_ReplyMemchr(benchmark::State& s) {
  Memchr(s, Kind::kReplyText);
}

void BM_QuoteFix(benchmark::State& state) {
  const std::string& text = Message(Kind::kReplyText, state.range(0));
  const Settings settings;
  const QuoteFixOptions options{settings};
  for (auto _ : state) {
    PlainQuoteMessage message("Re: spotkanie", MessageKind::kMail);
    std::string fixed = QuoteFix(message, text, options);
    benchmark::DoNotOptimize(fixed.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

BENCHMARK(BM_ReplyMemchr)->Apply(MessageSizes);
BENCHMARK(BM_QuoteFix)->Apply(MessageSizes);

}  // namespace
}  // namespace brindle::bench

BENCHMARK_MAIN();
