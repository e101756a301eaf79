#include "ui/page_views_win32.h"

#include <commctrl.h>
#include <commdlg.h>

#include "core/language.h"
#include "core/language_wide.h"
#include "core/message_box.h"
#include "ui/about_page.h"
#include "ui/options_ids.h"

namespace brindle::ui {
namespace {

using Field = HeadersPage::Field;

// Four rows of three boxes over the working copy, moved by vscSuwak.
class HeadersView : public PageView {
 public:
  HeadersView(const SettingsStore& store, HeadersPage& page)
      : PageView(store, IDD_PAGE_HEADERS), page_(page) {}

  void Show() override {
    showing_ = true;
    const bool news = page_.kind() == HeadersPage::Kind::kNews;
    SetDlgItemTextW(window_, IDC_C1, news ? L"X-Newsreader:" : L"X-Mailer:");
    SetDlgItemTextW(window_, IDC_C2, L"X-MimeOLE:");
    SetCheck(IDC_C1, page_.changeIdentification);
    SetText(IDC_T1, page_.identification);
    SetCheck(IDC_C2, page_.changeMimeOLE);
    SetText(IDC_T2, page_.mimeOLE);
    SCROLLINFO info{sizeof info,
                    SIF_RANGE | SIF_POS | SIF_PAGE,
                    0,
                    HeadersPage::kSliderMax,
                    1,
                    page_.vscSuwak(),
                    0};
    SetScrollInfo(GetDlgItem(window_, IDC_SCROLL), SB_CTL, &info, TRUE);
    ShowRows();
    showing_ = false;
  }
  void Collect() override {
    page_.changeIdentification = GetCheck(IDC_C1);
    page_.identification = GetText(IDC_T1);
    page_.changeMimeOLE = GetCheck(IDC_C2);
    page_.mimeOLE = GetText(IDC_T2);
  }
  void ChangeLanguage() override {
    Caption(IDC_L1, 47);
    Caption(IDC_L2, 48);
    Caption(IDC_L3, 49);
    Caption(IDC_L4, 50);
    Caption(IDC_L5, 51);
    Caption(IDC_L6, 137);
  }

 protected:
  void Command(int id, int code) override {
    if (code != EN_CHANGE || id < IDC_ROW || id >= IDC_ROW + 3 * HeadersPage::kRows) return;
    const int row = (id - IDC_ROW) / 3;
    page_.Edit(row, static_cast<Field>((id - IDC_ROW) % 3), GetText(id));
  }
  void Scroll(HWND bar, int code) override {
    int pos = page_.vscSuwak();
    SCROLLINFO info{sizeof info, SIF_TRACKPOS, 0, 0, 0, 0, 0};
    GetScrollInfo(bar, SB_CTL, &info);
    switch (code) {
      case SB_LINEUP:
        --pos;
        break;
      case SB_LINEDOWN:
        ++pos;
        break;
      case SB_PAGEUP:
        pos -= HeadersPage::kRows;
        break;
      case SB_PAGEDOWN:
        pos += HeadersPage::kRows;
        break;
      case SB_THUMBTRACK:  // the rows follow the thumb while it is dragged
      case SB_THUMBPOSITION:
        pos = info.nTrackPos;
        break;
      default:
        return;
    }
    page_.SetSlider(pos);
    SetScrollPos(bar, SB_CTL, page_.vscSuwak(), TRUE);
    showing_ = true;
    ShowRows();
    showing_ = false;
  }

 private:
  void ShowRows() {
    for (int r = 0; r < HeadersPage::kRows; ++r) {
      const CustomHeader& h = page_.Row(r);
      SetText(IDC_ROW + 3 * r, h.HeaderName);
      SetText(IDC_ROW + 3 * r + 1, h.InsertAfter);
      SetText(IDC_ROW + 3 * r + 2, h.HeaderBody);
    }
  }
  HeadersPage& page_;
};

// The add/edit dialog of a tunnel, modal over the page.
class TunnelBox {
 public:
  TunnelBox(const SettingsStore& store, TunnelDialog& model) : store_(store), m_(model) {}
  bool Run(HWND owner) {
    return DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_TUNNEL), owner,
                           &TunnelBox::Procedure, reinterpret_cast<LPARAM>(this)) == IDOK;
  }

