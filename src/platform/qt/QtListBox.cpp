#include "platform/qt/QtListBox.h"

#include <QAbstractListModel>
#include <QFontMetrics>
#include <QGlyphRun>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "platform/ListText.h"
#include "platform/qt/QtAccessible.h"
#include "platform/qt/QtForm.h"
#include "platform/qt/QtStyle.h"

namespace platform::qt {

namespace {

// What a scroll is reported as, by the Windows message numbers.
constexpr std::uint32_t WM_HSCROLL = 0x114;
constexpr std::uint32_t WM_VSCROLL = 0x115;
constexpr std::uint32_t WM_MOUSEWHEEL = 0x20A;

constexpr int DRAG_SCROLL_MS = 50;
constexpr double WHEEL_STEP = 120;  // a wheel's notch, in eighths of a degree

constexpr std::uint32_t NO_ITEM = 0x1FFFF;  // LB_ITEMFROMPOINT's answer of an empty list

/// The font's glyph of each Latin-1 character; 0: it has none.
std::array<quint32, 256> GlyphsOf(const QRawFont& tRawFont) {
  std::array<quint32, 256> alGlyph{};
  for (std::size_t lCode = 0; lCode < alGlyph.size(); ++lCode) {
    const QString sCode(QChar(static_cast<char16_t>(lCode)));
    alGlyph.at(lCode) = tRawFont.glyphIndexesForString(sCode).value(0);
  }
  return alGlyph;
}

}  // namespace

/// The lines as assistive tools read them; it copies none.
class LinesModel final : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  int rowCount(const QModelIndex& tParent) const override { return tParent.isValid() ? 0 : lCount; }

  QVariant data(const QModelIndex& tIndex, int lRole) const override {
    if (lRole != Qt::DisplayRole || !tIndex.isValid()) return {};
    const std::string_view sLine = Line(tIndex.row());
    QString sText = QString::fromLatin1(sLine.data(), static_cast<qsizetype>(sLine.size()));
    for (QChar& tCharacter : sText) {
      if (IsShownAsMark(static_cast<unsigned char>(tCharacter.toLatin1())))
        tCharacter = QChar(MARK_CHARACTER);
    }
    return sText;
  }

  /// While the view is told of a change in steps, the count may run ahead of the lines.
  std::string_view Line(int lIndex) const {
    return lIndex < pLines->LineCount() ? pLines->Line(lIndex) : std::string_view();
  }

  std::span<const ColumnRange> QuietColumns() const { return pLines->QuietColumns(); }
  int NextLineBeginning(int lIndex, char bCharacter) const {
    return platform::NextLineBeginning(*pLines, lIndex, bCharacter);
  }

  void SetLines(const ListLines* pNewLines) {
    beginResetModel();
    pLines = pNewLines;
    lCount = pLines != nullptr ? pLines->LineCount() : 0;
    endResetModel();
  }

  void Replace(int lFirst, int lRemoved, int lInserted) {
    const int lSame = std::min(lRemoved, lInserted);
    if (lSame > 0) emit dataChanged(index(lFirst), index(lFirst + lSame - 1));
    if (lRemoved > lSame) {
      beginRemoveRows({}, lFirst + lSame, lFirst + lRemoved - 1);
      lCount -= lRemoved - lSame;
      endRemoveRows();
    }
    if (lInserted > lSame) {
      beginInsertRows({}, lFirst + lSame, lFirst + lInserted - 1);
      lCount += lInserted - lSame;
      endInsertRows();
    }
  }

 private:
  const ListLines* pLines = nullptr;
  int lCount = 0;
};

