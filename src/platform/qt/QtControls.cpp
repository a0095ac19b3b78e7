#include "platform/qt/QtControls.h"

#include <QCheckBox>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/qt/QtAccessible.h"
#include "platform/qt/QtForm.h"
#include "platform/qt/QtListBox.h"

namespace platform::qt {

namespace {

// ---- Keys ---------------------------------------------------------------------------------------

constexpr std::int16_t VK_BACK = 8;
constexpr std::int16_t VK_RETURN = 13;
constexpr std::int16_t VK_ESCAPE = 27;
constexpr std::int16_t VK_MENU_KEY = 93;
constexpr std::int16_t VK_F1 = 112;

/// The Windows virtual-key code of a Qt key; 0 for one that no form asks about.
std::int16_t VirtualKey(int lKey) {
  constexpr std::array<std::pair<Qt::Key, std::int16_t>, 16> atKey{{
      {Qt::Key_Backspace, VK_BACK},
      {Qt::Key_Tab, 9},
      {Qt::Key_Return, VK_RETURN},
      {Qt::Key_Enter, VK_RETURN},
      {Qt::Key_Escape, VK_ESCAPE},
      {Qt::Key_PageUp, 33},
      {Qt::Key_PageDown, 34},
      {Qt::Key_End, 35},
      {Qt::Key_Home, 36},
      {Qt::Key_Left, 37},
      {Qt::Key_Up, 38},
      {Qt::Key_Right, 39},
      {Qt::Key_Down, 40},
      {Qt::Key_Insert, 45},
      {Qt::Key_Delete, 46},
      {Qt::Key_Menu, VK_MENU_KEY},
  }};
  const auto* pFound =
      std::ranges::find(atKey, lKey, [](const auto& tKey) { return static_cast<int>(tKey.first); });
  if (pFound != atKey.end()) return pFound->second;
  if (lKey >= Qt::Key_F1 && lKey <= Qt::Key_F24)
    return static_cast<std::int16_t>(VK_F1 + lKey - Qt::Key_F1);
  // Blank, digits and letters have the same codes in both.
  const bool bSame = lKey == Qt::Key_Space || (lKey >= Qt::Key_0 && lKey <= Qt::Key_9) ||
                     (lKey >= Qt::Key_A && lKey <= Qt::Key_Z);
  return bSame ? static_cast<std::int16_t>(lKey) : std::int16_t{0};
}

/// The control character that a key types as on Windows; 0 for none.
std::int32_t ControlCharacter(const QKeyEvent& tKey) {
  if ((tKey.modifiers() & Qt::ControlModifier) != 0) {
    const bool bLetter = tKey.key() >= Qt::Key_A && tKey.key() <= Qt::Key_Z;
    return bLetter ? tKey.key() - Qt::Key_A + 1 : 0;
  }
  const std::int16_t iKey = VirtualKey(tKey.key());
  return iKey == VK_BACK || iKey == VK_RETURN || iKey == VK_ESCAPE ? iKey : 0;
}

/// Sends a control's focus changes and keys to the form's logic before the widget acts on them.
class ControlEvents final : public QObject {
 public:
  ControlEvents(QtForm& frmOwner, QWidget& tItsWidget, const ControlDesign& tDesign)
      : QObject(&tItsWidget), frm(frmOwner), iControl(tDesign.iControl) {
    tItsWidget.installEventFilter(this);
  }

  bool eventFilter(QObject* pWatched, QEvent* pEvent) override {
    switch (pEvent->type()) {
      case QEvent::FocusIn:
      case QEvent::FocusOut:
        ReportFocus(static_cast<QFocusEvent&>(*pEvent));
        return false;
      case QEvent::KeyPress:
        return FilterKey(pWatched, static_cast<QKeyEvent&>(*pEvent));
      case QEvent::InputMethod:
        return FilterInput(pWatched, static_cast<QInputMethodEvent&>(*pEvent));
      default:
        return false;
    }
  }

