#include "platform/qt/QtForm.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QCursor>
#include <QDialog>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QIcon>
#include <QListView>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/qt/QtAccessible.h"
#include "platform/qt/QtControls.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtMetrics.h"

namespace platform::qt {

namespace {

/// How long a Wayland compositor may take to give a window the focus.
constexpr std::chrono::milliseconds FOCUS_PATIENCE{300};

}  // namespace

QtForm::QtForm(QtToolkit& tItsToolkit, const FormDesign& tDesign,
               std::shared_ptr<FormEvents> pLogic)
    : FormCore(tItsToolkit, tDesign.sName, std::move(pLogic)),
      tToolkit(tItsToolkit),
      pClient(new QWidget(this)),
      tMenus(*this, tDesign.atMenu, [this](std::int16_t iMenu, std::int16_t iIndex) {
        Deliver([=](FormEvents& tEvents) { tEvents.MenuClick(iMenu, iIndex); });
      }) {
  setObjectName(TextOf(tDesign.sName));
  setWindowTitle(TextOf(tDesign.sCaption));
  BuildControls(tDesign);
  tmrForm.setInterval(tDesign.iTimerInterval);
  tmrFocus.setSingleShot(true);
  QObject::connect(&tmrFocus, &QTimer::timeout, this, [this]() { MapAgain(); });
  QObject::connect(&tmrForm, &QTimer::timeout, this,
                   [this]() { Deliver([](FormEvents& tEvents) { tEvents.Timer(); }); });
  tmrPlacing.setInterval(QtPlacing::TICK_MS);
  QObject::connect(&tmrPlacing, &QTimer::timeout, this, &QtForm::LetPlacingTick);
  tPlacing.Ask(geometry());
}

QtForm::~QtForm() {
  // The children go while this object still answers them: losing the focus is an event, too.
  Silence();
  delete pClient;
}

void QtForm::BuildControls(const FormDesign& tDesign) {
  const ControlFonts tFonts{FormFont(tDesign), ListingFont(tDesign)};
  setFont(tFonts.tForm);
  // Said in full, or the bar would take the form's narrow face, unlike its menus.
  QFont tBarFont = QApplication::font(&tMenus.Bar());
  tBarFont.setResolveMask(QFont::AllPropertiesResolved);
  tMenus.Bar().setFont(tBarFont);
  setMinimumSize(PixelsX(tDesign.tSmallest.lWidth),
                 tMenus.BarHeight() + PixelsY(tDesign.tSmallest.lHeight));
  std::map<std::int16_t, QWidget*> colTab;
  for (const ControlDesign& tControl : tDesign.atControl) {
    BuiltControl tBuilt = BuildControl(*this, *pClient, tControl, tFonts);
    if (tControl.iTabOrder >= 0) colTab.emplace(tControl.iTabOrder, tBuilt.pWidget);
    AddControl(tControl.iControl, std::move(tBuilt.pControl));
  }
  QWidget* pBefore = nullptr;
  for (const auto& [iOrder, pWidget] : colTab) {
    if (pBefore != nullptr) QWidget::setTabOrder(pBefore, pWidget);
    pBefore = pWidget;
  }
}

std::string QtForm::Caption() const { return windowTitle().toStdString(); }

void QtForm::SetCaption(std::string_view sCaption) { setWindowTitle(TextOf(sCaption)); }

// ---- Place --------------------------------------------------------------------------------------

QMargins QtForm::Frame() const {
  return windowHandle() != nullptr ? windowHandle()->frameMargins() : QMargins();
}

QtForm::PixelPlace QtForm::OuterPlace() const {
  // On Wayland no program learns where its windows stand.
  const QRect tPlace = tPlacing.Outer(geometry(), Frame(), !QtToolkit::OnWayland());
  return {tPlace.left(), tPlace.top(), tPlace.width(), tPlace.height()};
}

/// A minimized or maximized window keeps its place.
void QtForm::SetOuterPlace(const PixelPlace& tPlace) {
  if (isVisible() && State() != WindowState::Normal) return;
  // Windows, too, limits a window to the size of the desktop.
  const QSize tMost = QGuiApplication::primaryScreen()->virtualSize();
  if (tPlacing.Ask({tPlace.lLeft, tPlace.lTop, std::min(tPlace.lWidth, tMost.width()),
                    std::min(tPlace.lHeight, tMost.height())})) {
    RequestPlace();
  }
}

/// Passes an asked place on, once more when the frame turns out to be another.
void QtForm::RequestPlace() {
  if (isVisible() && State() != WindowState::Normal) return;
  const std::optional<QRect> tOuter = tPlacing.Request(Frame());
  if (!tOuter.has_value()) return;
  tToolkit.NoteOwnAction();
  const QSize tClient = tOuter->size().shrunkBy(Frame()).expandedTo(minimumSize());
  if (!isVisible()) {
    move(tOuter->topLeft());
    resize(tClient);
    return;
  }
  // The widget learns from the window system alone how large it is: asked itself, it would take the
  // size for granted, and where that is refused, it would hear of nothing.
  const QPoint tCorner(Frame().left(), Frame().top());
  windowHandle()->setGeometry(QRect(tOuter->topLeft() + tCorner, tClient));
  if (tPlacing.WasExposed()) tmrPlacing.start();
}

/// The window is not what it was, by whosever doing.
void QtForm::NoteChange() {
  tPlacing.Changed();
  if (tPlacing.WasExposed()) tmrPlacing.start();
  if (WasShown()) RequestPlace();
}

void QtForm::ReportChange() {
  NoteChange();
  tPlacing.BeginReport();
  const auto tEnd = qScopeGuard([this]() { tPlacing.EndReport(); });
  ReportResize();
}

void QtForm::LetPlacingTick() {
  RequestPlace();
  if (!tPlacing.Tick()) return;
  tmrPlacing.stop();
  // A size that the window system gives while another one is asked for is lost on the widget: Qt
  // has it look at what was asked for, and tells nothing when that is refused. So the widget's
  // window is told again; the widget itself would keep to its smallest size, which is refused, too.
  const QRect tGiven = windowHandle()->geometry();
  if (tGiven != geometry()) {
    QMoveEvent tMove(tGiven.topLeft(), geometry().topLeft());
    QCoreApplication::sendEvent(windowHandle(), &tMove);
    QResizeEvent tResize(tGiven.size(), size());
    QCoreApplication::sendEvent(windowHandle(), &tResize);
  }
  update();  // what was drawn meanwhile was cut at the size that was asked for
  if (tPlacing.TakeWaiting()) ReportResizeAgain();
}

QRect QtForm::ClientPlace() const {
  const int lBar = tMenus.BarHeight();
  return {0, lBar, width(), std::max(0, height() - lBar)};
}

Size QtForm::InnerPixels() const {
  const QSize tSize = ClientPlace().size();
  return {tSize.width(), tSize.height()};
}

WindowState QtForm::State() const {
  if (isMinimized()) return WindowState::Minimized;
  // One that fills the screen is not at a place that the user gave it, either.
  return isMaximized() || isFullScreen() ? WindowState::Maximized : WindowState::Normal;
}

void QtForm::SetState(WindowState eState) {
  if (IsUnloaded() || eState == State()) return;
  tToolkit.NoteOwnAction();
  Qt::WindowStates tStates =
      windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen);
  if (eState == WindowState::Minimized) tStates |= Qt::WindowMinimized;
  if (eState == WindowState::Maximized) tStates |= Qt::WindowMaximized;
  setWindowState(tStates);
}

