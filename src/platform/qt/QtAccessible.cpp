#include "platform/qt/QtAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QFontMetrics>
#include <QLineEdit>
#include <QMenu>
#include <QTextBoundaryFinder>
#include <QTimer>
#include <algorithm>
#include <array>
#include <functional>

#include "platform/qt/QtForm.h"
#include "platform/qt/QtListBox.h"

namespace platform::qt {

namespace {

// ---- Text fields --------------------------------------------------------------------------------

/// A part of a text, from its first character to before lEnd.
struct Part {
  int lStart;
  int lEnd;
};

/// A text field. Qt 6.4's own description never comes back when it is asked for the word, sentence
/// or line at some places of a text, and screen readers ask just that.
class AccessibleField final : public QAccessibleWidget,
                              public QAccessibleTextInterface,
                              public QAccessibleEditableTextInterface {
 public:
  explicit AccessibleField(QLineEdit& txt) : QAccessibleWidget(&txt, QAccessible::EditableText) {}

  void* interface_cast(QAccessible::InterfaceType eType) override {
    if (eType == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    if (eType == QAccessible::EditableTextInterface)
      return static_cast<QAccessibleEditableTextInterface*>(this);
    return QAccessibleWidget::interface_cast(eType);
  }

  QString text(QAccessible::Text eText) const override {
    return eText == QAccessible::Value ? Shown() : QAccessibleWidget::text(eText);
  }
  void setText(QAccessible::Text eText, const QString& sText) override {
    if (eText == QAccessible::Value) replaceText(0, characterCount(), sText);
  }
  QAccessible::State state() const override {
    QAccessible::State tState = QAccessibleWidget::state();
    tState.selectableText = true;
    tState.readOnly = Field().isReadOnly();
    tState.editable = !tState.readOnly;
    tState.passwordEdit = Field().echoMode() != QLineEdit::Normal;
    return tState;
  }

  // Selection and cursor

  int selectionCount() const override { return Field().hasSelectedText() ? 1 : 0; }
  void selection(int lIndex, int* pStart, int* pEnd) const override {
    const bool bSelected = lIndex == 0 && Field().hasSelectedText();
    *pStart = bSelected ? Field().selectionStart() : 0;
    *pEnd = bSelected ? Field().selectionEnd() : 0;
  }
  void addSelection(int lStart, int lEnd) override { setSelection(0, lStart, lEnd); }
  void removeSelection(int lIndex) override {
    if (lIndex == 0) Field().deselect();
  }
  void setSelection(int lIndex, int lStart, int lEnd) override {
    const Part tPart = Within({lStart, lEnd});
    if (lIndex == 0) Field().setSelection(tPart.lStart, tPart.lEnd - tPart.lStart);
  }
  int cursorPosition() const override { return Field().cursorPosition(); }
  void setCursorPosition(int lAt) override { Field().setCursorPosition(Within({lAt, lAt}).lStart); }
  void scrollToSubstring(int lStart, int /*lEnd*/) override { setCursorPosition(lStart); }

  // Text

  int characterCount() const override { return static_cast<int>(Shown().size()); }
  QString text(int lStart, int lEnd) const override { return Give(Within({lStart, lEnd})); }
  QString textAtOffset(int lAt, QAccessible::TextBoundaryType eBoundary, int* pStart,
                       int* pEnd) const override {
    return Give(PartAt(lAt, eBoundary), pStart, pEnd);
  }
  QString textBeforeOffset(int lAt, QAccessible::TextBoundaryType eBoundary, int* pStart,
                           int* pEnd) const override {
    const int lEnd = PartAt(lAt, eBoundary).lStart;
    return Give(lEnd == 0 ? Part{0, 0} : PartAt(lEnd - 1, eBoundary), pStart, pEnd);
  }
  QString textAfterOffset(int lAt, QAccessible::TextBoundaryType eBoundary, int* pStart,
                          int* pEnd) const override {
    const int lStart = PartAt(lAt, eBoundary).lEnd;
    const bool bNone = lStart == characterCount();
    return Give(bNone ? Part{lStart, lStart} : PartAt(lStart, eBoundary), pStart, pEnd);
  }
  QString attributes(int /*lAt*/, int* pStart, int* pEnd) const override {
    *pStart = 0;
    *pEnd = characterCount();
    return {};
  }

  // Places on the screen

  QRect characterRect(int lAt) const override {
    const Part tPart = Within({lAt, lAt + 1});
    const QFontMetrics tMetrics(Field().font());
    const QString sShown = Shown();
    const auto fnWidth = [&](int lCount) { return tMetrics.horizontalAdvance(sShown, lCount); };
    const QRect tCursor = Field().inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const int lLeft = tCursor.center().x() - fnWidth(cursorPosition()) + fnWidth(tPart.lStart);
    const QPoint tCorner = Field().mapToGlobal(QPoint(lLeft, tCursor.top()));
    return {tCorner, QSize(fnWidth(tPart.lEnd) - fnWidth(tPart.lStart), tCursor.height())};
  }
  int offsetAtPoint(const QPoint& tPoint) const override {
    const QPoint tInside = Field().mapFromGlobal(tPoint);
    return Field().rect().contains(tInside) ? Field().cursorPositionAt(tInside) : -1;
  }

  // Changes, as typed ones

  void insertText(int lAt, const QString& sText) override { replaceText(lAt, lAt, sText); }
  void deleteText(int lStart, int lEnd) override { replaceText(lStart, lEnd, {}); }
  void replaceText(int lStart, int lEnd, const QString& sText) override {
    if (Field().isReadOnly()) return;
    setSelection(0, lStart, lEnd);
    if (lStart == lEnd) setCursorPosition(lStart);
    Field().insert(sText);
  }

 private:
  QLineEdit& Field() const { return static_cast<QLineEdit&>(*widget()); }
  QString Shown() const {
    return Field().displayText();
  }  // which hides what a password field hides

  Part Within(Part tPart) const {
    const int lCount = characterCount();
    tPart.lStart = std::clamp(tPart.lStart, 0, lCount);
    return {tPart.lStart, std::clamp(tPart.lEnd, tPart.lStart, lCount)};
  }

  QString Give(Part tPart) const { return Shown().mid(tPart.lStart, tPart.lEnd - tPart.lStart); }
  QString Give(Part tPart, int* pStart, int* pEnd) const {
    *pStart = tPart.lStart;
    *pEnd = tPart.lEnd;
    return Give(tPart);
  }

  /// The character, word or line that stands at an offset, -1 meaning the end and -2 the cursor. A
  /// word goes up to where the next one starts; a text this short is one sentence and one line.
  Part PartAt(int lAt, QAccessible::TextBoundaryType eBoundary) const {
    const QString sShown = Shown();
    const int lCount = characterCount();
    const bool bCharacter = eBoundary == QAccessible::CharBoundary;
    if (!bCharacter && eBoundary != QAccessible::WordBoundary) return {0, lCount};
    if (lAt == -1) lAt = lCount;
    if (lAt == -2) lAt = cursorPosition();
    // Behind the last character stands no other, but the last word does reach so far.
    lAt = std::clamp(lAt, 0, bCharacter ? lCount : std::max(0, lCount - 1));

    QTextBoundaryFinder tFinder(
        bCharacter ? QTextBoundaryFinder::Grapheme : QTextBoundaryFinder::Word, sShown);
    int lStart = 0;
    for (auto lNext = tFinder.toNextBoundary(); lNext >= 0; lNext = tFinder.toNextBoundary()) {
      const auto lBoundary = static_cast<int>(lNext);
      const bool bStart = (tFinder.boundaryReasons() & QTextBoundaryFinder::StartOfItem) != 0;
      if (!bCharacter && !bStart && lBoundary < lCount) continue;
      if (lBoundary > lAt) return {lStart, lBoundary};
      lStart = lBoundary;
    }
    return {lStart, lCount};
  }
};

// ---- Lists --------------------------------------------------------------------------------------

class AccessibleLine;

/// A list: a table of one column, because screen readers walk through every item of a list when the
/// focus enters it, which takes them seconds where there are thousands. A line is only described
/// when it is asked for.
class AccessibleList final : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit AccessibleList(ListView& lst) : QAccessibleWidget(&lst, QAccessible::Table) {}
  ~AccessibleList() override { DropLines(0); }
  AccessibleList(const AccessibleList&) = delete;
  AccessibleList& operator=(const AccessibleList&) = delete;

  void* interface_cast(QAccessible::InterfaceType eType) override {
    if (eType == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(eType);
  }

  int childCount() const override { return rowCount(); }
  QAccessibleInterface* child(int lLine) const override;
  int indexOfChild(const QAccessibleInterface* pChild) const override;
  QAccessibleInterface* childAt(int lX, int lY) const override {
    const QWidget& tViewport = *List().viewport();
    const QPoint tInside = tViewport.mapFromGlobal(QPoint(lX, lY));
    return tViewport.rect().contains(tInside) ? child(List().indexAt(tInside).row()) : nullptr;
  }
  QAccessibleInterface* focusChild() const override {
    return List().hasFocus() ? child(List().Selected()) : nullptr;
  }

  QAccessibleInterface* caption() const override { return nullptr; }
  QAccessibleInterface* summary() const override { return nullptr; }
  QAccessibleInterface* cellAt(int lRow, int lColumn) const override {
    return lColumn == 0 ? child(lRow) : nullptr;
  }
  int rowCount() const override { return List().model()->rowCount(); }
  int columnCount() const override { return 1; }
  QString rowDescription(int /*lRow*/) const override { return {}; }
  QString columnDescription(int /*lColumn*/) const override { return {}; }

  int selectedRowCount() const override { return List().Selected() < 0 ? 0 : 1; }
  int selectedColumnCount() const override { return 0; }
  int selectedCellCount() const override { return selectedRowCount(); }
  QList<int> selectedRows() const override {
    return selectedRowCount() == 0 ? QList<int>() : QList<int>{List().Selected()};
  }
  QList<int> selectedColumns() const override { return {}; }
  QList<QAccessibleInterface*> selectedCells() const override {
    QList<QAccessibleInterface*> apCell;
    if (auto* pLine = child(List().Selected())) apCell.append(pLine);
    return apCell;
  }
  bool isRowSelected(int lRow) const override { return lRow >= 0 && lRow == List().Selected(); }
  bool isColumnSelected(int /*lColumn*/) const override { return false; }
  bool selectRow(int lRow) override {
    if (lRow < 0 || lRow >= rowCount()) return false;
    List().scrollTo(List().model()->index(lRow, 0), QListView::EnsureVisible);
    List().Select(lRow);
    return true;
  }
  bool selectColumn(int /*lColumn*/) override { return false; }
  bool unselectRow(int /*lRow*/) override { return false; }
  bool unselectColumn(int /*lColumn*/) override { return false; }

  void modelChange(QAccessibleTableModelChangeEvent* pEvent) override {
    using Change = QAccessibleTableModelChangeEvent;
    if (pEvent->modelChangeType() == Change::ModelReset) return DropLines(0);
    const bool bSame = pEvent->modelChangeType() == Change::DataChanged;
    ReportTexts(pEvent->firstRow(), bSame ? pEvent->lastRow() : rowCount() - 1);
    DropLines(rowCount());
  }

  ListView& List() const { return static_cast<ListView&>(*widget()); }

 private:
  /// Described lines that are kept at once: more than any screen shows. A tool that asks for
  /// another gets that in the place of one that many lines away.
  static constexpr std::size_t KEPT_LINES = 1024;

  static AccessibleLine* LineOf(QAccessible::Id lId);
  void DropLines(int lFirst);
  void ReportTexts(int lFirst, int lLast) const;

  mutable std::array<QAccessible::Id, KEPT_LINES> alLine{};
};

/// One line of a list. It holds nothing but its index.
class AccessibleLine final : public QAccessibleInterface, public QAccessibleTableCellInterface {
 public:
  AccessibleLine(const AccessibleList& tItsList, int lItsLine) : tList(tItsList), lLine(lItsLine) {}

  void* interface_cast(QAccessible::InterfaceType eType) override {
    return eType == QAccessible::TableCellInterface
               ? static_cast<QAccessibleTableCellInterface*>(this)
               : nullptr;
  }

  int Line() const { return lLine; }

  bool isValid() const override { return tList.isValid() && lLine < tList.rowCount(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return tList.window(); }
  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(&tList.List());
  }
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int /*lIndex*/) const override { return nullptr; }
  QAccessibleInterface* childAt(int /*lX*/, int /*lY*/) const override { return nullptr; }
  int indexOfChild(const QAccessibleInterface* /*pChild*/) const override { return -1; }
  QAccessible::Role role() const override { return QAccessible::Cell; }
  QString text(QAccessible::Text eText) const override {
    return eText == QAccessible::Name ? Index().data().toString() : QString();
  }
  void setText(QAccessible::Text /*eText*/, const QString& /*sText*/) override {}
  QRect rect() const override {
    const QRect tPlace = tList.List().visualRect(Index());
    return {tList.List().viewport()->mapToGlobal(tPlace.topLeft()), tPlace.size()};
  }
  QAccessible::State state() const override {
    const ListView& lst = tList.List();
    QAccessible::State tState;
    tState.selectable = true;
    tState.focusable = true;
    tState.selected = isSelected();
    tState.focused = isSelected() && lst.hasFocus();
    tState.disabled = !lst.isEnabled();
    tState.offscreen = !lst.viewport()->rect().intersects(lst.visualRect(Index()));
    tState.invisible = !lst.isVisible();
    return tState;
  }

  bool isSelected() const override { return tList.isRowSelected(lLine); }
  int rowIndex() const override { return lLine; }
  int columnIndex() const override { return 0; }
  int rowExtent() const override { return 1; }
  int columnExtent() const override { return 1; }
  QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
  QAccessibleInterface* table() const override { return parent(); }

 private:
  QModelIndex Index() const { return tList.List().model()->index(lLine, 0); }

  const AccessibleList& tList;  // whose end is this one's, too
  int lLine;
};

AccessibleLine* AccessibleList::LineOf(QAccessible::Id lId) {
  return lId == 0 ? nullptr : static_cast<AccessibleLine*>(QAccessible::accessibleInterface(lId));
}

QAccessibleInterface* AccessibleList::child(int lLine) const {
  if (lLine < 0 || lLine >= rowCount()) return nullptr;
  QAccessible::Id& lId = alLine.at(static_cast<std::size_t>(lLine) % KEPT_LINES);
  AccessibleLine* pLine = LineOf(lId);
  if (pLine != nullptr && pLine->Line() == lLine) return pLine;
  if (pLine != nullptr) QAccessible::deleteAccessibleInterface(lId);
  pLine = new AccessibleLine(*this, lLine);  // Qt's, until it is deleted by its id
  lId = QAccessible::registerAccessibleInterface(pLine);
  return pLine;
}

int AccessibleList::indexOfChild(const QAccessibleInterface* pChild) const {
  const auto* pLine = dynamic_cast<const AccessibleLine*>(pChild);
  return pLine != nullptr && pLine->isValid() ? pLine->Line() : -1;
}

/// Forgets the described lines from lFirst on.
void AccessibleList::DropLines(int lFirst) {
  for (QAccessible::Id& lId : alLine) {
    const AccessibleLine* pLine = LineOf(lId);
    if (pLine == nullptr || pLine->Line() < lFirst) continue;
    QAccessible::deleteAccessibleInterface(lId);
    lId = 0;
  }
}

/// Tells of the new texts of lines that somebody has asked for.
void AccessibleList::ReportTexts(int lFirst, int lLast) const {
  for (const QAccessible::Id lId : alLine) {
    AccessibleLine* pLine = LineOf(lId);
    if (pLine == nullptr || pLine->Line() < lFirst || pLine->Line() > lLast) continue;
    QAccessibleEvent tEvent(pLine, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&tEvent);
  }
}

// ---- The program --------------------------------------------------------------------------------

/// The program. To its children belongs the pop-up menu that is open: Qt's own description calls
/// the program its parent, but leads to no menus but those of a menu bar.
class AccessibleProgram final : public QAccessibleApplication {
 public:
  int childCount() const override {
    return QAccessibleApplication::childCount() + (Popup() != nullptr ? 1 : 0);
  }
  QAccessibleInterface* child(int lIndex) const override {
    const bool bPopup = lIndex == QAccessibleApplication::childCount();
    return bPopup ? QAccessible::queryAccessibleInterface(Popup())
                  : QAccessibleApplication::child(lIndex);
  }
  int indexOfChild(const QAccessibleInterface* pChild) const override {
    const QMenu* const mnuPopup = Popup();
    return mnuPopup != nullptr && pChild->object() == mnuPopup
               ? QAccessibleApplication::childCount()
               : QAccessibleApplication::indexOfChild(pChild);
  }

