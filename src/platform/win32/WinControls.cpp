#include "platform/win32/WinControls.h"

#include <algorithm>

#include "platform/ListText.h"
#include "platform/win32/SystemHandles.h"
#include "platform/win32/WinColors.h"
#include "platform/win32/WinForm.h"
#include "platform/win32/WinListBox.h"
#include "platform/win32/WinMetrics.h"

namespace platform::win32 {

namespace {

constexpr UINT_PTR SUBCLASS = 1;

}  // namespace

ControlWindow::ControlWindow(WinForm& frmOwner, const ControlDesign& tDesign,
                             const ControlClass& tClass, HFONT hFont)
    : frm(frmOwner),
      iControl(tDesign.iControl),
      eKind(tDesign.eKind),
      bFocusable(tDesign.eKind != ControlKind::Label),
      tPlace(tDesign.tPlace) {
  const RECT tPixels = PixelsOf(tPlace);
  // An edit control's caption would be its contents.
  const bool bCaption = tDesign.eKind != ControlKind::TextBox;
  hWnd = ::CreateWindowExW(
      tClass.lExtendedStyle, WideOf(tClass.sClass).c_str(),
      bCaption ? WideOf(tDesign.sCaption).c_str() : nullptr,
      tClass.lStyle | WS_CHILD | WS_CLIPSIBLINGS | (tDesign.bVisible ? WS_VISIBLE : 0U) |
          (tDesign.iTabOrder >= 0 ? WS_TABSTOP : 0U),
      tPixels.left, tPixels.top, tPixels.right - tPixels.left, tPixels.bottom - tPixels.top,
      frm.Window(), HandleOf<HMENU>(static_cast<std::uint32_t>(iControl)), nullptr, nullptr);
  ::SendMessageA(hWnd, WM_SETFONT, reinterpret_cast<WPARAM>(hFont), FALSE);
  ::SetWindowSubclass(hWnd, Received, SUBCLASS, reinterpret_cast<DWORD_PTR>(this));
}

// ---- State and place ----------------------------------------------------------------------------

void ControlWindow::SetEnabled(bool bEnabled) {
  if (!bEnabled) frm.YieldFocus(*this);
  ::EnableWindow(hWnd, bEnabled ? TRUE : FALSE);
}

bool ControlWindow::Enabled() const {
  return (::GetWindowLongA(hWnd, GWL_STYLE) & static_cast<LONG>(WS_DISABLED)) == 0;
}

void ControlWindow::SetVisible(bool bVisible) {
  if (!bVisible) frm.YieldFocus(*this);
  ::ShowWindow(hWnd, bVisible ? SW_SHOWNA : SW_HIDE);
}

bool ControlWindow::Visible() const {
  return (::GetWindowLongA(hWnd, GWL_STYLE) & static_cast<LONG>(WS_VISIBLE)) != 0;
}

void ControlWindow::SetFocus() {
  if (TakesFocus()) frm.FocusOn(*this);
}

void ControlWindow::Move(const TwipsRect& tNewPlace) {
  tPlace = tNewPlace;
  const RECT tPixels = PixelsOf(tPlace);
  ::SetWindowPos(hWnd, nullptr, tPixels.left - tOutset.x, tPixels.top - tOutset.y,
                 tPixels.right - tPixels.left + tOutset.x, tPixels.bottom - tPixels.top + tOutset.y,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void ControlWindow::BringToFront() {
  ::SetWindowPos(hWnd, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void ControlWindow::SetOutset(POINT tNewOutset) {
  tOutset = tNewOutset;
  ControlWindow::Move(tPlace);
}

// ---- Messages -----------------------------------------------------------------------------------

void ControlWindow::Report(void (FormEvents::*fnEvent)(std::int16_t)) {
  frm.Deliver([this, fnEvent](FormEvents& tEvents) { (tEvents.*fnEvent)(iControl); });
}

LRESULT CALLBACK ControlWindow::Received(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam,
                                         UINT_PTR /*lSubclass*/, DWORD_PTR pControl) {
  if (uMsg == WM_NCDESTROY) {
    ::RemoveWindowSubclass(hWnd, Received, SUBCLASS);
    return ::DefSubclassProc(hWnd, uMsg, wParam, lParam);
  }
  auto& tControl = *reinterpret_cast<ControlWindow*>(pControl);
  switch (uMsg) {
    case WM_SETFOCUS:
      tControl.frm.FocusArrived(tControl);
      break;
    case WM_KEYDOWN:
      return tControl.OnKeyDown(wParam, lParam);
    case WM_SYSKEYDOWN:
      // Shift+F10 is the menu key of keyboards that have none.
      if (wParam == VK_F10 && ::GetKeyState(VK_SHIFT) < 0 && tControl.ReportKeyDown(VK_APPS))
        return 0;
      break;
    case WM_CHAR:
      return tControl.OnCharacter(wParam, lParam);
    default:
      break;
  }
  try {
    return tControl.OnMessage(uMsg, wParam, lParam);
  } catch (const std::bad_alloc&) {  // no error may cross the system's calls
    return 0;
  }
}

LRESULT ControlWindow::OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam) {
  return ::DefSubclassProc(hWnd, uMsg, wParam, lParam);
}

bool ControlWindow::ReportKeyDown(WPARAM wKey) {
  return frm.Deliver([this, wKey](FormEvents& tEvents) {
    return tEvents.KeyDown(iControl, static_cast<std::int16_t>(wKey));
  });
}

/// Message boxes and dialogs have message loops of their own, which know nothing of this form's
/// Tab key; so the control itself sees to it.
LRESULT ControlWindow::OnKeyDown(WPARAM wKey, LPARAM lParam) {
  if (wKey == VK_TAB) {
    frm.FocusNext(*this, ::GetKeyState(VK_SHIFT) < 0);
    return 0;
  }
  const bool bConsumed = frm.RunDesignedKey(wKey) || ReportKeyDown(wKey);
  if (bConsumed || frm.IsUnloaded()) {
    // The key's character is in the queue already; a consumed key has none.
    MSG tCharacter = {};
    ::PeekMessageW(&tCharacter, hWnd, WM_CHAR, WM_CHAR, PM_REMOVE);
    return 0;
  }
  return OnMessage(WM_KEYDOWN, wKey, lParam);
}

LRESULT ControlWindow::OnCharacter(WPARAM wCharacter, LPARAM lParam) {
  if (wCharacter == VK_TAB) return 0;
  const std::int32_t lUsed = frm.Deliver([this, wCharacter](FormEvents& tEvents) {
    return tEvents.KeyPress(iControl, static_cast<std::int32_t>(wCharacter));
  });
  if (lUsed == 0 || frm.IsUnloaded()) return 0;
  if (IsButton() && lUsed == VK_RETURN) return ::SendMessageA(hWnd, BM_CLICK, 0, 0);
  return OnMessage(WM_CHAR, static_cast<WPARAM>(lUsed), lParam);
}

namespace {

// ---- Kinds of controls --------------------------------------------------------------------------

class LabelOrButton final : public ControlWindow {
 public:
  using ControlWindow::ControlWindow;
  void Notified(WORD iCode) override {
    if (iCode == BN_CLICKED) Report(&FormEvents::Click);
  }
};

class CheckBoxWindow final : public CheckBox, public ControlWindow {
 public:
  using ControlWindow::ControlWindow;
  bool Checked() const override {
    return ::SendMessageA(Handle(), BM_GETCHECK, 0, 0) == BST_CHECKED;
  }
  void Notified(WORD iCode) override {
    if (iCode == BN_CLICKED) Report(&FormEvents::Click);
  }

 protected:
  /// The press that ends an address field's edit lists the range, and that moves the focus to the
  /// list. The button would forget the press then; so it hears of the focus when it is released.
  LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam) override {
    if (uMsg == WM_KILLFOCUS && IsHeldByMouse() && IsSibling(reinterpret_cast<HWND>(wParam)))
      return 0;
    const LRESULT lResult = ControlWindow::OnMessage(uMsg, wParam, lParam);
    if (uMsg == WM_LBUTTONUP && ::GetFocus() != Handle())
      ControlWindow::OnMessage(WM_KILLFOCUS, 0, 0);
    return lResult;
  }

 private:
  bool IsHeldByMouse() const { return ::GetCapture() == Handle() && ::GetKeyState(VK_LBUTTON) < 0; }
  bool IsSibling(HWND hOther) const {
    return ::GetAncestor(hOther, GA_PARENT) == ::GetAncestor(Handle(), GA_PARENT);
  }
};

class EditWindow final : public TextBox, public ControlWindow {
 public:
  EditWindow(WinForm& frmOwner, const ControlDesign& tDesign, HFONT hFont)
      : ControlWindow(frmOwner, tDesign, ClassOf(tDesign), hFont),
        lMaxLength(tDesign.iMaxLength),
        lBackColor(tDesign.lBackColor) {
    if (lMaxLength > 0)
      ::SendMessageA(Handle(), EM_SETLIMITTEXT, static_cast<WPARAM>(lMaxLength), 0);
    if (lBackColor >= 0) hBackground.reset(::CreateSolidBrush(BackColor()));
    if (tDesign.bListingFont) StandOverListLines(hFont);
  }

  std::string Text() const override {
    std::string sText(static_cast<std::size_t>(::GetWindowTextLengthA(Handle())) + 1, '\0');
    const int lLength = ::GetWindowTextA(Handle(), sText.data(), static_cast<int>(sText.size()));
    sText.resize(static_cast<std::size_t>(lLength));
    return sText;
  }

  void SetText(std::string_view sText) override {
    std::wstring sWide = WideOf(sText);
    if (lMaxLength > 0) sWide.resize(std::min(sWide.size(), static_cast<std::size_t>(lMaxLength)));
    ::SetWindowTextW(Handle(), sWide.c_str());
  }

  void SelectAll() override { ::SendMessageA(Handle(), EM_SETSEL, 0, -1); }

  /// MSAA calls an edit control by the label right before it in the z-order. Where the design has
  /// no such label, this one without a size is it.
  void SetAccessibleName(std::string_view sName) override {
    if (hName == nullptr) {
      hName = ::CreateWindowExW(0, L"STATIC", nullptr, WS_CHILD | WS_VISIBLE | SS_NOPREFIX, 0, 0, 0,
                                0, frm.Window(), nullptr, nullptr, nullptr);
    }
    ::SetWindowTextW(hName, WideOf(sName).c_str());
    KeepNameBefore();
    ::NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, Handle(), OBJID_CLIENT, CHILDID_SELF);
  }

  void BringToFront() override {
    ControlWindow::BringToFront();
    KeepNameBefore();
  }

  HBRUSH Background(HDC hSurface) const override {
    if (hBackground == nullptr) return nullptr;
    ::SetTextColor(hSurface, RGB(0, 0, 0));
    ::SetBkColor(hSurface, BackColor());
    return hBackground.get();
  }

 protected:
  LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam) override {
    if (uMsg == WM_PAINT && !Enabled()) {
      DrawDisabled();
      return 0;
    }
    // Not every system hands on what a field of one line has no use for.
    if (uMsg == WM_MOUSEWHEEL) return ::SendMessageW(frm.Window(), uMsg, wParam, lParam);
    if (uMsg == WM_PASTE && lMaxLength != 0) {
      Insert(ClipboardText());
      return 0;
    }
    const LRESULT lResult = ControlWindow::OnMessage(uMsg, wParam, lParam);
    // What the control draws by itself is in its own colours.
    if ((uMsg == WM_ENABLE || uMsg == WM_SETTEXT) && !Enabled())
      ::InvalidateRect(Handle(), nullptr, TRUE);
    return lResult;
  }

 private:
  /// The control itself draws disabled text in the system's grey, whatever it is told, and that
  /// can hardly be read.
  void DrawDisabled() const {
    PAINTSTRUCT tPaint = {};
    const HDC hSurface = ::BeginPaint(Handle(), &tPaint);
    const HGDIOBJ hBefore = ::SelectObject(
        hSurface, reinterpret_cast<HGDIOBJ>(::SendMessageA(Handle(), WM_GETFONT, 0, 0)));
    const Color tBack = SystemColor(COLOR_BTNFACE);
    ::SetBkColor(hSurface, Shown(tBack));
    ::SetTextColor(hSurface, Shown(DisabledOn(tBack, SystemColor(COLOR_BTNTEXT),
                                              SystemColor(COLOR_GRAYTEXT))));
    RECT tInside = {};
    RECT tText = {};
    ::GetClientRect(Handle(), &tInside);
    ::SendMessageA(Handle(), EM_GETRECT, 0, reinterpret_cast<LPARAM>(&tText));
    const std::wstring sText = WideOf(Text());
    ::ExtTextOutW(hSurface, tText.left, tText.top, ETO_OPAQUE | ETO_CLIPPED, &tInside, sText.data(),
                  static_cast<UINT>(sText.size()), nullptr);
    ::SelectObject(hSurface, hBefore);
    ::EndPaint(Handle(), &tPaint);
  }

  void Insert(std::wstring sText) {
    DWORD lStart = 0;
    DWORD lEnd = 0;
    ::SendMessageA(Handle(), EM_GETSEL, reinterpret_cast<WPARAM>(&lStart),
                   reinterpret_cast<LPARAM>(&lEnd));
    const auto lKept = static_cast<std::size_t>(::GetWindowTextLengthW(Handle())) - (lEnd - lStart);
    const std::size_t lRoom = static_cast<std::size_t>(lMaxLength) - lKept;
    if (lKept == 0 || sText.size() > lRoom) {
      constexpr const wchar_t* BLANKS = L" \t\r\n";
      sText.erase(0, sText.find_first_not_of(BLANKS));
      sText.erase(sText.find_last_not_of(BLANKS) + 1);
    }
    sText.resize(std::min(sText.size(), lRoom));
    ::SendMessageW(Handle(), EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(sText.c_str()));
  }

  std::wstring ClipboardText() const {
    std::wstring sText;
    if (::OpenClipboard(Handle()) == 0) return sText;  // another program has it open
    const HANDLE hText = ::GetClipboardData(CF_UNICODETEXT);
    if (const auto* pText =
            static_cast<const wchar_t*>(hText != nullptr ? ::GlobalLock(hText) : nullptr)) {
      sText.assign(pText, ::wcsnlen(pText, ::GlobalSize(hText) / sizeof(wchar_t)));
      ::GlobalUnlock(hText);
    }
    ::CloseClipboard();
    return sText;
  }

  /// An editor in place has a thin frame, other text boxes the usual one.
  static ControlClass ClassOf(const ControlDesign& tDesign) {
    return tDesign.bListingFont ? ControlClass{"EDIT", ES_AUTOHSCROLL | WS_BORDER, 0}
                                : ControlClass{"EDIT", ES_AUTOHSCROLL, WS_EX_CLIENTEDGE};
  }

  COLORREF BackColor() const { return static_cast<COLORREF>(lBackColor); }

  /// Has an editor's text begin exactly at its place's left edge, over the list's columns, and as
  /// far below its top edge as the list's lines stand below theirs, which is the list's border.
  void StandOverListLines(HFONT hFont) {
    // Only where it is as high as a line and its frame does the text stand below the frame.
    const LONG lHeight = 2 * MeasuringSurface(hFont).Metrics().tmHeight;
    ::SetWindowPos(Handle(), nullptr, 0, 0, lHeight, lHeight,
                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    ::SendMessageA(Handle(), EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    RECT tWindow = {};
    RECT tText = {};
    ::GetWindowRect(Handle(), &tWindow);
    ::SendMessageA(Handle(), EM_GETRECT, 0, reinterpret_cast<LPARAM>(&tText));
    POINT tStart = {tText.left, tText.top};
    ::ClientToScreen(Handle(), &tStart);
    SetOutset({tStart.x - tWindow.left, tStart.y - tWindow.top - ::GetSystemMetrics(SM_CYEDGE)});
  }

  void KeepNameBefore() const {
    constexpr UINT ORDER_ONLY = SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE;
    if (hName == nullptr) return;
    ::SetWindowPos(hName, Handle(), 0, 0, 0, 0, ORDER_ONLY);
    ::SetWindowPos(Handle(), hName, 0, 0, 0, 0, ORDER_ONLY);
  }

  LONG lMaxLength;
  std::int32_t lBackColor;
  OwnedBrush hBackground;
  HWND hName = nullptr;  // which goes with the form's window
};

}  // namespace

std::unique_ptr<ControlWindow> BuildControl(WinForm& frm, const ControlDesign& tDesign, HFONT hFont,
                                            HFONT hListingFont) {
  const HFONT hOwnFont = tDesign.bListingFont ? hListingFont : hFont;
  switch (tDesign.eKind) {
    case ControlKind::TextBox:
      return std::make_unique<EditWindow>(frm, tDesign, hOwnFont);
    case ControlKind::Button:
      return std::make_unique<LabelOrButton>(frm, tDesign, ControlClass{"BUTTON", BS_PUSHBUTTON, 0},
                                             hOwnFont);
    case ControlKind::CheckBox:
      return std::make_unique<CheckBoxWindow>(frm, tDesign,
                                              ControlClass{"BUTTON", BS_AUTOCHECKBOX, 0}, hOwnFont);
    case ControlKind::ListBox:
      return std::make_unique<ListWindow>(frm, tDesign, hOwnFont);
    default:
      return std::make_unique<LabelOrButton>(frm, tDesign, ControlClass{"STATIC", SS_NOPREFIX, 0},
                                             hOwnFont);
  }
}

}  // namespace platform::win32
