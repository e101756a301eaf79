#include "ui/signatures_page.h"

#include "core/log.h"

namespace brindle::ui {
namespace {

constexpr PageMessage kNoEmail{104, 105, {}};

bool ValidRecord(int record) {
  return record >= 0 && record < kSignatureCount;
}

}  // namespace

void SignaturesPage::Load(const Settings& s) {
  copy_ = s.signatures;
  wrap_ = s.intWrap;
  const std::vector<int> senders = Senders();
  selected_ = senders.empty() ? -1 : senders.front();
}

void SignaturesPage::Apply(Settings& s) const {
  s.signatures = copy_;
}

std::vector<int> SignaturesPage::Senders() const {
  std::vector<int> out;
  for (int i = 0; i < kSignatureCount; ++i) {
    if (!copy_[static_cast<size_t>(i)].IsEmpty()) out.push_back(i);
  }
  return out;
}

std::string SignaturesPage::SenderCaption(int record) const {
  if (!ValidRecord(record)) return {};
  const SignatureRecord& r = copy_[static_cast<size_t>(record)];
  return r.UserName + " <" + r.email + ">";
}

std::optional<PageMessage> SignaturesPage::AddSender(const std::string& name,
                                                     const std::string& email, int* added) {
  if (added != nullptr) *added = -1;
  if (email.empty()) return kNoEmail;
  for (int i = 0; i < kSignatureCount; ++i) {
    SignatureRecord& r = copy_[static_cast<size_t>(i)];
    if (!r.IsEmpty()) continue;
    r = SignatureRecord{};
    r.UserName = name;
    r.email = email;
    selected_ = i;
    if (added != nullptr) *added = i;
    return std::nullopt;
  }
  log::Warning("the signature table is full: sender " + email + " not added");
  return std::nullopt;
}

std::optional<PageMessage> SignaturesPage::ChangeSender(int record, const std::string& name,
                                                        const std::string& email) {
  if (email.empty()) return kNoEmail;
  if (!ValidRecord(record)) return std::nullopt;
  copy_[static_cast<size_t>(record)].UserName = name;
  copy_[static_cast<size_t>(record)].email = email;
  return std::nullopt;
}

void SignaturesPage::RemoveSender(int record) {
  if (!ValidRecord(record)) return;
  copy_[static_cast<size_t>(record)] = SignatureRecord{};
  if (selected_ != record) return;
  // The selection moves to the next sender in the list, else the previous.
  const std::vector<int> senders = Senders();
  selected_ = -1;
  for (int i : senders) {
    selected_ = i;
    if (i > record) break;
  }
}

void SignaturesPage::Select(int record) {
  if (ValidRecord(record) && !copy_[static_cast<size_t>(record)].IsEmpty()) selected_ = record;
}

const SignatureRecord* SignaturesPage::Selected() const {
  return ValidRecord(selected_) ? &copy_[static_cast<size_t>(selected_)] : nullptr;
}

SignatureRecord* SignaturesPage::Mutable() {
  return ValidRecord(selected_) ? &copy_[static_cast<size_t>(selected_)] : nullptr;
}

void SignaturesPage::SetText(std::string text) {
  if (SignatureRecord* r = Mutable()) r->text = std::move(text);
}

void SignaturesPage::SetDistance(std::string_view text) {
  if (SignatureRecord* r = Mutable())
    r->Distance = static_cast<uint8_t>(ClampedNumber(text, 0, kDistanceMax));
}

void SignaturesPage::SetRandom(bool on) {
  if (SignatureRecord* r = Mutable()) r->RandomSig = on;
}

void SignaturesPage::AddFile(std::string path) {
  SignatureRecord* r = Mutable();
  if (r != nullptr && !path.empty()) r->SigFile.push_back(std::move(path));
}

void SignaturesPage::RemoveFile(size_t index) {
  SignatureRecord* r = Mutable();
  if (r != nullptr && index < r->SigFile.size())
    r->SigFile.erase(r->SigFile.begin() + static_cast<std::ptrdiff_t>(index));
}

std::optional<int> SignaturesPage::LongLineLimit() const {
  const SignatureRecord* r = Selected();
  if (r == nullptr) return std::nullopt;
  // Lines are joined by CR LF; a lone LF typed into a box also ends one.
  size_t start = 0;
  while (start <= r->text.size()) {
    size_t end = r->text.find('\n', start);
    if (end == std::string::npos) end = r->text.size();
    size_t length = end - start;
    if (length > 0 && r->text[end - 1] == '\r' && end > start) --length;
    if (length > static_cast<size_t>(wrap_)) return wrap_;
    start = end + 1;
  }
  return std::nullopt;
}

}  // namespace brindle::ui