 private:
  /// A focus that goes to another window, a menu or a pop-up and comes back is no event; but while
  /// it is away, as in a message box, the program may give it to another control. Nor is one that
  /// the program took away.
  void ReportFocus(const QFocusEvent& tFocus) {
    const bool bAway = tFocus.reason() == Qt::ActiveWindowFocusReason ||
                       tFocus.reason() == Qt::PopupFocusReason ||
                       tFocus.reason() == Qt::MenuBarFocusReason;
    const bool bOther = tFocus.gotFocus() && frm.NoteFocus(iControl) != iControl;
    if (bAway && !bOther) return;
    if (tFocus.lostFocus() && frm.IsFocusTaken()) return;
    frm.Post([bGot = tFocus.gotFocus(), iOwn = iControl](FormEvents& tEvents) {
      bGot ? tEvents.GotFocus(iOwn) : tEvents.LostFocus(iOwn);
    });
  }

  std::int32_t KeyPress(std::int32_t lCharacter) {
    return frm.Deliver(
        [=, this](FormEvents& tEvents) { return tEvents.KeyPress(iControl, lCharacter); });
  }

  /// True: the key is used up.
  bool FilterKey(QObject* pWatched, QKeyEvent& tKey) {
    tKey.accept();
    const bool bMenu = tKey.key() == Qt::Key_F10 && tKey.modifiers() == Qt::ShiftModifier;
    const std::int16_t iKey = bMenu ? VK_MENU_KEY : VirtualKey(tKey.key());
    const bool bConsumed = iKey != 0 && frm.Deliver([=, this](FormEvents& tEvents) {
      return tEvents.KeyDown(iControl, iKey);
    });
    if (bConsumed || frm.IsUnloaded()) return true;

    if (const std::int32_t lControl = ControlCharacter(tKey)) {
      if (KeyPress(lControl) == 0 || frm.IsUnloaded()) return true;
      auto* cmd = dynamic_cast<QPushButton*>(pWatched);
      if (cmd == nullptr || lControl != VK_RETURN) return false;
      cmd->click();
      return true;
    }
    const QString sTyped = tKey.text();
    const bool bShortcut = (tKey.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0;
    if (bShortcut || sTyped.isEmpty() || !sTyped.at(0).isPrint()) return false;
    const QString sUsed = FilterText(sTyped);
    if (sUsed == sTyped && !frm.IsUnloaded()) return false;
    if (auto* txt = dynamic_cast<QLineEdit*>(pWatched); txt != nullptr && !sUsed.isEmpty())
      txt->insert(sUsed);
    return true;
  }

  /// What an input method composes is typed text, too, once it is committed.
  bool FilterInput(QObject* pWatched, QInputMethodEvent& tInput) {
    const QString sUsed = FilterText(tInput.commitString());
    if (sUsed == tInput.commitString()) return false;
    QInputMethodEvent tUsed(tInput.preeditString(), tInput.attributes());
    tUsed.setCommitString(sUsed, tInput.replacementStart(), tInput.replacementLength());
    pWatched->removeEventFilter(this);
    QCoreApplication::sendEvent(pWatched, &tUsed);
    pWatched->installEventFilter(this);
    return true;
  }

  QString FilterText(const QString& sTyped) {
    QString sUsed;
    for (const uint lTyped : sTyped.toUcs4()) {
      const auto lUsed = static_cast<char32_t>(KeyPress(static_cast<std::int32_t>(lTyped)));
      if (lUsed != 0) sUsed += QString::fromUcs4(&lUsed, 1);
    }
    return sUsed;
  }

  QtForm& frm;
  std::int16_t iControl;
};

// ---- Text boxes ---------------------------------------------------------------------------------

/// A text box as the seam has it: what comes into it by other ways than typing, and no selection
/// shown without the keyboard, as on Windows.
class FieldEdit : public QLineEdit {
 public:
  explicit FieldEdit(QWidget* pParent) : QLineEdit(pParent) { HideSelectionAway(); }

