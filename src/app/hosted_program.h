// The main form on Windows: the hidden window on the client's thread and the
// proxy on a thread of its own. The two threads meet only by posting: work
// for the proxy goes to its io_context, answers come back to the window.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>

#include "app/client_host_system.h"
#include "app/companion_keeper.h"
#include "app/companion_process_win32.h"
#include "app/main_form.h"
#include "app/main_window_win32.h"
#include "app/program_services.h"
#include "core/language_menu.h"
#include "core/message_box.h"
#include "core/settings_store.h"
#include "oewin/note_watch.h"
#include "proxy/proxy.h"
#include "ui/main_window_ui_win32.h"
#include "ui/options_window_win32.h"
#include "ui/proxy_tunnel_control.h"
#include "ui/settings_apply.h"

namespace brindle::app {

class HostedProgram : public MainForm {
 public:
  HostedProgram(ClientHostSystem& system, std::string programDir, std::string settingsDir,
                ProxyOptions options);
  ~HostedProgram() override;

  bool Load() override;
  std::shared_ptr<const Settings> CurrentSettings() override { return store_.Current(); }
  void CloseTunnels() override;

 private:
  void Stop();
  void RedirectBoxes();
  bool LaunchCompanion();
  // Menus, boxes, tray and the options window, once the settings are loaded.
  void OpenUserInterface();
  void ShowClient();
  void OpenHelp();

  ClientHostSystem& system_;
  std::string programDir_, settingsDir_;
  ProxyOptions options_;
  MainWindow window_;
  SettingsStore store_;
  asio::io_context io_;
  asio::executor_work_guard<asio::io_context::executor_type> work_;
  std::thread ioThread_;
  std::unique_ptr<Proxy> proxy_;  // lives on the io thread
  std::unique_ptr<ProgramServices> services_;
  std::unique_ptr<CompanionProcess> companion_;  // on the io thread, as is the keeper
  std::unique_ptr<CompanionKeeper> keeper_;
  std::unique_ptr<ui::ProxyTunnelControl> tunnelControl_;
  std::unique_ptr<ui::SettingsApplier> applier_;
  LanguageWindows languageWindows_;
  std::unique_ptr<LanguageMenu> languageMenu_;
  std::unique_ptr<ui::OptionsWindow> optionsWindow_;
  std::unique_ptr<ui::MainWindowUi> ui_;
  std::unique_ptr<NoteWindowWatch> noteWatch_;  // on the client's thread
  MessageBoxSink previousBoxes_;
  bool boxesRedirected_ = false;
};

}  // namespace brindle::app
