// The load sequence's services as the program provides them: the companion
// launched by a platform function, the proxy's probe and tunnels, the
// settings found by the settings subsystem and published in the store.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <asio/io_context.hpp>

#include "core/settings_store.h"
#include "core/startup.h"
#include "proxy/proxy.h"

namespace brindle::app {

struct ProgramHooks {
  std::string companionFileName;
  std::function<bool()> launchCompanion;
  std::function<int16_t()> defaultLanguage;
  SettingsPlaces settingsPlaces;
  // Ends the reading of the settings file early when it becomes true.
  const std::atomic<bool>* stopLoading = nullptr;
};

class ProgramServices : public StartupServices {
 public:
  ProgramServices(asio::io_context& io, Proxy& proxy, SettingsStore& store, ProgramHooks hooks)
      : io_(io), proxy_(proxy), store_(store), hooks_(std::move(hooks)) {}

  std::string CompanionFileName() const override { return hooks_.companionFileName; }
  bool LaunchCompanion() override { return hooks_.launchCompanion(); }
  void ProbeCompanion(std::function<void(bool)> done) override;
  int16_t DefaultLanguage() override { return hooks_.defaultLanguage(); }
  LoadedSettings LoadSettings(int16_t defaultLanguage, const TunnelSink& sink) override;
  void AddTunnel(const TunnelRecord& record, std::function<void(int)> started) override {
    proxy_.AddTunnel(record, std::move(started));
  }

 private:
  void ProbeUntil(std::chrono::steady_clock::time_point deadline, std::function<void(bool)> done);
  void PublishLanguage(int16_t language);

  asio::io_context& io_;
  Proxy& proxy_;
  SettingsStore& store_;
  ProgramHooks hooks_;
  // A probe's retry may come due after the program has let these services
  // go (a companion started again just before the end): it then does nothing.
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace brindle::app