 protected:
  void changeEvent(QEvent* pEvent) override {
    QLineEdit::changeEvent(pEvent);
    if (pEvent->type() == QEvent::PaletteChange) HideSelectionAway();
  }

  /// Qt's menu without the keys beside its entries, which a form's logic may have no use for.
  void contextMenuEvent(QContextMenuEvent* pEvent) override {
    QMenu* const mnuEdit = createStandardContextMenu();
    if (mnuEdit == nullptr) return;
    mnuEdit->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* pItem : mnuEdit->actions()) {
      pItem->setText(pItem->text().section(QLatin1Char('\t'), 0, 0));
      if (pItem->text() != QLineEdit::tr("&Paste")) continue;
      pItem->disconnect(this);
      QObject::connect(pItem, &QAction::triggered, this,
                       [this]() { Insert(QGuiApplication::clipboard()->text()); });
    }
    mnuEdit->popup(pEvent->globalPos());
  }

  void keyPressEvent(QKeyEvent* pEvent) override {
    pEvent->matches(QKeySequence::Paste) ? Insert(QGuiApplication::clipboard()->text())
                                         : QLineEdit::keyPressEvent(pEvent);
  }

  void mouseReleaseEvent(QMouseEvent* pEvent) override {
    const QClipboard* pClipboard = QGuiApplication::clipboard();
    if (pEvent->button() != Qt::MiddleButton || !pClipboard->supportsSelection())
      return QLineEdit::mouseReleaseEvent(pEvent);
    deselect();
    Insert(pClipboard->text(QClipboard::Selection));
  }

  // That the text is selected as the focus comes is told with the focus, not before it.
  void focusInEvent(QFocusEvent* pEvent) override {
    const UntoldChange tUntold;
    QLineEdit::focusInEvent(pEvent);
  }

  // A full box takes nothing, and says so while the text is still held over it.
  void dragEnterEvent(QDragEnterEvent* pEvent) override {
    IsFull() ? pEvent->ignore() : QLineEdit::dragEnterEvent(pEvent);
  }
  void dragMoveEvent(QDragMoveEvent* pEvent) override {
    IsFull() ? pEvent->ignore() : QLineEdit::dragMoveEvent(pEvent);
  }
  void dropEvent(QDropEvent* pEvent) override {
    if (pEvent->source() == this) return QLineEdit::dropEvent(pEvent);
    QDragLeaveEvent tLeave;
    dragLeaveEvent(&tLeave);  // takes away the mark of where the text would go
    deselect();
    setCursorPosition(cursorPositionAt(pEvent->position().toPoint()));
    Insert(pEvent->mimeData()->text());
    pEvent->acceptProposedAction();
  }

 private:
  /// Within the window Qt takes the selection away with the focus; in a window that is not the
  /// active one it keeps it, for when the focus comes back.
  void HideSelectionAway() {
    QPalette tPalette = palette();
    for (const auto& [eSelected, eUsual] : {std::pair(QPalette::Highlight, QPalette::Base),
                                            {QPalette::HighlightedText, QPalette::Text}}) {
      tPalette.setColor(QPalette::Inactive, eSelected, tPalette.color(QPalette::Inactive, eUsual));
    }
    if (tPalette != palette()) setPalette(tPalette);
  }

  bool IsFull() const { return text().size() >= maxLength(); }

  void Insert(const QString& sText) {
    const qsizetype lKept = text().size() - selectedText().size();
    const bool bTrimmed = lKept == 0 || lKept + sText.size() > maxLength();
    insert(bTrimmed ? sText.trimmed() : sText);
  }
};

/// A text box in the listing's font, edited in place over a list line: its text stands exactly at
/// its place's left edge, over the list's columns, and its frame around that.
class InPlaceEdit final : public FieldEdit {
 public:
  static constexpr int OUTSET = 3;  ///< frame and margin left of the text

  explicit InPlaceEdit(QWidget* pParent) : FieldEdit(pParent) {
    constexpr int QT_MARGIN = 2;  // a line edit's own, beside the text
    setFrame(false);
    setTextMargins(OUTSET - QT_MARGIN, 0, 0, 0);
  }