// ---- Showing ------------------------------------------------------------------------------------

void QtForm::Show() {
  if (IsUnloaded()) return;
  tToolkit.NoteOwnAction();
  const bool bWasVisible = isVisible();
  if (!WasShown()) {
    NoteShown();
    create();
    windowHandle()->installEventFilter(this);
  }
  show();
  BringToTop();
  SetFocus();
  if (bWasVisible && QtToolkit::OnWayland()) tmrFocus.start(FOCUS_PATIENCE);
}

/// A compositor need not hand the focus on, and mutter refuses it to a click of the mouse, as
/// Qt 6.4 names a later event for it. A window that comes anew is in front everywhere.
void QtForm::MapAgain() {
  if (!isVisible() || isActiveWindow() || !apDialog.empty() ||
      QGuiApplication::focusWindow() == nullptr)  // the user has gone elsewhere
    return;
  tToolkit.NoteOwnAction();
  hide();
  show();
}

void QtForm::BringToTop() {
  tToolkit.NoteOwnAction();
  raise();
}

void QtForm::SetFocus() {
  if (!isVisible()) return;
  tToolkit.NoteOwnAction();
  activateWindow();
  // On Wayland only the window that has the keyboard can hand it on, and while a menu's click is
  // handled none has it: its own window gets it back first.
  if (QGuiApplication::focusWindow() == nullptr && QtToolkit::OnWayland()) {
    QObject::connect(
        qApp, &QGuiApplication::focusWindowChanged, this,
        [this]() {
          if (isVisible() && tToolkit.FollowsOwnAction()) activateWindow();
        },
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
  }
}

void QtForm::TakeFocusTo(QWidget& tWidget) {
  const QScopedValueRollback tTaken(bFocusTaken, true);
  tWidget.setFocus(Qt::OtherFocusReason);
}

void QtForm::SetMousePointer(MousePointer ePointer) {
  ePointer == MousePointer::Hourglass ? setCursor(Qt::WaitCursor) : unsetCursor();
}

double QtForm::TextHeight(std::string_view sText) const {
  const auto lLines = 1 + std::ranges::count(sText, '\n');
  return QFontMetricsF(font()).height() * static_cast<double>(lLines) * TwipsPerPixelY();
}

void QtForm::SetTimerEnabled(bool bEnabled) {
  if (bEnabled == tmrForm.isActive() || IsUnloaded()) return;
  bEnabled ? tmrForm.start() : tmrForm.stop();
}

void QtForm::SetIcon(IconKind eKind, std::uint32_t hIcon) {
  ahIcon.at(static_cast<std::size_t>(eKind)) = hIcon;
  QIcon tIcon;
  for (const std::uint32_t hKind : ahIcon) {
    if (const QImage* pImage = tToolkit.Icon(hKind)) tIcon.addPixmap(QPixmap::fromImage(*pImage));
  }
  setWindowIcon(tIcon);
}

// ---- Menus and dialogs --------------------------------------------------------------------------

void QtForm::LoadMenuItem(std::int16_t iMenu, std::int16_t iIndex) {
  tMenus.LoadItem(iMenu, iIndex);
}

void QtForm::UnloadMenuItem(std::int16_t iMenu, std::int16_t iIndex) {
  tMenus.UnloadItem(iMenu, iIndex);
}

void QtForm::SetMenuCaption(std::int16_t iMenu, std::int16_t iIndex, std::string_view sCaption) {
  // Only designed captions have an access key.
  if (QAction* pItem = tMenus.Item(iMenu, iIndex))
    pItem->setText(TextOf(sCaption).replace(QLatin1Char('&'), QLatin1String("&&")));
}

void QtForm::SetMenuChecked(std::int16_t iMenu, std::int16_t iIndex, bool bChecked) {
  if (QAction* pItem = tMenus.Item(iMenu, iIndex)) {
    pItem->setCheckable(bChecked);
    pItem->setChecked(bChecked);
  }
}

void QtForm::SetMenuVisible(std::int16_t iMenu, std::int16_t iIndex, bool bVisible) {
  if (QAction* pItem = tMenus.Item(iMenu, iIndex)) pItem->setVisible(bVisible);
}

void QtForm::ShowPopupMenu(std::int16_t iMenu, std::optional<TwipsPoint> tAt) {
  QMenu* mnuPopup = tMenus.Popup(iMenu);
  if (mnuPopup == nullptr || IsUnloaded()) return;
  const auto pKeep = shared_from_this();
  ReportPopupSoon(*mnuPopup);
  mnuPopup->exec(tAt.has_value()
                     ? pClient->mapToGlobal(QPoint(PixelsX(tAt->lLeft), PixelsY(tAt->lTop)))
                     : QCursor::pos());
  if (IsUnloaded()) tToolkit.SweepLater();
}

FileDialogResult QtForm::ShowFileDialog(const FileDialogRequest& tRequest) {
  return RunFileDialog(*this, tRequest);
}

int QtForm::RunDialog(QDialog& tDialog) {
  if (IsUnloaded()) return QDialog::Rejected;
  const auto pKeep = shared_from_this();
  tDialog.setWindowModality(Qt::WindowModal);
  apDialog.push_back(&tDialog);
  // Some window managers give the keyboard to this form when it is clicked behind the dialog.
  const QMetaObject::Connection tWatch = QObject::connect(
      qGuiApp, &QGuiApplication::focusWindowChanged, this, [this, &tDialog](const QWindow* pNow) {
        if (pNow == windowHandle() && tDialog.isVisible()) apDialog.back()->activateWindow();
      });
  const int lResult = tDialog.exec();
  QObject::disconnect(tWatch);
  std::erase(apDialog, &tDialog);
  if (IsUnloaded()) {
    tToolkit.SweepLater();
    return QDialog::Rejected;
  }
  // Not every window manager gives the focus back to the dialog's owner by itself.
  const QWidget* pActive = QApplication::activeWindow();
  if (pActive == nullptr || pActive == this || pActive == &tDialog) SetFocus();
  return lResult;
}

void QtForm::Vanish() {
  tmrForm.stop();
  tmrPlacing.stop();
  const std::vector<QDialog*> apOpen = apDialog;
  for (QDialog* pDialog : apOpen) pDialog->reject();
  for (QMenu* mnuOpen : findChildren<QMenu*>()) mnuOpen->close();
  tToolkit.NoteOwnAction();
  hide();
}

// ---- What the window system tells ---------------------------------------------------------------

void QtForm::Post(std::function<void(FormEvents&)> fnCall) {
  afnPosted.push_back(std::move(fnCall));
  QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool QtForm::event(QEvent* pEvent) {
  if (pEvent->type() == QEvent::WindowActivate) ReportActivation();
  if (pEvent->type() != QEvent::User) return QWidget::event(pEvent);
  RunPosted();
  return true;
}

void QtForm::RunPosted() {
  while (!afnPosted.empty()) {
    const std::function<void(FormEvents&)> fnCall = std::move(afnPosted.front());
    afnPosted.pop_front();
    Deliver(fnCall);
  }
}

void QtForm::ReportActivation() {
  Post([this, bPressed = FrameWasPressed()](FormEvents& tEvents) {
    tEvents.Activate();
    if (bPressed) tToolkit.ReportFramePress();
  });
}

/// On Linux a window's frame belongs to the window manager, and presses on it are not shown to the
/// program; but what they bring about is: the window becomes active or moves while the pointer
/// stands on its frame. The same may come of the program's own doing, shortly after it.
bool QtForm::FrameWasPressed() const {
  const QPoint tPointer = QCursor::pos();
  return !tToolkit.FollowsOwnAction() && frameGeometry().contains(tPointer) &&
         !geometry().contains(tPointer);
}

/// Sees what the window system sends to the window before any control does.
bool QtForm::eventFilter(QObject* pWatched, QEvent* pEvent) {
  switch (pEvent->type()) {
    case QEvent::Expose:
      if (windowHandle()->isExposed()) tPlacing.Exposed();
      NoteChange();
      break;
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
      RunPosted();  // a quick click must not overtake the change of focus that its press made
      break;
    default:
      break;
  }
  return QWidget::eventFilter(pWatched, pEvent);
}

void QtForm::changeEvent(QEvent* pEvent) {
  QWidget::changeEvent(pEvent);
  if (pEvent->type() == QEvent::WindowStateChange) ReportChange();
}

void QtForm::closeEvent(QCloseEvent* pEvent) {
  Unload();
  pEvent->accept();  // a session that ends would ask no further form otherwise
}

void QtForm::moveEvent(QMoveEvent* pEvent) {
  QWidget::moveEvent(pEvent);
  NoteChange();
  if (tPlacing.IsPlaced() && pEvent->spontaneous() && FrameWasPressed())
    tToolkit.ReportFramePress();
}

void QtForm::resizeEvent(QResizeEvent* pEvent) {
  QWidget::resizeEvent(pEvent);
  tMenus.Bar().setGeometry(0, 0, width(), tMenus.BarHeight());
  pClient->setGeometry(ClientPlace());
  ReportChange();
}

void QtForm::wheelEvent(QWheelEvent* pEvent) {
  // A wheel turned over a control that stands on a list, such as an in-place editor, is the list's.
  for (QListView* lst : pClient->findChildren<QListView*>(Qt::FindDirectChildrenOnly)) {
    const QPointF tPoint = lst->viewport()->mapFromGlobal(pEvent->globalPosition());
    if (!lst->isVisible() || !lst->viewport()->rect().contains(tPoint.toPoint())) continue;
    QWheelEvent tTurn(tPoint, pEvent->globalPosition(), pEvent->pixelDelta(), pEvent->angleDelta(),
                      pEvent->buttons(), pEvent->modifiers(), pEvent->phase(), pEvent->inverted());
    QCoreApplication::sendEvent(lst->viewport(), &tTurn);
    return;
  }
  pEvent->ignore();
}

}  // namespace platform::qt