 private:
  static INT_PTR CALLBACK Procedure(HWND w, UINT message, WPARAM wp, LPARAM lp) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(w, DWLP_USER, lp);
    auto* self = reinterpret_cast<TunnelBox*>(GetWindowLongPtrW(w, DWLP_USER));
    if (self == nullptr) return FALSE;
    if (message == WM_INITDIALOG) return self->Init(w);
    if (message == WM_COMMAND) return self->Command(w, LOWORD(wp));
    return FALSE;
  }
  INT_PTR Init(HWND w) {
    auto caption = [&](int id, int offset) {
      SetDlgItemTextW(w, id, Utf8ToWide(LanguageString(store_, offset)).c_str());
    };
    SetWindowTextW(w, Utf8ToWide(std::string("OE Brindle - ") +
                                 std::string(LanguageString(store_, m_.TitleOffset())))
                          .c_str());
    caption(IDC_L5, 11);
    caption(IDC_L1, 81);
    caption(IDC_L2, 82);
    caption(IDC_L3, 83);
    caption(IDC_C1, 84);
    caption(IDC_C2, 173);
    caption(IDOK, 31);
    caption(IDCANCEL, 32);
    HWND type = GetDlgItem(w, IDC_TYPE);
    for (const wchar_t* name : {L"NNTP", L"POP3", L"SMTP"})
      SendMessageW(type, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    SendMessageW(type, CB_SETCURSEL, static_cast<WPARAM>(m_.tType), 0);
    EnableWindow(type, m_.adding());
    SetDlgItemTextA(w, IDC_T1, m_.txtServer.c_str());
    SetDlgItemTextA(w, IDC_T2, m_.txtSrcPort.c_str());
    SetDlgItemTextA(w, IDC_T3, m_.txtDestPort.c_str());
    CheckDlgButton(w, IDC_C1, m_.chkAutoStart ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(w, IDC_C2, m_.chkSSL ? BST_CHECKED : BST_UNCHECKED);
    EnableWindow(GetDlgItem(w, IDC_C2), m_.SslAvailable());
    return TRUE;
  }
  INT_PTR Command(HWND w, int id) {
    if (id == IDC_TYPE) {
      m_.tType = static_cast<int32_t>(SendDlgItemMessageW(w, IDC_TYPE, CB_GETCURSEL, 0, 0));
      EnableWindow(GetDlgItem(w, IDC_C2), m_.SslAvailable());
      return TRUE;
    }
    if (id == IDCANCEL) return EndDialog(w, IDCANCEL);
    if (id != IDOK) return FALSE;
    char buffer[512];
    GetDlgItemTextA(w, IDC_T1, buffer, sizeof buffer);
    m_.txtServer = buffer;
    GetDlgItemTextA(w, IDC_T2, buffer, sizeof buffer);
    m_.txtSrcPort = buffer;
    GetDlgItemTextA(w, IDC_T3, buffer, sizeof buffer);
    m_.txtDestPort = buffer;
    m_.chkAutoStart = IsDlgButtonChecked(w, IDC_C1) == BST_CHECKED;
    m_.chkSSL = IsDlgButtonChecked(w, IDC_C2) == BST_CHECKED;
    if (auto refusal = m_.Validate()) {
      const Settings& s = *store_.Current();
      ShowMessageBox(LanguageString(s, refusal->text), MessageBoxTitle(s, refusal->title),
                     BoxIcon::kExclamation);
      return TRUE;
    }
    return EndDialog(w, IDOK);
  }

  const SettingsStore& store_;
  TunnelDialog& m_;
};

class TunnelsView : public PageView {
 public:
  TunnelsView(const SettingsStore& store, TunnelsPage& page)
      : PageView(store, IDD_PAGE_TUNNELS), page_(page) {}

  void Show() override {
    HWND list = GetDlgItem(window_, IDC_LIST);
    const LRESULT selected = SendMessageW(list, LB_GETCURSEL, 0, 0);
    SendMessageW(list, LB_RESETCONTENT, 0, 0);
    for (size_t i = 0; i < page_.Entries().size(); ++i) {
      std::wstring line = Utf8ToWide(std::string(Text(page_.StateOffset(i)))) + L"\t";
      const std::string caption = page_.Caption(i);  // settings bytes: the system's code page
      std::wstring wide(caption.size(), L'\0');
      wide.resize(static_cast<size_t>(
          MultiByteToWideChar(CP_ACP, 0, caption.data(), static_cast<int>(caption.size()),
                              wide.data(), static_cast<int>(wide.size()))));
      line += wide;
      SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
    }
    SendMessageW(list, LB_SETCURSEL, static_cast<WPARAM>(selected), 0);
  }
  void ChangeLanguage() override {
    // The state column is as wide as the longest state word of any language.
    INT stop = 56;
    SendDlgItemMessageW(window_, IDC_LIST, LB_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&stop));
    Caption(IDC_L1, 73);
    Caption(IDC_B1, 29);
    Caption(IDC_B2, 74);
    Caption(IDC_B3, 30);
    Caption(IDC_B4, 75);
    Caption(IDC_B5, 76);
    Caption(IDC_B6, 107);
    Caption(IDC_B7, 108);
    Show();
  }
  // The state comes back from the proxy: the list shows it then.
  void Refresh() {
    page_.Refresh([this] { Redraw(); });
  }

 protected:
  void Command(int id, int code) override {
    if (code != BN_CLICKED) return;
    const LRESULT sel = SendDlgItemMessageW(window_, IDC_LIST, LB_GETCURSEL, 0, 0);
    const size_t index = sel < 0 ? page_.Entries().size() : static_cast<size_t>(sel);
    auto redraw = [this] { Redraw(); };
    switch (id) {
      case IDC_B1: {
        TunnelDialog d = page_.AddDialog();
        if (TunnelBox(store_, d).Run(window_)) page_.Add(d);
        break;
      }
      case IDC_B2: {
        auto d = page_.EditDialog(index);
        if (d && TunnelBox(store_, *d).Run(window_)) page_.Edit(index, *d);
        break;
      }
      case IDC_B3:
        page_.Delete(index);
        break;
      case IDC_B4:
        page_.Start(index, redraw);
        return;
      case IDC_B5:
        page_.Stop(index, redraw);
        return;
      case IDC_B6:
        page_.StartAll(redraw);
        return;
      case IDC_B7:
        page_.StopAll(redraw);
        return;
      default:
        return;
    }
    Show();
  }

 private:
  void Redraw() {
    if (window_ != nullptr) Show();
  }
  TunnelsPage& page_;
};

