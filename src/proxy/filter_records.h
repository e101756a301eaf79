// What the proxy keeps beside the downloaded messages themselves: the
// spammer list in force, looked at again on a timer so that a changed file
// (or a changed SpammersBase path) takes effect without a restart and
// without any message waiting for the read, and the filter log, written
// after the changed message has gone on, so that a slow or failing write
// never holds one up.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include "core/settings_store.h"
#include "proxy/message_pipeline.h"
#include "rewrite/spammer_list_file.h"

namespace brindle {

class FilterRecords : public std::enable_shared_from_this<FilterRecords> {
 public:
  FilterRecords(asio::io_context& io, SettingsStore& settings, std::chrono::milliseconds lookEvery);

  // Reads the list now, then looks at the file every `lookEvery` until Stop.
  void Start();
  void Stop();

  std::shared_ptr<const SpammerList> Spammers() const { return list_.Current(); }

  // One downloaded message after filtering (`text` as it goes to the
  // client). Queues its log line when a filter changed it.
  void Downloaded(const std::string& tunnel, const std::string& text,
                  const DownloadFiltering& filtering, const Settings& settings);

 private:
  void Look();
  void Arm();

  asio::io_context& io_;
  SettingsStore& settings_;
  asio::steady_timer timer_;
  std::chrono::milliseconds lookEvery_;
  SpammerListFile list_;
  bool stopped_ = true;
  bool writeFailing_ = false;
};

}  // namespace brindle
