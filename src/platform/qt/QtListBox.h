#pragma once

#include <QBasicTimer>
#include <QListView>
#include <QRawFont>
#include <array>
#include <vector>

#include "platform/Colors.h"
#include "platform/Toolkit.h"
#include "platform/qt/QtControls.h"

namespace platform::qt {

class LinesModel;

/// The view of a list box: a column of lines of one height, of which only the visible ones are
/// ever asked for or drawn. Each byte of a line takes one column of a fixed-pitch font.
///
/// Of QListView it keeps the frame, the scroll bars and what assistive tools see; layout, drawing,
/// mouse and keys are its own, because QListView lays out every line after each change.
class ListView final : public QListView {
 public:
  ListView(QtForm& frmOwner, std::int16_t iItsControl, const QFont& tFont, QWidget& tParent);
  ~ListView() override;
  ListView(const ListView&) = delete;
  ListView& operator=(const ListView&) = delete;

  void SetLines(const ListLines* pLines);
  void LinesReplaced(int lFirst, int lRemoved, int lInserted);
  int Selected() const { return lSelected; }
  void Select(int lIndex);  ///< raises Click; none when there is no such line
  int Top() const;
  void SetTop(int lIndex);
  int LeftOffset() const;  ///< in pixels
  void ScrollToLeft();
  int InnerHeight() const;  ///< of the part that shows whole lines, in pixels
  int LineHeight() const { return lLineHeight; }
  double LineColumn() const { return dColumn; }             ///< width of a column in pixels
  std::uint32_t ItemFromPoint(const QPoint& tPoint) const;  ///< within the list, frame included
  std::uint32_t Handle() const { return hWnd; }

  QRect visualRect(const QModelIndex& tIndex) const override;
  void scrollTo(const QModelIndex& tIndex, ScrollHint eHint) override;
  QModelIndex indexAt(const QPoint& tPoint) const override;
  void doItemsLayout() override;

 protected:
  void currentChanged(const QModelIndex& tCurrent, const QModelIndex& tPrevious) override;
  void focusInEvent(QFocusEvent* pEvent) override;
  void updateGeometries() override;
  void scrollContentsBy(int lX, int lY) override;
  void paintEvent(QPaintEvent* pEvent) override;
  void mousePressEvent(QMouseEvent* pEvent) override;
  void mouseMoveEvent(QMouseEvent* pEvent) override;
  void mouseReleaseEvent(QMouseEvent* pEvent) override;
  void mouseDoubleClickEvent(QMouseEvent* pEvent) override;
  void keyPressEvent(QKeyEvent* pEvent) override;
  void wheelEvent(QWheelEvent* pEvent) override;
  void timerEvent(QTimerEvent* pEvent) override;

 private:
  struct Glyphs {
    std::vector<quint32> alGlyph;
    std::vector<QPointF> atPoint;  // where they go
  };

  int LineCount() const;
  int PageLines() const;  ///< whole lines that the view shows, at least 1
  int TextTop() const;    ///< where the first line begins in the viewport
  int TextLeft() const;
  int LineAt(int lY) const;  ///< may lie outside the lines
  void SetSelected(int lIndex);
  void SelectByUser(int lIndex);
  void EnsureVisible(int lIndex);
  void DragTo(const QPoint& tPoint);
  int LineTypedTo(const QKeyEvent& tKey) const;
  void UpdateLines(int lFirst, int lCount);  ///< has them drawn anew where they are visible
  void UpdateLongest(int lFirst, int lInserted);
  void DrawLine(QPainter& tPainter, std::string_view sLine, int lTop, const LineColors& tColors);

  QtForm& frm;
  std::int16_t iControl;
  LinesModel* pModel;
  std::uint32_t hWnd;
  int lLineHeight;
  int lBaseline;
  double dColumn;
  QRawFont tRawFont;
  std::array<quint32, 256> alGlyphOf;
  std::array<Glyphs, 2> atGlyphs;  // of the line being drawn: those that stand out, quiet ones
  int lSelected = -1;
  int lLongest = 0;  // columns of the longest line
  double dWheelRest = 0;
  std::uint32_t lScrollMessage = 0;  // what the scroll under way is reported as; 0: by its axis
  bool bQuietScroll = false;         // the scroll under way follows a change of the lines
  QBasicTimer tmrDrag;
  QPoint tDragPoint;
};

class QtListBox final : public ControlOn<ListBox, ListView> {
 public:
  using ControlOn::ControlOn;
  void SetLines(const ListLines* pLines) override { tWidget.SetLines(pLines); }
  void LinesReplaced(std::int32_t lFirst, std::int32_t lRemoved, std::int32_t lInserted) override {
    tWidget.LinesReplaced(lFirst, lRemoved, lInserted);
  }
  std::int32_t SelectedIndex() const override { return tWidget.Selected(); }
  void SetSelectedIndex(std::int32_t lIndex) override { tWidget.Select(lIndex); }
  std::int32_t TopIndex() const override { return tWidget.Top(); }
  void SetTopIndex(std::int32_t lIndex) override { tWidget.SetTop(lIndex); }
  std::int32_t LeftOffset() const override {
    return static_cast<std::int32_t>(tWidget.LeftOffset() * TwipsPerPixelX());
  }
  void ScrollToLeft() override { tWidget.ScrollToLeft(); }
  std::int32_t InnerHeight() const override {
    return static_cast<std::int32_t>(tWidget.InnerHeight() * TwipsPerPixelY());
  }
  std::int32_t ItemHeightPixels() const override { return tWidget.LineHeight(); }
  std::uint32_t ItemFromPoint(std::int32_t lXPixels, std::int32_t lYPixels) const override {
    return tWidget.ItemFromPoint({lXPixels, lYPixels});
  }
  double TextWidth(std::string_view sText) const override {
    return static_cast<double>(sText.size()) * tWidget.LineColumn() * TwipsPerPixelX();
  }
  std::uint32_t WindowHandle() const override { return tWidget.Handle(); }
};

}  // namespace platform::qt
