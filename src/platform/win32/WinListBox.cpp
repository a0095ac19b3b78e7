#include "platform/win32/WinListBox.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/ListText.h"
#include "platform/win32/SystemHandles.h"
#include "platform/win32/WinAccessible.h"
#include "platform/win32/WinColors.h"
#include "platform/win32/WinForm.h"
#include "platform/win32/WinMetrics.h"

namespace platform::win32 {

namespace {

constexpr ControlClass LIST_CLASS = {
    "LISTBOX",
    LBS_OWNERDRAWFIXED | LBS_NODATA | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_HSCROLL,
    WS_EX_CLIENTEDGE};

constexpr std::int32_t MARK_TWIPS = 30;

LineColors ColorsOf(LineState eState) {
  return LineColorsOf({SystemColor(COLOR_WINDOW), SystemColor(COLOR_WINDOWTEXT),
                       SystemColor(COLOR_HIGHLIGHT), SystemColor(COLOR_HIGHLIGHTTEXT)},
                      eState);
}

/// Distance of the lines' text from the left edge of the list's inside.
int TextLeft() { return std::max(0, PixelsOf(LIST_TEXT_LEFT) - ::GetSystemMetrics(SM_CXEDGE)); }

}  // namespace

ListWindow::ListWindow(WinForm& frmOwner, const ControlDesign& tDesign, HFONT hItsFont)
    : ControlWindow(frmOwner, tDesign, LIST_CLASS, hItsFont),
      hFont(hItsFont),
      lColumn(ColumnWidth(hFont)) {
  ::SendMessageA(Handle(), LB_SETITEMHEIGHT, 0, MeasuringSurface(hFont).Metrics().tmHeight);
}

ListWindow::~ListWindow() {
  if (pAccessible == nullptr) return;
  pAccessible->Disconnect();
  pAccessible->Release();
}

std::int32_t ListWindow::Ask(UINT uMsg, std::int32_t lArgument) const {
  // The number of a line may have 16 bits set; only -1 is to have more.
  return static_cast<std::int32_t>(
      ::SendMessageA(Handle(), uMsg, static_cast<WPARAM>(lArgument), 0));
}

// ---- Lines, selection and top line --------------------------------------------------------------

void ListWindow::SetLines(const ListLines* pNewLines) {
  pLines = pNewLines;
  lLongest = Longest(0, LineCount());
  Show(0, -1, 0, std::numeric_limits<std::int32_t>::max());
  ::NotifyWinEvent(EVENT_OBJECT_REORDER, Handle(), OBJID_CLIENT, CHILDID_SELF);
}

void ListWindow::LinesReplaced(std::int32_t lFirst, std::int32_t lRemoved, std::int32_t lInserted) {
  const ReplacedLines tReplaced{lFirst, lRemoved, lInserted};
  RECT tInside = {};
  ::GetClientRect(Handle(), &tInside);
  // The line that needs the horizontal scroll bar may be among the removed.
  lLongest = Extent() > tInside.right ? Longest(0, LineCount())
                                      : std::max(lLongest, Longest(lFirst, lInserted));
  // Where as many lines stand as before, those behind stay as they are drawn.
  const bool bInPlace = lInserted == lRemoved && LineCount() == Ask(LB_GETCOUNT);
  Show(tReplaced.Moved(TopIndex()), tReplaced.MovedSelection(SelectedIndex()), lFirst,
       bInPlace ? lFirst + lInserted : std::numeric_limits<std::int32_t>::max());
  if (!bInPlace) ::NotifyWinEvent(EVENT_OBJECT_REORDER, Handle(), OBJID_CLIENT, CHILDID_SELF);
  for (std::int32_t lLine = lFirst; lLine < lFirst + lInserted; ++lLine)
    ::NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, Handle(), OBJID_CLIENT, lLine + 1);
}

std::int32_t ListWindow::LineCount() const { return pLines != nullptr ? pLines->LineCount() : 0; }

