#include "platform/win32/WinForm.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "platform/win32/Resources.h"
#include "platform/win32/SystemHandles.h"
#include "platform/win32/WinFileDialog.h"
#include "platform/win32/WinListBox.h"

namespace platform::win32 {

namespace {

constexpr const wchar_t* WINDOW_CLASS = L"VarnelForm";
constexpr const wchar_t* DIALOG_CLASS = L"#32770";  // message boxes and common dialogs
constexpr WPARAM SYSTEM_COMMAND = 0xFFF0;           // the bits of WM_SYSCOMMAND that tell which
constexpr DWORD WINDOW_STYLE = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
constexpr UINT_PTR TIMER = 1;
constexpr UINT DIALOG_PATIENCE = 50;  // milliseconds between the answers to nested dialogs

// Messages that a form posts to itself, for events that arise where nothing may be disturbed, as in
// the middle of a change of focus.
constexpr UINT MSG_ACTIVATE = WM_APP;
constexpr UINT MSG_GOT_FOCUS = WM_APP + 1;   // wParam: the control
constexpr UINT MSG_LOST_FOCUS = WM_APP + 2;  // wParam: the control

/// Only designed captions have an access key.
std::wstring WithoutAccessKey(std::wstring sCaption) {
  for (std::size_t lAt = 0; (lAt = sCaption.find(L'&', lAt)) != std::wstring::npos; lAt += 2)
    sCaption.insert(lAt, 1, L'&');
  return sCaption;
}

/// The dialogs that belong to a window and wait for an answer; an answered one is hidden, but its
/// call comes back only after those that began later.
std::vector<HWND> DialogsOf(HWND hOwner) {
  std::pair<HWND, std::vector<HWND>> tSearch{hOwner, {}};
  const auto fnNote = [](HWND hWnd, LPARAM pSearch) -> BOOL {
    auto& [hWanted, ahFound] = *reinterpret_cast<std::pair<HWND, std::vector<HWND>>*>(pSearch);
    std::array<wchar_t, 8> sClass{};
    ::GetClassNameW(hWnd, sClass.data(), static_cast<int>(sClass.size()));
    if (::GetWindow(hWnd, GW_OWNER) == hWanted && ::IsWindowVisible(hWnd) != 0 &&
        sClass.data() == std::wstring_view(DIALOG_CLASS)) {
      ahFound.push_back(hWnd);
    }
    return TRUE;
  };
  ::EnumThreadWindows(::GetCurrentThreadId(), fnNote, reinterpret_cast<LPARAM>(&tSearch));
  return tSearch.second;
}

/// The window that takes the keys for a window: the last of the dialogs that stand one on the other
/// in front of it, or itself.
HWND FrontOf(HWND hWnd) {
  for (std::vector<HWND> ahDialog; !(ahDialog = DialogsOf(hWnd)).empty();) hWnd = ahDialog.front();
  return hWnd;
}

}  // namespace

WinForm::WinForm(WinToolkit& tItsToolkit, const FormDesign& tDesign,
                 std::shared_ptr<FormEvents> pLogic)
    : FormCore(tItsToolkit, tDesign.sName, std::move(pLogic)),
      tToolkit(tItsToolkit),
      tSmallest(tDesign.tSmallest),
      lGreatestWidth(tDesign.lGreatestWidth),
      lTimerInterval(static_cast<UINT>(tDesign.iTimerInterval)),
      tMenus(tDesign.atMenu),
      hFont(FormFont(tDesign)),
      hListingFont(ListingFont(tDesign)) {
  static const ATOM iClass = [] {
    WNDCLASSEXW tClass = {};
    tClass.cbSize = sizeof(tClass);
    tClass.lpfnWndProc = Received;
    tClass.hInstance = ::GetModuleHandleW(nullptr);
    tClass.hIcon = ::LoadIconW(tClass.hInstance, MAKEINTRESOURCEW(PROGRAM_ICON));
    tClass.hCursor = ::LoadCursorA(nullptr, IDC_ARROW);
    tClass.hbrBackground = ::GetSysColorBrush(COLOR_BTNFACE);
    tClass.lpszClassName = WINDOW_CLASS;
    return ::RegisterClassExW(&tClass);
  }();
  static_cast<void>(iClass);
  ::CreateWindowExW(0, WINDOW_CLASS, WideOf(tDesign.sCaption).c_str(), WINDOW_STYLE, CW_USEDEFAULT,
                    CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, tMenus.Bar(),
                    ::GetModuleHandleW(nullptr), this);
  if (hWnd == nullptr) throw std::runtime_error("Windows has no room for another window");
  std::map<std::int16_t, ControlWindow*> colTab;
  for (const ControlDesign& tControl : tDesign.atControl) {
    auto pControl = BuildControl(*this, tControl, hFont.get(), hListingFont.get());
    if (tControl.iTabOrder >= 0) colTab.emplace(tControl.iTabOrder, pControl.get());
    apControl.push_back(pControl.get());
    if (tControl.tKey.iKeyCode != 0) atButtonKey.emplace_back(tControl.tKey, pControl.get());
    AddControl(tControl.iControl, std::move(pControl));
  }
  for (const auto& [iOrder, pControl] : colTab) apTabOrder.push_back(pControl);
  // Windows hides where the focus is until it is moved by key; clicks and the program move it, too.
  ::SendMessageA(hWnd, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
}

WinForm::~WinForm() {
  Silence();
  ::SetMenu(hWnd, nullptr);  // it has an owner here
  ::DestroyWindow(hWnd);
}

std::string WinForm::Caption() const {
  std::string sCaption(static_cast<std::size_t>(::GetWindowTextLengthA(hWnd)) + 1, '\0');
  const int lLength = ::GetWindowTextA(hWnd, sCaption.data(), static_cast<int>(sCaption.size()));
  sCaption.resize(static_cast<std::size_t>(lLength));
  return sCaption;
}

void WinForm::SetCaption(std::string_view sCaption) {
  ::SetWindowTextW(hWnd, WideOf(sCaption).c_str());
}

// ---- Place --------------------------------------------------------------------------------------

FormCore::PixelPlace WinForm::OuterPlace() const {
  RECT tPlace = {};
  ::GetWindowRect(hWnd, &tPlace);
  return {tPlace.left, tPlace.top, tPlace.right - tPlace.left, tPlace.bottom - tPlace.top};
}

/// A minimized or maximized window keeps its place.
void WinForm::SetOuterPlace(const PixelPlace& tPlace) {
  if (IsUnloaded() || ::IsIconic(hWnd) != 0 || ::IsZoomed(hWnd) != 0) return;
  ::SetWindowPos(hWnd, nullptr, tPlace.lLeft, tPlace.lTop, tPlace.lWidth, tPlace.lHeight,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

Size WinForm::InnerPixels() const {
  RECT tInside = {};
  ::GetClientRect(hWnd, &tInside);
  return {tInside.right, tInside.bottom};
}

WindowState WinForm::State() const {
  if (!WasShown()) return eFirstState;
  if (::IsIconic(hWnd) != 0) return WindowState::Minimized;
  return ::IsZoomed(hWnd) != 0 ? WindowState::Maximized : WindowState::Normal;
}

void WinForm::SetState(WindowState eState) {
  if (IsUnloaded() || eState == State()) return;
  constexpr std::array<int, 3> alCommand = {SW_SHOWNORMAL, SW_MINIMIZE, SW_MAXIMIZE};
  eFirstState = eState;
  if (WasShown()) ::ShowWindow(hWnd, alCommand.at(static_cast<std::size_t>(eState)));
}

// ---- Showing ------------------------------------------------------------------------------------

void WinForm::Show() {
  if (IsUnloaded()) return;
  constexpr std::array<int, 3> alCommand = {SW_SHOW, SW_SHOWMINIMIZED, SW_SHOWMAXIMIZED};
  const int lCommand = alCommand.at(static_cast<std::size_t>(State()));
  NoteShown();
  ::ShowWindow(hWnd, lCommand);
  ReportResize();
}

void WinForm::BringToTop() {
  if (!IsUnloaded()) ::BringWindowToTop(hWnd);
}

void WinForm::SetFocus() {
  if (IsUnloaded()) return;
  ::SetForegroundWindow(FrontOf(hWnd));  // a form with a dialog is disabled
}

void WinForm::SetMousePointer(MousePointer ePointer) {
  bHourglass = ePointer == MousePointer::Hourglass;
  // The pointer changes when it moves next; one that rests over the form is told at once.
  POINT tPointer = {};
  ::GetCursorPos(&tPointer);
  const HWND hUnder = ::WindowFromPoint(tPointer);
  if (hUnder != nullptr && ::GetAncestor(hUnder, GA_ROOT) == hWnd) {
    ::SendMessageA(hUnder, WM_SETCURSOR, reinterpret_cast<WPARAM>(hUnder),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  }
}

double WinForm::TextHeight(std::string_view sText) const {
  const auto lLines = 1 + std::ranges::count(sText, '\n');
  return static_cast<double>(lLines) * MeasuringSurface(hFont.get()).Metrics().tmHeight *
         TwipsPerPixel();
}

void WinForm::SetTimerEnabled(bool bEnabled) {
  if (IsUnloaded()) return;
  bTimerEnabled = bEnabled;
  if (bEnabled) {
    ::SetTimer(hWnd, TIMER, lTimerInterval, nullptr);
  } else {
    ::KillTimer(hWnd, TIMER);
  }
}

void WinForm::SetIcon(IconKind eKind, std::uint32_t hIcon) {
  OwnedIcon hNew(HandleOf<HICON>(hIcon));
  ::SendMessageA(hWnd, WM_SETICON, static_cast<WPARAM>(eKind),
                 reinterpret_cast<LPARAM>(hNew.get()));
  ahIcon.at(static_cast<std::size_t>(eKind)) = std::move(hNew);
}

// ---- Keys ---------------------------------------------------------------------------------------

bool WinForm::RunDesignedKey(WPARAM wKey) {
  if (::GetKeyState(VK_MENU) < 0 || ::GetKeyState(VK_SHIFT) < 0) return false;
  const KeyDesign tKey{static_cast<std::int16_t>(wKey), ::GetKeyState(VK_CONTROL) < 0};
  if (const WORD iCommand = tMenus.CommandOf(tKey); iCommand != 0) {
    ReportMenuClick(iCommand);
    return true;
  }
  const auto itButton =
      std::ranges::find(atButtonKey, tKey, &std::pair<KeyDesign, ControlWindow*>::first);
  if (itButton == atButtonKey.end()) return false;
  // As a click does, the key first leaves the field that was edited: that is posted, and so is the
  // press behind it.
  if (itButton->second->TakesFocus()) {
    FocusOn(*itButton->second);
    ::PostMessageW(itButton->second->Handle(), BM_CLICK, 0, 0);
  }
  return true;
}

// ---- Focus --------------------------------------------------------------------------------------

void WinForm::FocusOn(const ControlWindow& tControl) {
  if (IsUnloaded()) return;
  // In a window that is not the active one this would take the focus from the one that is, a
  // message box of this form among them; a minimized one's controls cannot have it.
  if (::GetActiveWindow() == hWnd && ::IsIconic(hWnd) == 0) {
    ::SetFocus(tControl.Handle());
  } else {
    pWanted = &tControl;
  }
}

void WinForm::FocusNext(const ControlWindow& tControl, bool bBackward) {
  auto apOrder = apTabOrder;
  // One that Tab does not reach, such as an editor in place, stands behind the last.
  auto itControl = std::ranges::find(apOrder, &tControl);
  if (itControl != apOrder.end() && !bBackward) ++itControl;
  // First those on the way to the end of the order, then those from its other end.
  std::rotate(apOrder.begin(), itControl, apOrder.end());
  if (bBackward) std::ranges::reverse(apOrder);
  const auto itNext = std::ranges::find_if(
      apOrder, [&](const auto* pOther) { return pOther != &tControl && pOther->TakesFocus(); });
  if (itNext != apOrder.end()) FocusOn(**itNext);
}

void WinForm::YieldFocus(const ControlWindow& tControl) {
  if ((pWanted != nullptr ? pWanted : pFocused) != &tControl) return;
  pWanted = nullptr;
  pFocused = nullptr;
  const auto itList = std::ranges::find_if(apControl, [&](const ControlWindow* pOther) {
    return pOther != &tControl && dynamic_cast<const ListWindow*>(pOther) != nullptr &&
           pOther->TakesFocus();
  });
  if (itList != apControl.end()) {
    FocusOn(**itList);
  } else if (::GetActiveWindow() == hWnd) {
    ::SetFocus(nullptr);
  }
}

void WinForm::FocusArrived(const ControlWindow& tControl) {
  const bool bWanted = std::exchange(pWanted, nullptr) == &tControl;
  const ControlWindow* const pBefore = std::exchange(pFocused, &tControl);
  if (pBefore == &tControl) return;
  if (pBefore != nullptr && !bWanted) {
    ::PostMessageW(hWnd, MSG_LOST_FOCUS, static_cast<WPARAM>(pBefore->Number()), 0);
  }
  ::PostMessageW(hWnd, MSG_GOT_FOCUS, static_cast<WPARAM>(tControl.Number()), 0);
}

void WinForm::RestoreFocus() {
  const ControlWindow* const pControl = pWanted != nullptr ? pWanted : pFocused;
  if (pControl != nullptr && pControl->TakesFocus()) ::SetFocus(pControl->Handle());
}

// ---- Menus and dialogs --------------------------------------------------------------------------

void WinForm::LoadMenuItem(std::int16_t iMenu, std::int16_t iIndex) {
  tMenus.LoadItem(iMenu, iIndex);
}

void WinForm::UnloadMenuItem(std::int16_t iMenu, std::int16_t iIndex) {
  tMenus.UnloadItem(iMenu, iIndex);
}

void WinForm::SetMenuCaption(std::int16_t iMenu, std::int16_t iIndex, std::string_view sCaption) {
  if (auto* const pItem = tMenus.Find(iMenu, iIndex))
    pItem->sCaption = WithoutAccessKey(WideOf(sCaption));
}

void WinForm::SetMenuChecked(std::int16_t iMenu, std::int16_t iIndex, bool bChecked) {
  if (auto* const pItem = tMenus.Find(iMenu, iIndex)) pItem->bChecked = bChecked;
}

void WinForm::SetMenuVisible(std::int16_t iMenu, std::int16_t iIndex, bool bVisible) {
  if (auto* const pItem = tMenus.Find(iMenu, iIndex)) pItem->bVisible = bVisible;
}

void WinForm::ShowPopupMenu(std::int16_t iMenu, std::optional<TwipsPoint> tAt) {
  const HMENU hMenu = tMenus.Handle(iMenu);
  if (hMenu == nullptr || IsUnloaded()) return;
  const auto pKeep = shared_from_this();
  POINT tCorner = {};
  if (tAt.has_value()) {
    tCorner = {PixelsOf(tAt->lLeft), PixelsOf(tAt->lTop)};
    ::ClientToScreen(hWnd, &tCorner);
  } else {
    ::GetCursorPos(&tCorner);
  }
  tMenus.Fill(hMenu);
  const BOOL lCommand = ::TrackPopupMenu(hMenu, TPM_RIGHTBUTTON | TPM_RETURNCMD, tCorner.x,
                                         tCorner.y, 0, hWnd, nullptr);
  if (lCommand != 0) ReportMenuClick(static_cast<WORD>(lCommand));
}

FileDialogResult WinForm::ShowFileDialog(const FileDialogRequest& tRequest) {
  if (IsUnloaded()) return {};
  const auto pKeep = shared_from_this();
  FileDialogResult tResult = RunFileDialog(hWnd, tRequest);
  return IsUnloaded() ? FileDialogResult() : tResult;
}

/// Has all that is modal to this form come back, answered as by a button: a question has a No. A
/// dialog with a message box of its own must not end under that: the last one is answered first,
/// and when it has gone, by the timer, the one below.
void WinForm::CloseDialogs() {
  // "Menus and Other Resources", WM_CANCELMODE: what the default procedure does is to end menus.
  ::SendMessageW(hWnd, WM_CANCELMODE, 0, 0);
  const std::vector<HWND> ahDialog = DialogsOf(hWnd);
  for (const HWND hDialog : ahDialog) {
    const HWND hFront = FrontOf(hDialog);
    const bool bQuestion = ::GetDlgItem(hFront, IDNO) != nullptr;
    ::PostMessageW(hFront, WM_COMMAND, bQuestion ? IDNO : IDCANCEL, 0);
  }
  if (ahDialog.empty()) {
    ::KillTimer(hWnd, TIMER);
  } else {
    ::SetTimer(hWnd, TIMER, DIALOG_PATIENCE, nullptr);
  }
}

void WinForm::Vanish() {
  CloseDialogs();
  ::ShowWindow(hWnd, SW_HIDE);
}

// ---- Messages -----------------------------------------------------------------------------------

LRESULT CALLBACK WinForm::Received(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) {
  if (uMsg == WM_NCCREATE) {
    auto* const frmNew =
        static_cast<WinForm*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
    frmNew->hWnd = hWnd;
    ::SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(frmNew));
  }
  auto* const frm = reinterpret_cast<WinForm*>(::GetWindowLongPtrW(hWnd, GWLP_USERDATA));
  if (frm != nullptr && !frm->IsUnloaded()) {
    try {
      return frm->OnMessage(uMsg, wParam, lParam);
    } catch (const std::bad_alloc&) {  // no error may cross the system's calls
      return 0;
    }
  }
  if (frm != nullptr && uMsg == WM_TIMER) frm->CloseDialogs();
  // An unloaded form's window goes with the form.
  return uMsg == WM_CLOSE ? 0 : ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

LRESULT WinForm::OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam) {
  const auto iNumber = static_cast<std::int16_t>(wParam);
  switch (uMsg) {
    case MSG_ACTIVATE:
      Deliver([](FormEvents& tEvents) { tEvents.Activate(); });
      return 0;
    case MSG_GOT_FOCUS:
      Deliver([=](FormEvents& tEvents) { tEvents.GotFocus(iNumber); });
      return 0;
    case MSG_LOST_FOCUS:
      Deliver([=](FormEvents& tEvents) { tEvents.LostFocus(iNumber); });
      return 0;
    case WM_ACTIVATE:
      if (LOWORD(wParam) != WA_INACTIVE) ::PostMessageW(hWnd, MSG_ACTIVATE, 0, 0);
      break;
    case WM_SETFOCUS:
      RestoreFocus();
      return 0;
    case WM_KEYDOWN:  // of a form of which no control has the focus
      if (RunDesignedKey(wParam)) return 0;
      break;
    case WM_SYSCOMMAND:
      if ((wParam & SYSTEM_COMMAND) == SC_SIZE) {
        bSizing = true;  // until the user lets go of the edge
        const LRESULT lResult = ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
        bSizing = false;
        return lResult;
      }
      break;
    case WM_GETMINMAXINFO:
      LimitTracking(*reinterpret_cast<MINMAXINFO*>(lParam));
      return 0;
    case WM_SIZE:
      ReportResize();
      return 0;
    case WM_TIMER:
      if (bTimerEnabled) Deliver([](FormEvents& tEvents) { tEvents.Timer(); });
      return 0;
    case WM_COMMAND:
      OnCommand(wParam, lParam);
      return 0;
    case WM_INITMENUPOPUP:
      tMenus.Fill(reinterpret_cast<HMENU>(wParam));
      return 0;
    case WM_DRAWITEM:
      if (const auto* lst = dynamic_cast<ListWindow*>(ControlAt(LOWORD(wParam))))
        lst->Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
      return TRUE;
    case WM_CTLCOLOREDIT:
      if (const auto* pControl =
              ControlAt(static_cast<WORD>(::GetDlgCtrlID(reinterpret_cast<HWND>(lParam))))) {
        if (const HBRUSH hBrush = pControl->Background(reinterpret_cast<HDC>(wParam)))
          return reinterpret_cast<LRESULT>(hBrush);
      }
      break;
    case WM_SETCURSOR:
      if (bHourglass && LOWORD(lParam) == HTCLIENT) {
        ::SetCursor(::LoadCursorA(nullptr, IDC_WAIT));
        return TRUE;
      }
      break;
    case WM_MOUSEWHEEL:
      if (OnWheel(wParam, lParam)) return 0;
      break;
    case WM_ENDSESSION:
      if (wParam != FALSE) {
        tToolkit.NoteEndOfProgram();
        Unload();
      }
      return 0;
    case WM_CLOSE:
      Unload();
      return 0;
    default:
      break;
  }
  return ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

void WinForm::OnCommand(WPARAM wParam, LPARAM lParam) {
  if (lParam == 0) {
    ReportMenuClick(LOWORD(wParam));
  } else if (auto* const pControl = ControlAt(LOWORD(wParam))) {
    pControl->Notified(HIWORD(wParam));
  }
}

void WinForm::ReportMenuClick(WORD iCommand) {
  Deliver([tEntry = WinMenus::EntryOf(iCommand)](FormEvents& tEvents) {
    tEvents.MenuClick(tEntry.first, tEntry.second);
  });
}

/// Neither the user nor the program makes the window smaller than its design allows. The user drags
/// it no wider, either; the limit would also hold for a maximized window, which is to be as wide as
/// the screen.
void WinForm::LimitTracking(MINMAXINFO& tLimits) const {
  RECT tOuter = {0, 0, PixelsOf(tSmallest.lWidth), PixelsOf(tSmallest.lHeight)};
  ::AdjustWindowRect(&tOuter, WINDOW_STYLE, tMenus.Bar() != nullptr ? TRUE : FALSE);
  tLimits.ptMinTrackSize = {tOuter.right - tOuter.left, tOuter.bottom - tOuter.top};
  if (bSizing && lGreatestWidth > 0) tLimits.ptMaxTrackSize.x = PixelsOf(lGreatestWidth);
}

/// A wheel turned over a control that stands on a list, such as an in-place editor, is the list's.
bool WinForm::OnWheel(WPARAM wParam, LPARAM lParam) {
  const POINT tPointer = {static_cast<std::int16_t>(LOWORD(lParam)),
                          static_cast<std::int16_t>(HIWORD(lParam))};
  for (const ControlWindow* const pControl : apControl) {
    RECT tPlace = {};
    ::GetWindowRect(pControl->Handle(), &tPlace);
    if (dynamic_cast<const ListWindow*>(pControl) == nullptr || bPassingWheel ||
        !pControl->Visible() || ::PtInRect(&tPlace, tPointer) == 0) {
      continue;
    }
    bPassingWheel = true;  // a list hands back what it has no use for
    ::SendMessageA(pControl->Handle(), WM_MOUSEWHEEL, wParam, lParam);
    bPassingWheel = false;
    return true;
  }
  return false;
}

ControlWindow* WinForm::ControlAt(WORD iControl) const {
  const auto itControl = std::ranges::find(apControl, iControl, &ControlWindow::Number);
  return itControl == apControl.end() ? nullptr : *itControl;
}

}  // namespace platform::win32