 protected:
  void paintEvent(QPaintEvent* pEvent) override {
    FieldEdit::paintEvent(pEvent);
    QPainter tPainter(this);
    tPainter.setOpacity(0.5);
    // Areas, not lines: a line of a fraction of a pixel would lose a side at 150 %.
    const QRegion tFrame = QRegion(rect()) - rect().adjusted(1, 1, -1, -1);
    for (const QRect& tSide : tFrame) tPainter.fillRect(tSide, palette().color(QPalette::Text));
  }
};

class QtTextBox final : public ControlOn<TextBox, QLineEdit> {
 public:
  using ControlOn::ControlOn;
  std::string Text() const override { return tWidget.text().toStdString(); }
  void SetText(std::string_view sText) override {
    const UntoldChange tUntold;
    tWidget.setText(TextOf(sText));
  }
  /// The focus may have gone on by the time that the form hears of it.
  void SelectAll() override {
    const UntoldChange tUntold;
    if (tWidget.window()->focusWidget() == &tWidget) tWidget.selectAll();
  }
  void SetAccessibleName(std::string_view sName) override { RenameField(tWidget, TextOf(sName)); }
};

// ---- Check boxes and buttons --------------------------------------------------------------------

/// A check box that keeps the mouse's press. One that ends an address field's edit lists the range,
/// and that moves the focus to the list: Qt would forget the press then.
class PressKeepingBox final : public QCheckBox {
 public:
  using QCheckBox::QCheckBox;

 protected:
  void mousePressEvent(QMouseEvent* pEvent) override {
    bMousePressed = true;
    QCheckBox::mousePressEvent(pEvent);
  }
  void mouseReleaseEvent(QMouseEvent* pEvent) override {
    bMousePressed = false;
    QCheckBox::mouseReleaseEvent(pEvent);
  }
  void focusOutEvent(QFocusEvent* pEvent) override {
    if (bMousePressed && isDown() && pEvent->reason() == Qt::OtherFocusReason) return update();
    QCheckBox::focusOutEvent(pEvent);
  }