std::int32_t ListWindow::Longest(std::int32_t lFirst, std::int32_t lCount) const {
  std::int32_t lColumns = 0;
  for (std::int32_t lLine = lFirst; lLine < lFirst + lCount; ++lLine)
    lColumns = std::max(lColumns, TextColumns(pLines->Line(lLine)));
  return lColumns;
}

std::int32_t ListWindow::Extent() const { return TextLeft() + lLongest * lColumn; }

/// Tells the control of the lines there are now, and what of them to show.
void ListWindow::Show(std::int32_t lTop, std::int32_t lSelected, std::int32_t lFirst,
                      std::int32_t lEnd) {
  // Each change of the scroll bars draws them anew.
  const bool bScrollBars = LineCount() != Ask(LB_GETCOUNT) ||
                           Extent() != Ask(LB_GETHORIZONTALEXTENT) || lTop != TopIndex();
  if (bScrollBars) {
    Ask(WM_SETREDRAW, FALSE);
    Ask(LB_SETCOUNT, LineCount());
    Ask(LB_SETHORIZONTALEXTENT, Extent());
  }
  if (lSelected != SelectedIndex()) Ask(LB_SETCURSEL, lSelected);
  if (bScrollBars) {
    Ask(LB_SETTOPINDEX, lTop);
    Ask(WM_SETREDRAW, TRUE);
  }
  RECT tChanged = {};
  ::GetClientRect(Handle(), &tChanged);
  if (!bScrollBars) {
    const std::int32_t lHeight = ItemHeightPixels();
    const auto fnLineTop = [&](std::int32_t lLine) {
      const LONG lMost = tChanged.bottom / lHeight + 1;
      return std::clamp<LONG>(lLine - lTop, 0, lMost) * lHeight;
    };
    tChanged = {0, fnLineTop(lFirst), tChanged.right, fnLineTop(lEnd)};
  }
  ::InvalidateRect(Handle(), &tChanged, TRUE);
}

RECT ListWindow::PlaceOfLine(std::int32_t lIndex) const {
  RECT tLine = {};
  ::SendMessageA(Handle(), LB_GETITEMRECT, static_cast<WPARAM>(lIndex),
                 reinterpret_cast<LPARAM>(&tLine));
  return tLine;
}

void ListWindow::Choose(std::int32_t lIndex) {
  if (Ask(LB_SETCURSEL, lIndex) != LB_ERR) Report(&FormEvents::Click);
}

std::int32_t ListWindow::SelectedIndex() const { return Ask(LB_GETCURSEL); }

void ListWindow::SetSelectedIndex(std::int32_t lIndex) {
  // The control scrolls to what it selects; the form wants its line where it stands.
  const std::int32_t lTop = TopIndex();
  const bool bSelected = Ask(LB_SETCURSEL, lIndex) != LB_ERR;
  if (TopIndex() != lTop) Ask(LB_SETTOPINDEX, lTop);
  if (bSelected) Report(&FormEvents::Click);
}

std::int32_t ListWindow::TopIndex() const { return Ask(LB_GETTOPINDEX); }

void ListWindow::SetTopIndex(std::int32_t lIndex) { Ask(LB_SETTOPINDEX, lIndex); }

std::int32_t ListWindow::LeftOffset() const {
  return static_cast<std::int32_t>(::GetScrollPos(Handle(), SB_HORZ) * TwipsPerPixel());
}

void ListWindow::ScrollToLeft() { ::SendMessageA(Handle(), WM_HSCROLL, SB_LEFT, 0); }

std::int32_t ListWindow::InnerHeight() const {
  RECT tInside = {};
  ::GetClientRect(Handle(), &tInside);
  return static_cast<std::int32_t>(tInside.bottom * TwipsPerPixel());
}

std::int32_t ListWindow::ItemHeightPixels() const { return Ask(LB_GETITEMHEIGHT); }