ListView::ListView(QtForm& frmOwner, std::int16_t iItsControl, const QFont& tFont, QWidget& tParent)
    : QListView(&tParent),
      frm(frmOwner),
      iControl(iItsControl),
      pModel(new LinesModel(this)),
      hWnd(frmOwner.OwnToolkit().AddList()),
      lLineHeight(std::max(1, QFontMetrics(tFont).height())),
      lBaseline(QFontMetrics(tFont).ascent()),
      dColumn(ColumnWidth(tFont)),
      tRawFont(QRawFont::fromFont(tFont)),
      alGlyphOf(GlyphsOf(tRawFont)) {
  setFont(tFont);
  setModel(pModel);
  setSelectionMode(NoSelection);
  setEditTriggers(NoEditTriggers);
  setAutoScroll(false);
  setDragEnabled(false);
  setAttribute(Qt::WA_InputMethodEnabled, false);
  // Each line is filled as it is drawn: Qt gives one large area to threads, and then waits for
  // them.
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

ListView::~ListView() { frm.OwnToolkit().RemoveList(hWnd); }

// ---- Lines, selection and top line --------------------------------------------------------------

int ListView::LineCount() const { return pModel->rowCount({}); }

void ListView::SetLines(const ListLines* pLines) {
  const QScopedValueRollback tQuiet(bQuietScroll, true);
  lSelected = -1;
  pModel->SetLines(pLines);
  lLongest = 0;
  UpdateLongest(0, LineCount());
  updateGeometries();
  SetTop(0);
  viewport()->update();
}

void ListView::LinesReplaced(int lFirst, int lRemoved, int lInserted) {
  const QScopedValueRollback tQuiet(bQuietScroll, true);
  const ReplacedLines tReplaced{lFirst, lRemoved, lInserted};
  const int lNewTop = tReplaced.Moved(Top());
  const int lNewSelected = tReplaced.MovedSelection(lSelected);
  pModel->Replace(lFirst, lRemoved, lInserted);
  if (horizontalScrollBar()->maximum() > 0) {
    lLongest = 0;  // the line that needed the scroll bar may be among the removed
    UpdateLongest(0, LineCount());
  } else {
    UpdateLongest(lFirst, lInserted);
  }
  updateGeometries();
  SetTop(lNewTop);
  if (lNewSelected != lSelected) SetSelected(lNewSelected);
  UpdateLines(lFirst, lInserted == lRemoved ? lInserted : LineCount() + lRemoved);
}

void ListView::UpdateLongest(int lFirst, int lInserted) {
  for (int lIndex = lFirst; lIndex < lFirst + lInserted; ++lIndex)
    lLongest = std::max(lLongest, TextColumns(pModel->Line(lIndex)));
}

void ListView::SetSelected(int lIndex) {
  UpdateLines(lSelected, 1);
  UpdateLines(lIndex, 1);
  lSelected = lIndex;
  selectionModel()->setCurrentIndex(lIndex < 0 ? QModelIndex() : pModel->index(lIndex),
                                    QItemSelectionModel::NoUpdate);
}

void ListView::UpdateLines(int lFirst, int lCount) {
  // Accents may reach into the line above: the lines beside these are drawn anew with them.
  viewport()->update(0, TextTop() + (lFirst - 1 - Top()) * lLineHeight, viewport()->width(),
                     (lCount + 2) * lLineHeight);
}

void ListView::Select(int lIndex) {
  const bool bLine = lIndex >= 0 && lIndex < LineCount();
  bLine ? SelectByUser(lIndex) : SetSelected(-1);
}

void ListView::SelectByUser(int lIndex) {
  SetSelected(lIndex);
  frm.Deliver([this](FormEvents& tEvents) { tEvents.Click(iControl); });
}

int ListView::Top() const { return verticalScrollBar()->value(); }

void ListView::SetTop(int lIndex) { verticalScrollBar()->setValue(lIndex); }

int ListView::LeftOffset() const { return horizontalScrollBar()->value(); }

void ListView::ScrollToLeft() { horizontalScrollBar()->setValue(0); }

int ListView::InnerHeight() const { return viewport()->height() - TextTop(); }

void ListView::EnsureVisible(int lIndex) {
  SetTop(std::clamp(Top(), lIndex - PageLines() + 1, lIndex));
}

// ---- Geometry -----------------------------------------------------------------------------------

int ListView::TextTop() const { return std::max(0, PixelsY(LIST_TEXT_TOP) - frameWidth()); }

int ListView::TextLeft() const { return std::max(0, PixelsX(LIST_TEXT_LEFT) - frameWidth()); }

int ListView::PageLines() const { return std::max(1, verticalScrollBar()->pageStep()); }

void ListView::updateGeometries() {
  const int lBarWidth = verticalScrollBar()->sizeHint().width();
  const int lBarHeight = horizontalScrollBar()->sizeHint().height();
  const QSize tMost = maximumViewportSize();
  const auto fnPage = [this](int lHeight) {
    return std::max(1, (lHeight - TextTop()) / lLineHeight);
  };
  const int lTextWidth = TextLeft() + static_cast<int>(std::ceil(lLongest * dColumn));

  bool bVertical = LineCount() > fnPage(tMost.height());
  const bool bHorizontal = lTextWidth > tMost.width() - (bVertical ? lBarWidth : 0);
  const int lHeight = tMost.height() - (bHorizontal ? lBarHeight : 0);
  bVertical = LineCount() > fnPage(lHeight);
  const int lWidth = std::max(1, tMost.width() - (bVertical ? lBarWidth : 0));

  // The range before the page step: QListView's own relations between the two are of no use here.
  verticalScrollBar()->setRange(0, std::max(0, LineCount() - fnPage(lHeight)));
  verticalScrollBar()->setPageStep(fnPage(lHeight));
  verticalScrollBar()->setSingleStep(1);
  horizontalScrollBar()->setRange(0, bHorizontal ? std::max(0, lTextWidth - lWidth) : 0);
  horizontalScrollBar()->setPageStep(lWidth);
  horizontalScrollBar()->setSingleStep(static_cast<int>(std::ceil(dColumn)));
}

int ListView::LineAt(int lY) const {
  return Top() + static_cast<int>(std::floor((lY - TextTop()) / static_cast<double>(lLineHeight)));
}

std::uint32_t ListView::ItemFromPoint(const QPoint& tPoint) const {
  if (LineCount() == 0) return NO_ITEM;
  const QPoint tInView = tPoint - viewport()->pos();
  const int lIndex = std::max(Top(), LineAt(tInView.y()));
  // Windows, too, counts the empty area below the last line as outside.
  const bool bOutside = !viewport()->rect().contains(tInView) || lIndex >= LineCount();
  return static_cast<std::uint32_t>(std::min(lIndex, LineCount() - 1)) | (bOutside ? 0x10000U : 0U);
}

QRect ListView::visualRect(const QModelIndex& tIndex) const {
  if (!tIndex.isValid()) return {};
  return {0, TextTop() + (tIndex.row() - Top()) * lLineHeight, viewport()->width(), lLineHeight};
}

QModelIndex ListView::indexAt(const QPoint& tPoint) const {
  return pModel->index(LineAt(tPoint.y()));  // invalid outside the lines
}

void ListView::scrollTo(const QModelIndex& tIndex, ScrollHint /*eHint*/) {
  if (tIndex.isValid()) EnsureVisible(tIndex.row());
}

/// QListView would measure every line here.
void ListView::doItemsLayout() { updateGeometries(); }

void ListView::currentChanged(const QModelIndex& /*tCurrent*/, const QModelIndex& /*tPrevious*/) {
  ReportFocusOnLine(*this);
}

void ListView::focusInEvent(QFocusEvent* pEvent) {
  QListView::focusInEvent(pEvent);
  ReportFocusOnLineSoon(*this);
}

void ListView::scrollContentsBy(int lX, int lY) {
  viewport()->update();
  if (bQuietScroll) return;
  std::uint32_t uMsg = lScrollMessage;
  if (uMsg == 0) uMsg = lY != 0 || lX == 0 ? WM_VSCROLL : WM_HSCROLL;
  frm.Deliver([this, uMsg](FormEvents&) { frm.OwnToolkit().ListScrolled(hWnd, uMsg); });
}

// ---- Drawing ------------------------------------------------------------------------------------

void ListView::paintEvent(QPaintEvent* pEvent) {
  QPainter tPainter(viewport());
  tPainter.setFont(font());
  const ThemeColors tTheme = ThemeOf(palette());
  const LineColors tPlain = LineColorsOf(tTheme, LineState::Plain);
  const LineColors tSelected = LineColorsOf(
      tTheme, hasFocus() && isActiveWindow() ? LineState::Selected : LineState::SelectedAway);
  const int lWidth = viewport()->width();
  const int lEnd = TextTop() + (LineCount() - Top()) * lLineHeight;  // where the last line ends
  tPainter.fillRect(0, 0, lWidth, TextTop(), Shown(tPlain.tBack));
  tPainter.fillRect(0, lEnd, lWidth, std::max(0, viewport()->height() - lEnd), Shown(tPlain.tBack));
  const int lLast = std::min(LineAt(pEvent->rect().bottom()) + 1, LineCount() - 1);
  for (int lIndex = std::max(LineAt(pEvent->rect().top()) - 1, Top()); lIndex <= lLast; ++lIndex) {
    const QRect tLine(0, TextTop() + (lIndex - Top()) * lLineHeight, lWidth, lLineHeight);
    const LineColors& tColors = lIndex == lSelected ? tSelected : tPlain;
    tPainter.fillRect(tLine, Shown(tColors.tBack));
    DrawLine(tPainter, pModel->Line(lIndex), tLine.top(), tColors);
  }
}

/// Draws the visible columns of a line. Glyphs are placed one by one: each byte has its column,
/// and the text need not be shaped.
void ListView::DrawLine(QPainter& tPainter, std::string_view sLine, int lTop,
                        const LineColors& tColors) {
  const double dLeft = TextLeft() - horizontalScrollBar()->value();
  const auto fnColumnAt = [=, this](int lX) { return (lX - dLeft) / dColumn; };
  const auto lEnd = std::min(static_cast<int>(sLine.size()),
                             static_cast<int>(std::ceil(fnColumnAt(viewport()->width()))));
  const std::array<QColor, 2> atColor{Shown(tColors.tText), Shown(tColors.tQuiet)};
  for (Glyphs& tGlyphs : atGlyphs) {
    tGlyphs.alGlyph.clear();
    tGlyphs.atPoint.clear();
  }
  ColumnRun tRun{};
  for (int lAt = std::max(0, static_cast<int>(std::floor(fnColumnAt(0)))); lAt < lEnd; ++lAt) {
    if (lAt >= tRun.lEnd) tRun = RunAt(pModel->QuietColumns(), lAt);
    const std::size_t lShade = tRun.bQuiet ? 1 : 0;
    const auto bCode = static_cast<unsigned char>(sLine[static_cast<std::size_t>(lAt)]);
    const QPointF tPoint(dLeft + lAt * dColumn, lTop + lBaseline);
    if (IsShownAsMark(bCode)) {
      constexpr double DOT = 2;
      tPainter.fillRect(
          QRectF(tPoint.x() + (dColumn - DOT) / 2, lTop + (lLineHeight - DOT) / 2, DOT, DOT),
          atColor[1]);
    } else if (alGlyphOf.at(bCode) == 0) {
      tPainter.setPen(atColor.at(lShade));
      tPainter.drawText(tPoint, QString(QChar(bCode)));  // another font has to lend it
    } else if (bCode != ' ') {
      atGlyphs.at(lShade).alGlyph.push_back(alGlyphOf.at(bCode));
      atGlyphs.at(lShade).atPoint.push_back(tPoint);
    }
  }
  for (std::size_t lShade = 0; lShade < atGlyphs.size(); ++lShade) {
    const auto& [alGlyph, atPoint] = atGlyphs.at(lShade);
    if (alGlyph.empty()) continue;
    QGlyphRun tRunOfGlyphs;
    tRunOfGlyphs.setRawFont(tRawFont);
    tRunOfGlyphs.setRawData(alGlyph.data(), atPoint.data(), static_cast<int>(alGlyph.size()));
    tPainter.setPen(atColor.at(lShade));
    tPainter.drawGlyphRun({}, tRunOfGlyphs);
  }
}

// ---- Mouse and keys -----------------------------------------------------------------------------

void ListView::mousePressEvent(QMouseEvent* pEvent) {
  // The second press of a double-click selects nothing anew.
  if (pEvent->button() != Qt::LeftButton || pEvent->flags() == Qt::MouseEventCreatedDoubleClick)
    return;
  setFocus(Qt::MouseFocusReason);
  const int lLine = LineAt(pEvent->pos().y());
  if (lLine >= Top() && lLine < LineCount()) SelectByUser(lLine);
}

void ListView::mouseDoubleClickEvent(QMouseEvent* pEvent) {
  const int lLine = LineAt(pEvent->pos().y());
  if (pEvent->button() != Qt::LeftButton || lLine < Top() || lLine >= LineCount()) return;
  if (lLine != lSelected) SelectByUser(lLine);
  frm.Deliver([this](FormEvents& tEvents) { tEvents.DblClick(iControl); });
}

void ListView::mouseMoveEvent(QMouseEvent* pEvent) {
  if ((pEvent->buttons() & Qt::LeftButton) == 0) return;
  tDragPoint = pEvent->pos();
  // Beyond the view's edge the list goes on scrolling while the pointer rests.
  const bool bInside = viewport()->rect().contains(0, tDragPoint.y());
  bInside ? tmrDrag.stop() : tmrDrag.start(DRAG_SCROLL_MS, this);
  DragTo(tDragPoint);
}

void ListView::timerEvent(QTimerEvent* pEvent) {
  if (pEvent->timerId() != tmrDrag.timerId()) {
    QListView::timerEvent(pEvent);
  } else if ((QGuiApplication::mouseButtons() & Qt::LeftButton) != 0) {
    DragTo(tDragPoint);
  } else {
    tmrDrag.stop();  // the release went elsewhere, as into a message box
  }
}

void ListView::DragTo(const QPoint& tPoint) {
  if (LineCount() == 0) return;
  int lLine = LineAt(tPoint.y());
  if (tPoint.y() < 0) lLine = Top() - 1;
  if (tPoint.y() >= viewport()->height()) lLine = Top() + PageLines();
  lLine = std::clamp(lLine, 0, LineCount() - 1);
  if (lLine == lSelected) return;
  SetSelected(lLine);
  EnsureVisible(lLine);
  SelectByUser(lLine);
}

void ListView::mouseReleaseEvent(QMouseEvent* pEvent) {
  tmrDrag.stop();
  const Qt::MouseButton eButton = pEvent->button();
  if (eButton != Qt::LeftButton && eButton != Qt::RightButton && eButton != Qt::MiddleButton)
    return;
  // Qt numbers these buttons and the first three modifiers as a form's events do.
  const auto iButton = static_cast<std::int16_t>(eButton);
  const Qt::KeyboardModifiers eKeys = pEvent->modifiers();
  const auto iShift = static_cast<std::int16_t>(((eKeys & Qt::ShiftModifier) != 0 ? 1 : 0) |
                                                ((eKeys & Qt::ControlModifier) != 0 ? 2 : 0) |
                                                ((eKeys & Qt::AltModifier) != 0 ? 4 : 0));
  const QPoint tPoint = viewport()->pos() + pEvent->pos();
  frm.Deliver([&](FormEvents& tEvents) {
    tEvents.MouseUp(iControl, iButton, iShift, tPoint.x() * TwipsPerPixelX(),
                    tPoint.y() * TwipsPerPixelY());
  });
}

/// The line that a typed character goes to; -1: none, or it is no character of a list's.
int ListView::LineTypedTo(const QKeyEvent& tKey) const {
  const bool bCharacter =
      tKey.text().size() == 1 && tKey.text().at(0).isPrint() &&
      (tKey.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
  return bCharacter ? pModel->NextLineBeginning(lSelected, tKey.text().at(0).toLatin1()) : -1;
}

void ListView::keyPressEvent(QKeyEvent* pEvent) {
  if (LineCount() == 0) {
    pEvent->ignore();
    return;
  }
  const int lFrom = std::max(0, lSelected);
  int lTo = 0;
  switch (pEvent->key()) {
    case Qt::Key_Up:
      lTo = lFrom - 1;
      break;
    case Qt::Key_Down:
      lTo = lFrom + (lSelected < 0 ? 0 : 1);
      break;
    case Qt::Key_PageUp:
      lTo = lFrom - std::max(1, PageLines() - 1);
      break;
    case Qt::Key_PageDown:
      lTo = lFrom + std::max(1, PageLines() - 1);
      break;
    case Qt::Key_Home:
      break;
    case Qt::Key_End:
      lTo = LineCount() - 1;
      break;
    case Qt::Key_Left:
      horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
      return;
    case Qt::Key_Right:
      horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
      return;
    default:
      lTo = LineTypedTo(*pEvent);
      pEvent->setAccepted(lTo >= 0);
      if (lTo < 0) return;
      break;
  }
  lTo = std::clamp(lTo, 0, LineCount() - 1);
  SetSelected(lTo);
  EnsureVisible(lTo);
  SelectByUser(lTo);
}

void ListView::wheelEvent(QWheelEvent* pEvent) {
  pEvent->accept();
  const QScopedValueRollback tMessage(lScrollMessage, WM_MOUSEWHEEL);
  const QPoint tAngle = pEvent->angleDelta();
  // X servers' pixel counts depend on the driver; the angle is dependable everywhere.
  const bool bPixels =
      !pEvent->pixelDelta().isNull() && QGuiApplication::platformName() != QLatin1String("xcb");
  const double dLinesPerNotch = QGuiApplication::styleHints()->wheelScrollLines();
  dWheelRest -= bPixels ? pEvent->pixelDelta().y() / static_cast<double>(lLineHeight)
                        : tAngle.y() / WHEEL_STEP * dLinesPerNotch;
  const double dLines = std::trunc(dWheelRest);
  dWheelRest -= dLines;
  SetTop(Top() + static_cast<int>(dLines));
  const double dSideways =
      bPixels ? pEvent->pixelDelta().x() : tAngle.x() / WHEEL_STEP * dLinesPerNotch * dColumn;
  horizontalScrollBar()->setValue(horizontalScrollBar()->value() - static_cast<int>(dSideways));
}

}  // namespace platform::qt