 private:
  bool bMousePressed = false;
};

class QtCheckBox final : public ControlOn<CheckBox, QCheckBox> {
 public:
  using ControlOn::ControlOn;
  bool Checked() const override { return tWidget.isChecked(); }
};

/// A palette with black text on a background of its own, in light and dark themes alike.
QPalette PaletteOn(QPalette tPalette, std::int32_t lBackColor) {
  const auto lColor = static_cast<std::uint32_t>(lBackColor);
  const auto fnPart = [=](std::uint32_t lShift) {
    return static_cast<int>(lColor >> lShift & 0xFFU);
  };
  tPalette.setColor(QPalette::Base, QColor(fnPart(0), fnPart(8), fnPart(16)));
  tPalette.setColor(QPalette::Text, Qt::black);
  tPalette.setColor(QPalette::Highlight, QColor(0, 90, 180));
  tPalette.setColor(QPalette::HighlightedText, Qt::white);
  return tPalette;
}

template <class Interface, class Widget>
BuiltControl Built(Widget& tWidget, const ControlDesign& tDesign) {
  return {&tWidget, std::make_unique<ControlOn<Interface, Widget>>(tWidget, tDesign)};
}

BuiltControl BuildLabel(QWidget& tParent, const ControlDesign& tDesign) {
  auto* lbl = new QLabel(TextOf(tDesign.sCaption), &tParent);
  lbl->setTextFormat(Qt::PlainText);
  lbl->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  BuiltControl tBuilt = Built<Control>(*lbl, tDesign);
  // A font may be taller than the design's; letters must not lose their feet.
  lbl->resize(lbl->width(), std::max(lbl->height(), lbl->sizeHint().height()));
  return tBuilt;
}

BuiltControl BuildTextBox(QWidget& tParent, const ControlDesign& tDesign,
                          const ControlFonts& tFonts) {
  FieldEdit* txt = tDesign.bListingFont ? new InPlaceEdit(&tParent) : new FieldEdit(&tParent);
  if (tDesign.bListingFont) txt->setFont(tFonts.tListing);
  if (tDesign.iMaxLength > 0) txt->setMaxLength(tDesign.iMaxLength);
  if (tDesign.lBackColor >= 0) txt->setPalette(PaletteOn(txt->palette(), tDesign.lBackColor));
  return {txt, std::make_unique<QtTextBox>(*txt, tDesign,
                                           tDesign.bListingFont ? InPlaceEdit::OUTSET : 0)};
}

template <class Widget>
Widget* NewClickable(QtForm& frm, QWidget& tParent, const ControlDesign& tDesign) {
  auto* pWidget = new Widget(TextOf(tDesign.sCaption), &tParent);
  QObject::connect(pWidget, &QAbstractButton::clicked, &frm, [&frm, iControl = tDesign.iControl]() {
    frm.Deliver([=](FormEvents& tEvents) { tEvents.Click(iControl); });
  });
  return pWidget;
}

BuiltControl BuildKind(QtForm& frm, QWidget& tParent, const ControlDesign& tDesign,
                       const ControlFonts& tFonts) {
  switch (tDesign.eKind) {
    case ControlKind::TextBox:
      return BuildTextBox(tParent, tDesign, tFonts);
    case ControlKind::Button: {
      auto* cmd = NewClickable<QPushButton>(frm, tParent, tDesign);
      if (tDesign.tKey.iKeyCode != 0) {
        // As a click does, the key first leaves the field that was edited.
        auto* pKey = new QShortcut(KeysOf(tDesign.tKey), &frm);
        QObject::connect(pKey, &QShortcut::activated, cmd, [&frm, cmd]() {
          if (!cmd->isEnabled() || !cmd->isVisible()) return;
          cmd->setFocus(Qt::MouseFocusReason);
          frm.RunPosted();
          cmd->click();
        });
      }
      return Built<Control>(*cmd, tDesign);
    }
    case ControlKind::CheckBox: {
      auto* chk = NewClickable<PressKeepingBox>(frm, tParent, tDesign);
      return {chk, std::make_unique<QtCheckBox>(*chk, tDesign)};
    }
    case ControlKind::ListBox: {
      auto* lst = new ListView(frm, tDesign.iControl,
                               tDesign.bListingFont ? tFonts.tListing : tFonts.tForm, tParent);
      return {lst, std::make_unique<QtListBox>(*lst, tDesign)};
    }
    default:
      return BuildLabel(tParent, tDesign);
  }
}

}  // namespace

void YieldFocus(QWidget& tWidget) {
  if (tWidget.window()->focusWidget() != &tWidget) return;
  QWidget* const pClient = tWidget.parentWidget();
  QWidget* const lst = pClient->findChild<QListView*>();
  const bool bList =
      lst != nullptr && lst != &tWidget && lst->isEnabled() && lst->isVisibleTo(pClient);
  static_cast<QtForm&>(*tWidget.window()).TakeFocusTo(bList ? *lst : *pClient);
}

BuiltControl BuildControl(QtForm& frm, QWidget& tParent, const ControlDesign& tDesign,
                          const ControlFonts& tFonts) {
  BuiltControl tBuilt = BuildKind(frm, tParent, tDesign, tFonts);
  if (tDesign.eKind == ControlKind::Label) return tBuilt;
  tBuilt.pWidget->setAccessibleName(TextOf(tDesign.sCaption));
  // A list's scroll bars leave the focus where it is: a press between them takes it.
  const bool bList = tDesign.eKind == ControlKind::ListBox;
  tBuilt.pWidget->setFocusPolicy(tDesign.iTabOrder < 0 ? Qt::ClickFocus
                                 : bList               ? Qt::TabFocus
                                                       : Qt::StrongFocus);
  new ControlEvents(frm, *tBuilt.pWidget, tDesign);  // the widget's child
  return tBuilt;
}

}  // namespace platform::qt