std::uint32_t ListWindow::ItemFromPoint(std::int32_t lXPixels, std::int32_t lYPixels) const {
  const auto lFound = static_cast<std::uint32_t>(
      ::SendMessageA(Handle(), LB_ITEMFROMPOINT, 0, MAKELPARAM(lXPixels, lYPixels)));
  // Wine says of the room below the last line that it is outside; the documentation says that the
  // nearest line is meant there.
  RECT tItem = {};
  const bool bItem = ::SendMessageA(Handle(), LB_GETITEMRECT, LOWORD(lFound),
                                    reinterpret_cast<LPARAM>(&tItem)) != LB_ERR;
  return bItem && lYPixels < tItem.bottom ? lFound : lFound | 0x10000U;
}

double ListWindow::TextWidth(std::string_view sText) const {
  return static_cast<double>(sText.size()) * lColumn * TwipsPerPixel();
}

std::uint32_t ListWindow::WindowHandle() const { return NumberOf(Handle()); }

// ---- Drawing ------------------------------------------------------------------------------------

void ListWindow::Draw(const DRAWITEMSTRUCT& tItem) const {
  const auto lLine = static_cast<std::int32_t>(tItem.itemID);  // -1: an empty list with the focus
  LineState eState = LineState::Plain;
  if ((tItem.itemState & ODS_SELECTED) != 0)
    eState = ::GetFocus() == Handle() ? LineState::Selected : LineState::SelectedAway;
  const LineColors tColors = ColorsOf(eState);
  const HGDIOBJ hBefore = ::SelectObject(tItem.hDC, hFont);
  ::SetTextColor(tItem.hDC, Shown(tColors.tText));  // a focus rectangle is drawn in these, too
  ::SetBkColor(tItem.hDC, Shown(tColors.tBack));
  ::ExtTextOutW(tItem.hDC, 0, 0, ETO_OPAQUE, &tItem.rcItem, nullptr, 0, nullptr);
  if (lLine >= 0 && lLine < LineCount())
    DrawLine(tItem.hDC, tItem.rcItem, pLines->Line(lLine), tColors);
  ::SetTextColor(tItem.hDC, Shown(tColors.tText));
  if ((tItem.itemState & (ODS_FOCUS | ODS_NOFOCUSRECT)) == ODS_FOCUS)
    ::DrawFocusRect(tItem.hDC, &tItem.rcItem);
  ::SelectObject(tItem.hDC, hBefore);
}

/// Draws the visible columns of a line, which may have a hundred thousand.
void ListWindow::DrawLine(HDC hSurface, const RECT& tLine, std::string_view sLine,
                          const LineColors& tColors) const {
  RECT tInside = {};
  ::GetClientRect(Handle(), &tInside);
  const int lLeft = tLine.left + TextLeft();
  // A list that is scrolled sideways has its lines begin left of it, or its drawing surface.
  POINT tStart = {lLeft, tLine.top};
  ::LPtoDP(hSurface, &tStart, 1);
  const int lFirst = std::max(0, -static_cast<int>(tStart.x) / lColumn);
  const int lEnd = std::min(static_cast<int>(sLine.size()),
                            lFirst + static_cast<int>(tInside.right) / lColumn + 2);
  if (lFirst >= lEnd) return;
  sLine = sLine.substr(static_cast<std::size_t>(lFirst), static_cast<std::size_t>(lEnd - lFirst));
  std::wstring sShown(sLine.size(), L' ');
  std::ranges::transform(sLine, sShown.begin(), [](char bCharacter) {
    const auto bCode = static_cast<unsigned char>(bCharacter);
    return IsShownAsMark(bCode) ? L' ' : static_cast<wchar_t>(bCode);
  });
  const std::vector<INT> alWidth(sShown.size(), lColumn);
  const int lX = lLeft + lFirst * lColumn;
  const int lMode = ::SetBkMode(hSurface, TRANSPARENT);  // letters may reach into the next part
  for (int lAt = lFirst; lAt < lEnd;) {
    const ColumnRun tRun = RunAt(pLines->QuietColumns(), lAt);
    const int lRunEnd = std::min(tRun.lEnd, lEnd);
    ::SetTextColor(hSurface, Shown(tRun.bQuiet ? tColors.tQuiet : tColors.tText));
    ::ExtTextOutW(hSurface, lLeft + lAt * lColumn, tLine.top, ETO_CLIPPED, &tLine,
                  sShown.data() + (lAt - lFirst), static_cast<UINT>(lRunEnd - lAt), alWidth.data());
    lAt = lRunEnd;
  }
  ::SetBkMode(hSurface, lMode);

  const int lMark = std::max(1, PixelsOf(MARK_TWIPS));
  const OwnedBrush hBrush(::CreateSolidBrush(Shown(tColors.tQuiet)));
  for (std::size_t lAt = 0; lAt < sLine.size(); ++lAt) {
    if (!IsShownAsMark(static_cast<unsigned char>(sLine[lAt]))) continue;
    const int lMarkX = lX + static_cast<int>(lAt) * lColumn + (lColumn - lMark) / 2;
    const int lMarkY = (tLine.top + tLine.bottom - lMark) / 2;
    const RECT tMark = {lMarkX, lMarkY, lMarkX + lMark, lMarkY + lMark};
    ::FillRect(hSurface, &tMark, hBrush.get());
  }
}

