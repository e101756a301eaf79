// frmTunele: the tunnels with their state, edited in a working copy (Add,
// Edit, Delete reach the running tunnels only through Apply), and started
// or stopped at once (Start, Stop, Start all, Stop all), as the list shows
// what is running now.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ui/option_page.h"
#include "ui/tunnel_control.h"
#include "ui/tunnel_dialog.h"

namespace brindle::ui {

class TunnelsPage : public OptionPage {
 public:
  // One line of lstSerwery. `origin` is the tunnel's position among the
  // running ones, none for a tunnel added since the page was loaded.
  struct Entry {
    TunnelRecord record;
    std::optional<size_t> origin;
  };

  // `control` may be null (no proxy: nothing runs, Start/Stop do nothing).
  explicit TunnelsPage(TunnelControl* control = nullptr) : control_(control) {}
  void SetControl(TunnelControl* control) { control_ = control; }

  int TitleOffset() const override { return 72; }
  void Load(const Settings& s) override;
  void Apply(Settings& s) const override;

  const std::vector<Entry>& Entries() const { return entries_; }
  // "Server:port -> local port" and the state's language string offset
  // (77 Running / 78 Stopped).
  std::string Caption(size_t index) const;
  int StateOffset(size_t index) const;
  bool IsRunning(size_t index) const;

  // The dialogs: adding one at the end; editing the one at `index`.
  TunnelDialog AddDialog() const { return TunnelDialog(); }
  std::optional<TunnelDialog> EditDialog(size_t index) const;
  // OK of a dialog (which has validated it). False for a bad index.
  void Add(const TunnelDialog& dialog);
  bool Edit(size_t index, const TunnelDialog& dialog);
  bool Delete(size_t index);

  // The origin of every tunnel of the working copy, in order: the apply path
  // plans the changes to the running tunnels from it.
  std::vector<std::optional<size_t>> Origins() const;

  // Starting and stopping act on the running tunnel at once (a tunnel not
  // yet applied has none). `done` runs when the state is known again.
  void Refresh(std::function<void()> done = {});
  void Start(size_t index, std::function<void()> done = {});
  void Stop(size_t index, std::function<void()> done = {});
  void StartAll(std::function<void()> done = {});
  void StopAll(std::function<void()> done = {});

 private:
  struct Run {
    std::vector<size_t> origins;
    bool start;
    std::function<void()> done;
  };
  void Each(bool start, std::function<void()> done);
  void Step(std::shared_ptr<Run> run, size_t k);

  TunnelControl* control_;
  std::vector<Entry> entries_;
  std::vector<bool> running_;  // by origin
};

}  // namespace brindle::ui
