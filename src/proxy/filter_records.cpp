#include "proxy/filter_records.h"

#include <asio/post.hpp>

#include "core/log.h"
#include "rewrite/data_files.h"
#include "rewrite/downloaded_headers.h"
#include "rewrite/filter_log.h"

namespace brindle {

FilterRecords::FilterRecords(asio::io_context& io, SettingsStore& settings,
                             std::chrono::milliseconds lookEvery)
    : io_(io), settings_(settings), timer_(io), lookEvery_(lookEvery) {}

void FilterRecords::Start() {
  stopped_ = false;
  Look();
}

void FilterRecords::Stop() {
  stopped_ = true;
  timer_.cancel();
}

void FilterRecords::Look() {
  try {
    list_.Refresh(settings_.Current()->strSpammers);
  } catch (const std::exception& e) {  // a list that does not fit in memory
    log::Warning(std::string("Spammer list not read: ") + e.what());
  }
  Arm();
}

void FilterRecords::Arm() {
  if (stopped_) return;
  timer_.expires_after(lookEvery_);
  timer_.async_wait([weak = weak_from_this()](const std::error_code& ec) {
    auto self = weak.lock();
    if (ec || !self || self->stopped_) return;
    self->Look();
  });
}

void FilterRecords::Downloaded(const std::string& tunnel, const std::string& text,
                               const DownloadFiltering& filtering, const Settings& settings) {
  if (!filtering.changes.Any() || settings.strLog.empty()) return;
  FilterLogEntry entry{datafile::LocalTimeText(std::time(nullptr)),
                       tunnel,
                       HeaderValue(text, "Message-ID"),
                       filtering.sender,
                       HeaderValue(text, "Subject"),
                       filtering.changes};
  asio::post(io_, [self = shared_from_this(), path = settings.strLog, line = FilterLogLine(entry)] {
    const bool written = AppendFilterLog(path, line);
    if (written == !self->writeFailing_) return;
    self->writeFailing_ = !written;
    if (written) {
      log::Info("Filter log " + path + " is written again");
    } else {
      log::Warning("Filter log " + path + " cannot be written; its lines are lost until it can");
    }
  });
}

}  // namespace brindle
