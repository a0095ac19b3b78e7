#pragma once

#include "platform/Colors.h"
#include "platform/Toolkit.h"
#include "platform/win32/WinControls.h"

namespace platform::win32 {

class AccessibleList;

/// A system list box that keeps nothing but the number of lines (LBS_NODATA) and has each visible
/// one drawn here, every byte in a column of its own.
class ListWindow final : public ListBox, public ControlWindow {
 public:
  ListWindow(WinForm& frmOwner, const ControlDesign& tDesign, HFONT hItsFont);
  ~ListWindow() override;
  ListWindow(const ListWindow&) = delete;
  ListWindow& operator=(const ListWindow&) = delete;

  void SetLines(const ListLines* pNewLines) override;
  void LinesReplaced(std::int32_t lFirst, std::int32_t lRemoved, std::int32_t lInserted) override;
  std::int32_t SelectedIndex() const override;
  void SetSelectedIndex(std::int32_t lIndex) override;
  std::int32_t TopIndex() const override;
  void SetTopIndex(std::int32_t lIndex) override;
  std::int32_t LeftOffset() const override;
  void ScrollToLeft() override;
  std::int32_t InnerHeight() const override;
  std::int32_t ItemHeightPixels() const override;
  std::uint32_t ItemFromPoint(std::int32_t lXPixels, std::int32_t lYPixels) const override;
  double TextWidth(std::string_view sText) const override;
  std::uint32_t WindowHandle() const override;

  void Notified(WORD iCode) override;
  void Draw(const DRAWITEMSTRUCT& tItem) const;

  std::int32_t LineCount() const;
  std::string_view Line(std::int32_t lIndex) const { return pLines->Line(lIndex); }
  RECT PlaceOfLine(std::int32_t lIndex) const;  ///< in the client area, or beyond it
  void Choose(std::int32_t lIndex);             ///< as the user does, and into view

 protected:
  LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam) override;

 private:
  std::int32_t Ask(UINT uMsg, std::int32_t lArgument = 0) const;
  /// Columns of the longest of some lines.
  std::int32_t Longest(std::int32_t lFirst, std::int32_t lCount) const;
  std::int32_t Extent() const;  // width of the longest line in pixels
  void GoToLineTyped(char bCharacter);
  /// @param lFirst, lEnd  the changed lines, up to but not including lEnd
  void Show(std::int32_t lTop, std::int32_t lSelected, std::int32_t lFirst, std::int32_t lEnd);
  void DrawLine(HDC hSurface, const RECT& tLine, std::string_view sLine,
                const LineColors& tColors) const;

  HFONT hFont;
  const ListLines* pLines = nullptr;
  AccessibleList* pAccessible = nullptr;  // once a tool has asked
  int lColumn;                            // width of a column in pixels
  std::int32_t lLongest = 0;              // columns of the longest line
};

}  // namespace platform::win32
