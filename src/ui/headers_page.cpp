#include "ui/headers_page.h"

#include <algorithm>

#include "core/log.h"

namespace brindle::ui {

void HeadersPage::Load(const Settings& s) {
  const bool news = kind_ == Kind::kNews;
  changeIdentification = (news ? s.intXNewsreader : s.intXMailer) == 1;
  identification = news ? s.strXNewsreader : s.strXMailer;
  changeMimeOLE = (news ? s.intXMimeOLE : s.intXMimeOLEMail) == 1;
  mimeOLE = news ? s.strXMimeOLE : s.strXMimeOLEMail;
  copy_ = news ? s.newsHeaders : s.mailHeaders;
}

void HeadersPage::Apply(Settings& s) const {
  if (kind_ == Kind::kNews) {
    s.intXNewsreader = Flag(changeIdentification);
    s.strXNewsreader = identification;
    s.intXMimeOLE = Flag(changeMimeOLE);
    s.strXMimeOLE = mimeOLE;
    s.newsHeaders = copy_;
  } else {
    s.intXMailer = Flag(changeIdentification);
    s.strXMailer = identification;
    s.intXMimeOLEMail = Flag(changeMimeOLE);
    s.strXMimeOLEMail = mimeOLE;
    s.mailHeaders = copy_;
  }
}

void HeadersPage::SetSlider(int value) {
  slider_ = std::clamp(value, 0, kSliderMax);
}

const CustomHeader& HeadersPage::Row(int row) const {
  static const CustomHeader none;
  const int entry = slider_ + row;
  if (row < 0 || entry >= kCustomHeaderCount) return none;
  return copy_[static_cast<size_t>(entry)];
}

bool HeadersPage::Edit(int row, Field field, std::string text) {
  const int entry = slider_ + row;
  if (row < 0 || row >= kRows || entry >= kCustomHeaderCount) {
    log::Warning("custom header row " + std::to_string(row) + " is outside the table");
    return false;
  }
  CustomHeader& h = copy_[static_cast<size_t>(entry)];
  switch (field) {
    case Field::txtHeaderName:
      h.HeaderName = std::move(text);
      break;
    case Field::txtInsertAfter:
      h.InsertAfter = std::move(text);
      break;
    case Field::txtHeaderBody:
      h.HeaderBody = std::move(text);
      break;
  }
  return true;
}

}  // namespace brindle::ui