// ---- Mouse --------------------------------------------------------------------------------------

void ListWindow::Notified(WORD iCode) {
  if (iCode == LBN_SELCHANGE) Report(&FormEvents::Click);
  if (iCode == LBN_DBLCLK) Report(&FormEvents::DblClick);
}

/// The system's list has no texts that a typed character could be looked for in.
void ListWindow::GoToLineTyped(char bCharacter) {
  const std::int32_t lLine =
      LineCount() > 0 ? NextLineBeginning(*pLines, SelectedIndex(), bCharacter) : -1;
  if (lLine >= 0) Choose(lLine);
}

LRESULT ListWindow::OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam) {
  if (uMsg == WM_CHAR) {
    GoToLineTyped(static_cast<char>(wParam));
    return 0;
  }
  if (uMsg == WM_GETOBJECT && static_cast<DWORD>(lParam) == static_cast<DWORD>(OBJID_CLIENT)) {
    if (pAccessible == nullptr) pAccessible = new AccessibleList(*this);
    return ::LresultFromObject(__uuidof(IAccessible), wParam, pAccessible);
  }
  const LRESULT lResult = ControlWindow::OnMessage(uMsg, wParam, lParam);
  // The selected line looks otherwise without the keyboard.
  if (uMsg == WM_SETFOCUS || uMsg == WM_KILLFOCUS) ::InvalidateRect(Handle(), nullptr, FALSE);
  std::int16_t iButton = 0;
  if (uMsg == WM_LBUTTONUP) iButton = 1;
  if (uMsg == WM_RBUTTONUP) iButton = 2;
  if (uMsg == WM_MBUTTONUP) iButton = 4;
  if (iButton != 0) {
    const int lShift = ((wParam & MK_SHIFT) != 0 ? 1 : 0) | ((wParam & MK_CONTROL) != 0 ? 2 : 0) |
                       (::GetKeyState(VK_MENU) < 0 ? 4 : 0);
    // A captured mouse may be left of or above the list: the coordinates have signs.
    const auto iX = static_cast<std::int16_t>(LOWORD(lParam));
    const auto iY = static_cast<std::int16_t>(HIWORD(lParam));
    frm.Deliver([&](FormEvents& tEvents) {
      tEvents.MouseUp(Number(), iButton, static_cast<std::int16_t>(lShift), iX * TwipsPerPixel(),
                      iY * TwipsPerPixel());
    });
  }
  return lResult;
}

}  // namespace platform::win32