// The sender dialog: name and address.
class SenderBox {
 public:
  SenderBox(const SettingsStore& store, int title) : store_(store), title_(title) {}
  std::string name, email;
  std::function<std::optional<PageMessage>()> accept;  // false keeps the dialog open
  bool Run(HWND owner) {
    return DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_SENDER), owner,
                           &SenderBox::Procedure, reinterpret_cast<LPARAM>(this)) == IDOK;
  }

 private:
  static INT_PTR CALLBACK Procedure(HWND w, UINT message, WPARAM wp, LPARAM lp) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(w, DWLP_USER, lp);
    auto* self = reinterpret_cast<SenderBox*>(GetWindowLongPtrW(w, DWLP_USER));
    if (self == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
      auto text = [&](int offset) { return Utf8ToWide(LanguageString(self->store_, offset)); };
      SetWindowTextW(w, (L"OE Brindle - " + text(self->title_)).c_str());
      SetDlgItemTextW(w, IDC_L1, text(102).c_str());
      SetDlgItemTextW(w, IDC_L2, text(103).c_str());
      SetDlgItemTextW(w, IDOK, text(31).c_str());
      SetDlgItemTextW(w, IDCANCEL, text(32).c_str());
      SetDlgItemTextA(w, IDC_T1, self->name.c_str());
      SetDlgItemTextA(w, IDC_T2, self->email.c_str());
      return TRUE;
    }
    if (message != WM_COMMAND) return FALSE;
    if (LOWORD(wp) == IDCANCEL) return EndDialog(w, IDCANCEL);
    if (LOWORD(wp) != IDOK) return FALSE;
    char buffer[512];
    GetDlgItemTextA(w, IDC_T1, buffer, sizeof buffer);
    self->name = buffer;
    GetDlgItemTextA(w, IDC_T2, buffer, sizeof buffer);
    self->email = buffer;
    if (auto refusal = self->accept()) {
      const Settings& s = *self->store_.Current();
      ShowMessageBox(LanguageString(s, refusal->text), MessageBoxTitle(s, refusal->title),
                     BoxIcon::kExclamation);
      return TRUE;
    }
    return EndDialog(w, IDOK);
  }
  const SettingsStore& store_;
  int title_;
};

