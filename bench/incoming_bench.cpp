// Filters of downloaded messages, each step on its own and the two fixed
// pipelines, against a memchr pass over the same buffer.
//
// A single step is measured on a text that is handed through by move, as the
// channel hands its buffer from one step to the next; every step leaves a
// realistic message as it found it after the first pass, so each iteration
// does the full work. The pipelines start from a copy of the collected text,
// as the channel does.
#include <benchmark/benchmark.h>

#include <string>
#include <utility>

#include "bench_support.h"
#include "rewrite/incoming_filters.h"

namespace brindle::bench {
namespace {

template <class Step>
void InPlace(benchmark::State& state, Kind kind, Step step) {
  std::string text = Message(kind, state.range(0));
  for (auto _ : state) {
    text = step(std::move(text));
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_ArticleMemchr(benchmark::State& s) {
  Memchr(s, Kind::kDownloadedArticle);
}
void BM_ArticleCopy(benchmark::State& s) {
  Copy(s, Kind::kDownloadedArticle);
}
void BM_MailMemchr(benchmark::State& s) {
  Memchr(s, Kind::kDownloadedMail);
}

void BM_FilterBegin(benchmark::State& s) {
  InPlace(s, Kind::kDownloadedArticle, [](std::string t) { return FilterBegin(std::move(t)); });
}
void BM_FilterChars(benchmark::State& s) {
  InPlace(s, Kind::kDownloadedArticle, [](std::string t) { return FilterChars(std::move(t), 1); });
}
void BM_FixBoundaryArticle(benchmark::State& s) {
  InPlace(s, Kind::kDownloadedArticle, [](std::string t) { return FixBoundary(std::move(t)); });
}
void BM_MarkAsianSpam(benchmark::State& s) {
  InPlace(s, Kind::kDownloadedMail,
          [](std::string t) { return MarkAsianSpam(std::move(t), 90, 10); });
}
void BM_FixBoundaryMail(benchmark::State& s) {
  InPlace(s, Kind::kDownloadedMail, [](std::string t) { return FixBoundary(std::move(t)); });
}

void BM_ArticlePipeline(benchmark::State& state) {
  const std::string& article = Message(Kind::kDownloadedArticle, state.range(0));
  for (auto _ : state) {
    std::string text = FilterBegin(std::string(article));
    text = FilterChars(std::move(text), 1);
    text = FixBoundary(std::move(text));
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * article.size()));
}

void BM_MailPipeline(benchmark::State& state) {
  const std::string& mail = Message(Kind::kDownloadedMail, state.range(0));
  for (auto _ : state) {
    std::string text = MarkAsianSpam(std::string(mail), 90, 10);
    text = FixBoundary(std::move(text));
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mail.size()));
}

BENCHMARK(BM_ArticleMemchr)->Apply(MessageSizes);
BENCHMARK(BM_ArticleCopy)->Apply(MessageSizes);
BENCHMARK(BM_FilterBegin)->Apply(MessageSizes);
BENCHMARK(BM_FilterChars)->Apply(MessageSizes);
BENCHMARK(BM_FixBoundaryArticle)->Apply(MessageSizes);
BENCHMARK(BM_ArticlePipeline)->Apply(MessageSizes);
BENCHMARK(BM_MailMemchr)->Apply(MessageSizes);
BENCHMARK(BM_MarkAsianSpam)->Apply(MessageSizes);
BENCHMARK(BM_FixBoundaryMail)->Apply(MessageSizes);
BENCHMARK(BM_MailPipeline)->Apply(MessageSizes);

}  // namespace
}  // namespace brindle::bench

BENCHMARK_MAIN();