 private:
  static QMenu* Popup() {
    auto* const mnu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    return mnu != nullptr && mnu->menuAction()->associatedObjects().isEmpty() ? mnu : nullptr;
  }
};

QAccessibleInterface* Described(const QString& /*sClass*/, QObject* pObject) {
  if (auto* txt = qobject_cast<QLineEdit*>(pObject)) return new AccessibleField(*txt);
  if (auto* lst = dynamic_cast<ListView*>(pObject)) return new AccessibleList(*lst);
  if (auto* frm = dynamic_cast<QtForm*>(pObject))
    return new QAccessibleWidget(frm, QAccessible::Window);
  if (pObject == qApp) return new AccessibleProgram();
  return nullptr;
}

/// Reports something of a widget once what is under way has ended, if the widget is there still.
void ReportSoon(QWidget& tWidget, const std::function<void()>& fnReport) {
  auto* const tmrSoon = new QTimer(&tWidget);
  QObject::connect(tmrSoon, &QTimer::timeout, tmrSoon, [=]() {
    fnReport();
    tmrSoon->deleteLater();
  });
  tmrSoon->setSingleShot(true);
  tmrSoon->start(0);
}

}  // namespace

void InstallAccessibility() { QAccessible::installFactory(Described); }

void ReportPopupSoon(QMenu& mnu) {
  if (!QAccessible::isActive()) return;
  ReportSoon(mnu, [&mnu]() {
    QAccessibleEvent tFocus(&mnu, QAccessible::Focus);
    if (mnu.isVisible() && mnu.activeAction() == nullptr) QAccessible::updateAccessibility(&tFocus);
  });
}

void RenameField(QLineEdit& txt, const QString& sName) {
  if (QAccessible::isActive()) {
    QAccessibleInterface* const pKnown = QAccessible::queryAccessibleInterface(&txt);
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(pKnown));
    if (txt.hasFocus()) {
      ReportSoon(txt, [&txt]() {
        QAccessibleEvent tFocus(&txt, QAccessible::Focus);
        if (txt.hasFocus()) QAccessible::updateAccessibility(&tFocus);
      });
    }
  }
  txt.setAccessibleName(sName);
}

void ReportFocusOnLine(ListView& lst) {
  if (!QAccessible::isActive() || !lst.hasFocus() || lst.Selected() < 0) return;
  QAccessibleEvent tFocus(&lst, QAccessible::Focus);
  tFocus.setChild(lst.Selected());
  QAccessible::updateAccessibility(&tFocus);
}

void ReportFocusOnLineSoon(ListView& lst) {
  if (QAccessible::isActive()) ReportSoon(lst, [&lst]() { ReportFocusOnLine(lst); });
}

}  // namespace platform::qt