class SignaturesView : public PageView {
 public:
  SignaturesView(const SettingsStore& store, SignaturesPage& page)
      : PageView(store, IDD_PAGE_SIGNATURES), page_(page) {}

  void Show() override {
    showing_ = true;
    HWND list = GetDlgItem(window_, IDC_LIST);
    SendMessageW(list, LB_RESETCONTENT, 0, 0);
    const std::vector<int> senders = page_.Senders();
    for (size_t i = 0; i < senders.size(); ++i) {
      SendMessageA(list, LB_ADDSTRING, 0,
                   reinterpret_cast<LPARAM>(page_.SenderCaption(senders[i]).c_str()));
      if (senders[i] == page_.selected()) SendMessageW(list, LB_SETCURSEL, i, 0);
    }
    const SignatureRecord* r = page_.Selected();
    const bool any = r != nullptr;
    for (int id : {IDC_T1, IDC_T2, IDC_C1, IDC_LIST2, IDC_B2, IDC_B3, IDC_B4, IDC_B5})
      EnableWindow(GetDlgItem(window_, id), any);
    SetText(IDC_T1, any ? r->text : "");
    SetText(IDC_T2, any ? std::to_string(r->Distance) : "");
    SetCheck(IDC_C1, any && r->RandomSig);
    HWND files = GetDlgItem(window_, IDC_LIST2);
    SendMessageW(files, LB_RESETCONTENT, 0, 0);
    if (any)
      for (const std::string& f : r->SigFile)
        SendMessageA(files, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(f.c_str()));
    ShowWarning();
    showing_ = false;
  }
  void ChangeLanguage() override {
    Caption(IDC_L1, 93);
    Caption(IDC_B1, 94);
    Caption(IDC_B2, 38);
    Caption(IDC_B3, 30);
    Caption(IDC_L2, 96);
    Caption(IDC_L3, 95);
    Caption(IDC_C1, 97);
    Caption(IDC_B4, 29);
    Caption(IDC_B5, 30);
    ShowWarning();
  }

 protected:
  void Command(int id, int code) override {
    if (id == IDC_T1 && code == EN_CHANGE) {
      page_.SetText(GetText(IDC_T1));
      ShowWarning();
      return;
    }
    if (id == IDC_T2 && code == EN_CHANGE) return page_.SetDistance(GetText(IDC_T2));
    if (id == IDC_LIST && code == LBN_SELCHANGE) {
      const LRESULT i = SendDlgItemMessageW(window_, IDC_LIST, LB_GETCURSEL, 0, 0);
      const std::vector<int> senders = page_.Senders();
      if (i >= 0 && static_cast<size_t>(i) < senders.size()) page_.Select(senders[i]);
      return Show();
    }
    if (code != BN_CLICKED) return;
    switch (id) {
      case IDC_C1:
        page_.SetRandom(GetCheck(IDC_C1));
        return;
      case IDC_B1: {
        SenderBox box(store_, 101);
        box.accept = [&] { return page_.AddSender(box.name, box.email); };
        box.Run(window_);
        break;
      }
      case IDC_B2: {
        const SignatureRecord* r = page_.Selected();
        if (r == nullptr) return;
        SenderBox box(store_, 106);
        box.name = r->UserName;
        box.email = r->email;
        const int record = page_.selected();
        box.accept = [&] { return page_.ChangeSender(record, box.name, box.email); };
        box.Run(window_);
        break;
      }
      case IDC_B3:
        page_.RemoveSender(page_.selected());
        break;
      case IDC_B4: {
        wchar_t file[MAX_PATH] = L"";
        OPENFILENAMEW open{};
        open.lStructSize = sizeof open;
        open.hwndOwner = window_;
        open.lpstrFile = file;
        open.nMaxFile = MAX_PATH;
        open.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY;
        std::wstring title = Utf8ToWide(Text(98));
        open.lpstrTitle = title.c_str();
        if (!GetOpenFileNameW(&open)) return;
        char bytes[MAX_PATH * 2];
        WideCharToMultiByte(CP_ACP, 0, file, -1, bytes, sizeof bytes, nullptr, nullptr);
        page_.AddFile(bytes);
        break;
      }
      case IDC_B5: {
        const LRESULT i = SendDlgItemMessageW(window_, IDC_LIST2, LB_GETCURSEL, 0, 0);
        if (i >= 0) page_.RemoveFile(static_cast<size_t>(i));
        break;
      }
      default:
        return;
    }
    Show();
  }

