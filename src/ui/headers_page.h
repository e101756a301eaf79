// frmHeaders (news) and frmHeadersMail (mails): the two identification
// switches with their replacement values, and the custom header table edited
// four rows at a time. Edits go into a 50-entry working copy at once; the
// live table changes only through Apply, so a cancelled window leaves it as
// it was.
#pragma once

#include <array>
#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class HeadersPage : public OptionPage {
 public:
  enum class Kind { kNews, kMail };
  enum class Field { txtHeaderName, txtInsertAfter, txtHeaderBody };
  static constexpr int kRows = 4;
  // The slider names the entry in row 0; 46 lets the last row reach entry 49.
  static constexpr int kSliderMax = kCustomHeaderCount - kRows;

  explicit HeadersPage(Kind kind) : kind_(kind) {}

  Kind kind() const { return kind_; }
  int TitleOffset() const override { return kind_ == Kind::kNews ? 46 : 12; }
  void Load(const Settings& s) override;
  void Apply(Settings& s) const override;

  // News: ChangeXNewsreader / XNewsreader and ChangeXMimeOLE / XMimeOLE.
  // Mail: ChangeXMailer / XMailer and ChangeXMimeOLEMail / XMimeOLEMail.
  bool changeIdentification = false;
  std::string identification;
  bool changeMimeOLE = false;
  std::string mimeOLE;

  int vscSuwak() const { return slider_; }
  // Moves the slider (clamped to 0..kSliderMax); the rows follow it.
  void SetSlider(int value);
  // The entry shown in row 0..3.
  const CustomHeader& Row(int row) const;
  // A text box of a row changed: stored at once into entry slider + row.
  // False (and nothing stored) when that is no entry of the table.
  bool Edit(int row, Field field, std::string text);

  const std::array<CustomHeader, kCustomHeaderCount>& WorkingCopy() const { return copy_; }

 private:
  Kind kind_;
  int slider_ = 0;
  std::array<CustomHeader, kCustomHeaderCount> copy_{};
};

}  // namespace brindle::ui
