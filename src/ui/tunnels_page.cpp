#include "ui/tunnels_page.h"

#include <memory>

namespace brindle::ui {
namespace {

const char* TypeName(int32_t type) {
  if (type == kTypePop3) return "POP3";
  if (type == kTypeSmtp) return "SMTP";
  return "NNTP";
}

}  // namespace

void TunnelsPage::Load(const Settings& s) {
  entries_.clear();
  for (size_t i = 0; i < s.tunnels.size(); ++i) entries_.push_back({s.tunnels[i], i});
  running_.assign(s.tunnels.size(), false);
}

void TunnelsPage::Apply(Settings& s) const {
  s.tunnels.clear();
  for (const Entry& e : entries_) s.tunnels.push_back(e.record);
}

std::string TunnelsPage::Caption(size_t index) const {
  if (index >= entries_.size()) return {};
  const TunnelRecord& r = entries_[index].record;
  std::string text = std::string(TypeName(r.tType)) + "  " + r.Server + ":" +
                     std::to_string(r.DestPort) + "  127.0.0.1:" + std::to_string(r.SrcPort);
  if (r.SSL) text += "  SSL";
  return text;
}

bool TunnelsPage::IsRunning(size_t index) const {
  if (index >= entries_.size() || !entries_[index].origin) return false;
  const size_t origin = *entries_[index].origin;
  return origin < running_.size() && running_[origin];
}

int TunnelsPage::StateOffset(size_t index) const {
  return IsRunning(index) ? 77 : 78;
}

std::optional<TunnelDialog> TunnelsPage::EditDialog(size_t index) const {
  if (index >= entries_.size()) return std::nullopt;
  return TunnelDialog(entries_[index].record);
}

void TunnelsPage::Add(const TunnelDialog& dialog) {
  entries_.push_back({dialog.Record(), std::nullopt});
}

bool TunnelsPage::Edit(size_t index, const TunnelDialog& dialog) {
  if (index >= entries_.size()) return false;
  TunnelRecord record = dialog.Record();
  record.tType = entries_[index].record.tType;  // written once, when the tunnel was made
  entries_[index].record = std::move(record);
  return true;
}

bool TunnelsPage::Delete(size_t index) {
  if (index >= entries_.size()) return false;
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
  return true;
}

std::vector<std::optional<size_t>> TunnelsPage::Origins() const {
  std::vector<std::optional<size_t>> out;
  for (const Entry& e : entries_) out.push_back(e.origin);
  return out;
}

void TunnelsPage::Refresh(std::function<void()> done) {
  if (control_ == nullptr) {
    if (done) done();
    return;
  }
  control_->Running([this, done = std::move(done)](std::vector<bool> running) {
    running_ = std::move(running);
    if (done) done();
  });
}

void TunnelsPage::Start(size_t index, std::function<void()> done) {
  if (control_ == nullptr || index >= entries_.size() || !entries_[index].origin) {
    if (done) done();
    return;
  }
  control_->Start(*entries_[index].origin,
                  [this, done = std::move(done)](int) { Refresh(std::move(done)); });
}

void TunnelsPage::Stop(size_t index, std::function<void()> done) {
  if (control_ == nullptr || index >= entries_.size() || !entries_[index].origin) {
    if (done) done();
    return;
  }
  control_->Stop(*entries_[index].origin,
                 [this, done = std::move(done)] { Refresh(std::move(done)); });
}

void TunnelsPage::StartAll(std::function<void()> done) {
  Each(true, std::move(done));
}

void TunnelsPage::StopAll(std::function<void()> done) {
  Each(false, std::move(done));
}

// One tunnel after the other, so that the boxes of ports in use come one at
// a time and the list is refreshed once at the end.
void TunnelsPage::Each(bool start, std::function<void()> done) {
  std::vector<size_t> origins;
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].origin && IsRunning(i) != start) origins.push_back(*entries_[i].origin);
  }
  if (control_ == nullptr || origins.empty()) {
    Refresh(std::move(done));
    return;
  }
  Step(std::make_shared<Run>(Run{std::move(origins), start, std::move(done)}), 0);
}

void TunnelsPage::Step(std::shared_ptr<Run> run, size_t k) {
  if (k == run->origins.size()) {
    Refresh(std::move(run->done));
    return;
  }
  if (run->start)
    control_->Start(run->origins[k], [this, run, k](int) { Step(run, k + 1); });
  else
    control_->Stop(run->origins[k], [this, run, k] { Step(run, k + 1); });
}

}  // namespace brindle::ui
