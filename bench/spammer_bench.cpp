// The spammer list on the download path: finding the sender of a mail and
// trying it against a list of 10,000 entries (addresses, domains and
// patterns), and the mail pipeline with and without its record of changed
// steps, each against a memchr pass over the same mail.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_messages.h"
#include "bench_support.h"
#include "proxy/message_pipeline.h"
#include "rewrite/downloaded_headers.h"
#include "rewrite/spammer_list.h"

namespace brindle::bench {
namespace {

// 7,000 addresses, 2,000 domains, 950 patterns with a literal end, 40 with
// only a literal start and 10 with neither (tried for every sender).
const SpammerList& TenThousand() {
  static const SpammerList list = [] {
    std::string file = "# generated\n";
    for (int i = 0; i < 7000; ++i)
      file += "seller" + std::to_string(i) + "@shop" + std::to_string(i % 97) + ".example\n";
    for (int i = 0; i < 2000; ++i) file += "@bulk" + std::to_string(i) + ".example\n";
    for (int i = 0; i < 950; ++i) file += "*@*.offers" + std::to_string(i) + ".example\n";
    for (int i = 0; i < 40; ++i) file += "promo" + std::to_string(i) + "*\n";
    for (int i = 0; i < 10; ++i) file += "*cheap" + std::to_string(i) + "*\n";
    SpammerList parsed = SpammerList::Parse(file);
    if (parsed.Size() != 10000) std::abort();
    return parsed;
  }();
  return list;
}

void SenderCheck(benchmark::State& state, const SpammerList& list) {
  const std::string& mail = Message(Kind::kDownloadedMail, state.range(0));
  for (auto _ : state) {
    const bool listed = list.Matches(MailboxOf(HeaderValue(mail, "From")));
    benchmark::DoNotOptimize(listed);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mail.size()));
}

void BM_MailMemchr(benchmark::State& s) {
  Memchr(s, Kind::kDownloadedMail);
}
void BM_SenderEmptyList(benchmark::State& s) {
  static const SpammerList empty;
  SenderCheck(s, empty);
}
void BM_SenderTenThousand(benchmark::State& s) {
  SenderCheck(s, TenThousand());
}

// The channel's own calls, with the program's default filter settings plus
// the subject filter, the record filled or not.
void Pipeline(benchmark::State& state, Kind kind, bool recorded) {
  const std::string& message = Message(kind, state.range(0));
  Settings settings;
  settings.intAsianFilter = 1;
  for (auto _ : state) {
    DownloadFiltering filtering(&TenThousand());
    DownloadFiltering* record = recorded ? &filtering : nullptr;
    std::string text =
        kind == Kind::kDownloadedMail
            ? FilterMailMessage(message, settings, DefaultMessageSteps(), record)
            : FilterNewsArticle(message, 1000, settings, DefaultMessageSteps(), record);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * message.size()));
}
void BM_MailPipeline(benchmark::State& s) {
  Pipeline(s, Kind::kDownloadedMail, false);
}
void BM_MailPipelineRecorded(benchmark::State& s) {
  Pipeline(s, Kind::kDownloadedMail, true);
}
void BM_ArticleMemchr(benchmark::State& s) {
  Memchr(s, Kind::kDownloadedArticle);
}
void BM_ArticlePipeline(benchmark::State& s) {
  Pipeline(s, Kind::kDownloadedArticle, false);
}
void BM_ArticlePipelineRecorded(benchmark::State& s) {
  Pipeline(s, Kind::kDownloadedArticle, true);
}

BENCHMARK(BM_MailMemchr)->Apply(MessageSizes);
BENCHMARK(BM_SenderEmptyList)->Arg(kSmall)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SenderTenThousand)->Arg(kSmall)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MailPipeline)->Apply(MessageSizes);
BENCHMARK(BM_MailPipelineRecorded)->Apply(MessageSizes);
BENCHMARK(BM_ArticleMemchr)->Apply(MessageSizes);
BENCHMARK(BM_ArticlePipeline)->Apply(MessageSizes);
BENCHMARK(BM_ArticlePipelineRecorded)->Apply(MessageSizes);

}  // namespace
}  // namespace brindle::bench

BENCHMARK_MAIN();
