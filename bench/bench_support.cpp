#include "bench_support.h"

#include <cstring>
#include <map>
#include <utility>

#include "bench_messages.h"

namespace brindle::bench {

const std::string& Message(Kind kind, size_t bytes) {
  static std::map<std::pair<Kind, size_t>, std::string> cache;
  auto [it, added] = cache.try_emplace({kind, bytes});
  if (added) {
    switch (kind) {
      case Kind::kDownloadedArticle:
        it->second = DownloadedArticle(bytes);
        break;
      case Kind::kDownloadedMail:
        it->second = DownloadedMail(bytes);
        break;
      case Kind::kOutgoingArticle:
        it->second = OutgoingArticle(bytes);
        break;
      case Kind::kOutgoingMail:
        it->second = OutgoingMail(bytes);
        break;
      case Kind::kReplyText:
        it->second = ReplyEditorText(bytes);
        break;
    }
  }
  return it->second;
}

void MessageSizes(benchmark::internal::Benchmark* b) {
  b->Arg(static_cast<int64_t>(kSmall))->Arg(kMedium)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
}

void Memchr(benchmark::State& state, Kind kind) {
  const std::string& text = Message(kind, state.range(0));
  for (auto _ : state) {
    const void* hit = std::memchr(text.data(), '\0', text.size());
    benchmark::DoNotOptimize(hit);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void Copy(benchmark::State& state, Kind kind) {
  const std::string& text = Message(kind, state.range(0));
  for (auto _ : state) {
    std::string copy = text;
    benchmark::DoNotOptimize(copy.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

}  // namespace brindle::bench
