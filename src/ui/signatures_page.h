// frmSygnaturka: the senders (up to 101, each chosen by its e-mail address
// when a message goes out) and, for the selected sender, the signature text,
// its distance from the body, and the files one of which is picked at
// random instead of the text.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "ui/option_page.h"

namespace brindle::ui {

class SignaturesPage : public OptionPage {
 public:
  static constexpr int16_t kDistanceMax = 99;  // two digits in its box

  int TitleOffset() const override { return 92; }
  void Load(const Settings& s) override;
  void Apply(Settings& s) const override;

  // lstSenders: the records in use, in table order.
  std::vector<int> Senders() const;
  // "User name <e-mail>" as the list shows a sender.
  std::string SenderCaption(int record) const;

  // The sender dialog's OK: name and address of a new sender (in the first
  // free record) or of an existing one. The address is required. The table
  // being full is reported as nothing added (-1) and logged.
  std::optional<PageMessage> AddSender(const std::string& name, const std::string& email,
                                       int* added = nullptr);
  std::optional<PageMessage> ChangeSender(int record, const std::string& name,
                                          const std::string& email);
  void RemoveSender(int record);

  // The selected sender, whose text, distance and files the page shows; -1
  // when the list is empty.
  int selected() const { return selected_; }
  void Select(int record);
  const SignatureRecord* Selected() const;

  // Edits of the selected sender; ignored when none is selected.
  void SetText(std::string text);
  void SetDistance(std::string_view text);  // clamped to 0..kDistanceMax empty lines
  void SetRandom(bool on);
  void AddFile(std::string path);
  void RemoveFile(size_t index);

  // When a line of the selected text is longer than the wrap length the
  // client uses, the page warns: the limit to name in the warning.
  std::optional<int> LongLineLimit() const;

 private:
  SignatureRecord* Mutable();

  std::array<SignatureRecord, kSignatureCount> copy_{};
  int selected_ = -1;
  int wrap_ = 76;
};

}  // namespace brindle::ui