 private:
  void ShowWarning() {
    std::string warning;
    if (auto limit = page_.LongLineLimit())
      warning =
          std::string(Text(100)) + " " + std::to_string(*limit) + " " + std::string(Text(128));
    Caption(IDC_L4, warning);
  }
  SignaturesPage& page_;
};

std::unique_ptr<PageView> Bound(const SettingsStore& store, int id,
                                BoundPageView::Bindings bindings) {
  return std::make_unique<BoundPageView>(store, id, std::move(bindings));
}

}  // namespace

std::vector<std::unique_ptr<PageView>> MakePageViews(OptionPages& p, const SettingsStore& store) {
  std::vector<std::unique_ptr<PageView>> views;
  views.push_back(std::make_unique<HeadersView>(store, p.frmHeaders));
  views.push_back(std::make_unique<HeadersView>(store, p.frmHeadersMail));

  auto filters = std::make_unique<BoundPageView>(
      store, IDD_PAGE_FILTERS,
      BoundPageView::Bindings{
          {{IDC_C1, &p.frmFilters.chkBeginFilter}, {IDC_C2, &p.frmFilters.chkAsianFilter}},
          {{IDC_T1, &p.frmFilters.txtAFPercentage}, {IDC_T2, &p.frmFilters.txtAFMin}},
          {{IDC_C1, 40},
           {IDC_L1, 42},
           {IDC_R1, 43},
           {IDC_R2, 44},
           {IDC_R3, 45},
           {IDC_L3, 160},
           {IDC_C2, 161},
           {IDC_L4, 162},
           {IDC_L5, 163}},
          {},
          {},
          {}});
  BoundPageView* f = filters.get();
  filters->Bind(
      [f, &p] {
        f->Select({IDC_R1, IDC_R2, IDC_R3}, IDC_R1 + static_cast<int>(p.frmFilters.charFilter));
      },
      [f, &p] {
        if (int id = f->Selected({IDC_R1, IDC_R2, IDC_R3}))
          p.frmFilters.charFilter = static_cast<FiltersPage::CharFilter>(id - IDC_R1);
      });
  views.push_back(std::move(filters));

  views.push_back(Bound(store, IDD_PAGE_MISC,
                        {{{IDC_C1, &p.frmMiscellaneous.chkFQDN},
                          {IDC_C2, &p.frmMiscellaneous.chkAutoMaximize},
                          {IDC_C3, &p.frmMiscellaneous.chkClickSecWindow},
                          {IDC_C4, &p.frmMiscellaneous.chkWinamp},
                          {IDC_C5, &p.frmMiscellaneous.chkLogoffAfterClose}},
                         {{IDC_T1, &p.frmMiscellaneous.txtStrip},
                          {IDC_T2, &p.frmMiscellaneous.txtAttachmentPath},
                          {IDC_T3, &p.frmMiscellaneous.txtCCAddress},
                          {IDC_T4, &p.frmMiscellaneous.txtBCCAddress}},
                         {{IDC_L1, 90},
                          {IDC_L2, 91},
                          {IDC_C1, 166},
                          {IDC_C2, 61},
                          {IDC_C3, 156},
                          {IDC_C4, 165},
                          {IDC_C5, 164},
                          {IDC_L3, 154},
                          {IDC_L4, 171},
                          {IDC_L5, 172}},
                         {},
                         {},
                         {}}));
  views.push_back(std::make_unique<TunnelsView>(store, p.frmTunele));
  views.push_back(std::make_unique<SignaturesView>(store, p.frmSygnaturka));
  views.push_back(
      Bound(store, IDD_PAGE_QUOTES,
            {{{IDC_C1, &p.frmWrotki.chkWrotkaNews}, {IDC_C2, &p.frmWrotki.chkWrotkaMail}},
             {{IDC_T1, &p.frmWrotki.txtWrotkaNews}, {IDC_T2, &p.frmWrotki.txtWrotkaMail}},
             {{IDC_C1, 124},
              {IDC_C2, 125},
              {IDC_L1, 114},
              {IDC_L2, 115},
              {IDC_L3, 116},
              {IDC_L4, 118},
              {IDC_L5, 119},
              {IDC_L6, 120},
              {IDC_L7, 121},
              {IDC_L8, 122},
              {IDC_L9, 123},
              {IDC_L10, 117}},
             {},
             {},
             {}}));

  TextProcessingPage& t = p.frmTextProcessing;
  auto text = std::make_unique<BoundPageView>(
      store, IDD_PAGE_TEXT,
      BoundPageView::Bindings{{{IDC_C1, &t.chkHorizontalQCompression},
                               {IDC_C2, &t.chkVerticalQCompression},
                               {IDC_C3, &t.chkCursorOnTop},
                               {IDC_C4, &t.chkOVRWarning}},
                              {{IDC_T1, &t.txtWrap}},
                              {{IDC_L1, 127},
                               {IDC_L2, 128},
                               {IDC_L3, 129},
                               {IDC_C1, 151},
                               {IDC_C2, 152},
                               {IDC_R1, 169},
                               {IDC_R2, 170},
                               {IDC_C3, 19},
                               {IDC_C4, 155}},
                              {},
                              {},
                              {}});
  BoundPageView* tv = text.get();
  text->Bind(
      [tv, &t] {
        tv->Select({IDC_R1, IDC_R2}, t.optBottomPosting ? IDC_R2 : IDC_R1);
      },
      [tv, &t] {
        t.optBottomPosting = tv->Selected({IDC_R1, IDC_R2}) == IDC_R2;
      });
  views.push_back(std::move(text));

  views.push_back(Bound(store, IDD_PAGE_FILES,
                        {{},
                         {{IDC_T1, &p.frmFiles.txtStyles},
                          {IDC_T2, &p.frmFiles.txtSpammers},
                          {IDC_T3, &p.frmFiles.txtSpammerAddress},
                          {IDC_T4, &p.frmFiles.txtLog}},
                         {{IDC_L1, 35}, {IDC_L2, 36}, {IDC_L3, 103}, {IDC_L4, 37}},
                         {},
                         {},
                         {}}));
  views.push_back(Bound(store, IDD_PAGE_ICON,
                        {{{IDC_C1, &p.frmIcon.chkTrayIcon},
                          {IDC_C2, &p.frmIcon.chkMinimizeOE},
                          {IDC_C3, &p.frmIcon.chkTrayDoubleClick}},
                         {},
                         {{IDC_C1, 111}, {IDC_C2, 112}, {IDC_C3, 57}},
                         {},
                         {},
                         {}}));

  ClientStartPage& c = p.frmOEStart;
  auto start = std::make_unique<BoundPageView>(
      store, IDD_PAGE_START,
      BoundPageView::Bindings{
          {}, {}, {{IDC_L1, 53}, {IDC_R1, 54}, {IDC_R2, 55}, {IDC_R3, 56}}, {}, {}, {}});
  BoundPageView* sv = start.get();
  start->Bind(
      [sv, &c] {
        sv->Select({IDC_R1, IDC_R2, IDC_R3}, c.state ? IDC_R1 + static_cast<int>(*c.state) : 0);
      },
      [sv, &c] {
        if (int id = sv->Selected({IDC_R1, IDC_R2, IDC_R3}))
          c.state = static_cast<ClientStartPage::WindowState>(id - IDC_R1);
      });
  views.push_back(std::move(start));

  auto about = std::make_unique<BoundPageView>(
      store, IDD_PAGE_ABOUT,
      BoundPageView::Bindings{{}, {}, {{IDC_L3, AboutPage::kNotice}}, {}, {}, {}});
  BoundPageView* av = about.get();
  about->Bind({}, {}, [av, &store] {
    SetDlgItemTextW(av->Handle(), IDC_L2,
                    (Utf8ToWide(LanguageString(store, AboutPage::kVersionCaption)) + L" " +
                     Utf8ToWide(AboutPage::Version()))
                        .c_str());
  });
  views.push_back(std::move(about));
  return views;
}

}  // namespace brindle::ui
