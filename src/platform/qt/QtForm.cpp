#include "platform/qt/QtForm.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QCursor>
#include <QDialog>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QIcon>
#include <QListView>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>
#include <cmath>

#include "platform/qt/QtControls.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtMetrics.h"

namespace platform::qt {

QtForm::Delivery::Delivery(QtForm& frm)
    : pForm(frm.shared_from_this()),
      pLogic(frm.pEvents),
      pPrevious(frm.tToolkit.ExchangeHandling(&frm)) {}

QtForm::Delivery::~Delivery() {
  pForm->tToolkit.ExchangeHandling(pPrevious);
  if (pForm->IsUnloaded()) pForm->tToolkit.SweepLater();
}

QtForm::QtForm(QtToolkit& tItsToolkit, const FormDesign& tDesign,
               std::shared_ptr<FormEvents> pLogic)
    : tToolkit(tItsToolkit),
      pEvents(std::move(pLogic)),
      sName(tDesign.sName),
      pClient(new QWidget(this)),
      tMenus(*this, tDesign.atMenu, [this](std::int16_t iMenu, std::int16_t iIndex) {
        Deliver([=](FormEvents& tEvents) { tEvents.MenuClick(iMenu, iIndex); });
      }) {
  setObjectName(TextOf(tDesign.sName));
  setWindowTitle(TextOf(tDesign.sCaption));
  BuildControls(tDesign);
  tmrForm.setInterval(tDesign.iTimerInterval);
  QObject::connect(&tmrForm, &QTimer::timeout, this,
                   [this]() { Deliver([](FormEvents& tEvents) { tEvents.Timer(); }); });
  tWanted = geometry();
}

QtForm::~QtForm() {
  // The children go while this object still answers them: losing the focus is an event, too.
  eLife = Life::Unloaded;
  delete pClient;
}

void QtForm::BuildControls(const FormDesign& tDesign) {
  const ControlFonts tFonts{FormFont(tDesign), ListingFont(tDesign)};
  setFont(tFonts.tForm);
  // Said in full, or the bar would take the form's narrow face, unlike its menus.
  QFont tBarFont = QApplication::font("QMenuBar");
  tBarFont.setResolveMask(QFont::AllPropertiesResolved);
  tMenus.Bar().setFont(tBarFont);
  std::map<std::int16_t, QWidget*> colTab;
  for (const ControlDesign& tControl : tDesign.atControl) {
    BuiltControl tBuilt = BuildControl(*this, *pClient, tControl, tFonts);
    if (tControl.iTabOrder >= 0) colTab.emplace(tControl.iTabOrder, tBuilt.pWidget);
    colControl.emplace(tControl.iControl, std::move(tBuilt.pControl));
  }
  QWidget* pBefore = nullptr;
  for (const auto& [iOrder, pWidget] : colTab) {
    if (pBefore != nullptr) QWidget::setTabOrder(pBefore, pWidget);
    pBefore = pWidget;
  }
}

Control& QtForm::ControlOf(std::int16_t iControl) { return *colControl.at(iControl); }

TextBox& QtForm::TextBoxOf(std::int16_t iControl) {
  return dynamic_cast<TextBox&>(ControlOf(iControl));
}

CheckBox& QtForm::CheckBoxOf(std::int16_t iControl) {
  return dynamic_cast<CheckBox&>(ControlOf(iControl));
}

ListBox& QtForm::ListBoxOf(std::int16_t iControl) {
  return dynamic_cast<ListBox&>(ControlOf(iControl));
}

std::string QtForm::Name() const { return sName; }

std::string QtForm::Caption() const { return windowTitle().toStdString(); }

void QtForm::SetCaption(std::string_view sCaption) { setWindowTitle(TextOf(sCaption)); }

// ---- Place --------------------------------------------------------------------------------------

QRect QtForm::OuterPlace() const {
  return bFrameKnown ? geometry().marginsAdded(windowHandle()->frameMargins()) : tWanted;
}

void QtForm::SetOuterPlace(const QRect& tPlace) {
  tToolkit.NoteOwnAction();
  // Windows, too, limits a window to the size of the desktop.
  const QSize tMost = QGuiApplication::primaryScreen()->virtualSize();
  tWanted = QRect(tPlace.topLeft(), tPlace.size().boundedTo(tMost).expandedTo(QSize(0, 0)));
  if (isVisible() && State() != WindowState::Normal) return;
  const QMargins tFrame = windowHandle() != nullptr ? windowHandle()->frameMargins() : QMargins();
  move(tWanted.topLeft());
  resize(tWanted.marginsRemoved(tFrame).size().expandedTo(QSize(0, 0)));
}

FormPlace QtForm::Place() const {
  const QRect tPlace = OuterPlace();
  return {tPlace.top() * TwipsPerPixelY(), tPlace.left() * TwipsPerPixelX(),
          tPlace.height() * TwipsPerPixelY(), tPlace.width() * TwipsPerPixelX()};
}

void QtForm::SetTop(double dTop) {
  QRect tPlace = OuterPlace();
  tPlace.moveTop(PixelsY(dTop));
  SetOuterPlace(tPlace);
}

void QtForm::SetLeft(double dLeft) {
  QRect tPlace = OuterPlace();
  tPlace.moveLeft(PixelsX(dLeft));
  SetOuterPlace(tPlace);
}

void QtForm::SetHeight(double dHeight) {
  QRect tPlace = OuterPlace();
  tPlace.setHeight(PixelsY(dHeight));
  SetOuterPlace(tPlace);
}

void QtForm::SetWidth(double dWidth) {
  QRect tPlace = OuterPlace();
  tPlace.setWidth(PixelsX(dWidth));
  SetOuterPlace(tPlace);
}

QRect QtForm::ClientPlace() const {
  const int lBar = tMenus.BarHeight();
  return {0, lBar, width(), std::max(0, height() - lBar)};
}

Size QtForm::InnerSize() const {
  const QSize tSize = ClientPlace().size();
  return {static_cast<std::int32_t>(std::lround(tSize.width() * TwipsPerPixelX())),
          static_cast<std::int32_t>(std::lround(tSize.height() * TwipsPerPixelY()))};
}

WindowState QtForm::State() const {
  if (isMinimized()) return WindowState::Minimized;
  return isMaximized() ? WindowState::Maximized : WindowState::Normal;
}

void QtForm::SetState(WindowState eState) {
  if (IsUnloaded() || eState == State()) return;
  tToolkit.NoteOwnAction();
  Qt::WindowStates tStates = windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized);
  if (eState == WindowState::Minimized) tStates |= Qt::WindowMinimized;
  if (eState == WindowState::Maximized) tStates |= Qt::WindowMaximized;
  setWindowState(tStates);
}

// ---- Showing ------------------------------------------------------------------------------------

void QtForm::Show() {
  if (IsUnloaded()) return;
  tToolkit.NoteOwnAction();
  const bool bFirst = !std::exchange(bShown, true);
  if (bFirst) {
    create();
    windowHandle()->installEventFilter(this);
  }
  show();
  BringToTop();
  SetFocus();
}

void QtForm::BringToTop() {
  tToolkit.NoteOwnAction();
  raise();
}

void QtForm::SetFocus() {
  if (!isVisible()) return;
  tToolkit.NoteOwnAction();
  bActivationAsked = !isActiveWindow();
  activateWindow();
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

void QtForm::ShowPopupMenu(std::int16_t iMenu) {
  QMenu* mnuPopup = tMenus.Popup(iMenu);
  if (mnuPopup == nullptr || IsUnloaded()) return;
  const std::shared_ptr<QtForm> pKeep = shared_from_this();
  mnuPopup->exec(QCursor::pos());
  if (IsUnloaded()) tToolkit.SweepLater();
}

FileDialogResult QtForm::ShowFileDialog(const FileDialogRequest& tRequest) {
  return RunFileDialog(*this, tRequest);
}

int QtForm::RunDialog(QDialog& tDialog) {
  if (IsUnloaded()) return QDialog::Rejected;
  const std::shared_ptr<QtForm> pKeep = shared_from_this();
  tDialog.setWindowModality(Qt::WindowModal);
  apDialog.push_back(&tDialog);
  const int lResult = tDialog.exec();
  std::erase(apDialog, &tDialog);
  if (IsUnloaded()) {
    tToolkit.SweepLater();
    return QDialog::Rejected;
  }
  SetFocus();  // not every window manager gives it back to the dialog's owner by itself
  return lResult;
}

// ---- Life ---------------------------------------------------------------------------------------

void QtForm::Load() {
  Deliver([this](FormEvents& tEvents) { tEvents.Load(*this); });
  bLoadReturned = true;
  ReportResize();
}

bool QtForm::IsUnloaded() const { return eLife == Life::Unloaded; }

void QtForm::Unload() {
  if (eLife != Life::Loaded) return;
  const std::shared_ptr<QtForm> pKeep = shared_from_this();
  Deliver([this](FormEvents& tEvents) {
    eLife = Life::Unloading;
    tEvents.QueryUnload();
  });
  eLife = Life::Unloaded;
  tmrForm.stop();
  const std::vector<QDialog*> apOpen = apDialog;
  for (QDialog* pDialog : apOpen) pDialog->reject();
  for (QMenu* mnuOpen : findChildren<QMenu*>()) mnuOpen->close();
  tToolkit.NoteOwnAction();
  hide();
  tToolkit.FormUnloaded(pKeep);
  pEvents.reset();
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
  if (!std::exchange(bActivationAsked, false)) tToolkit.ReportFramePress();
  Post([](FormEvents& tEvents) { tEvents.Activate(); });
}

/// Sees what the window system sends to the window before any control does.
bool QtForm::eventFilter(QObject* pWatched, QEvent* pEvent) {
  switch (pEvent->type()) {
    case QEvent::Expose:
      // A window manager says how wide its frame is only once the window stands in it.
      if (!bFrameKnown && windowHandle()->isExposed()) {
        Post([this](FormEvents&) {
          SetOuterPlace(tWanted);
          bFrameKnown = true;
        });
      }
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
  if (pEvent->type() == QEvent::WindowStateChange) ReportResize();
}

void QtForm::closeEvent(QCloseEvent* pEvent) {
  pEvent->ignore();  // the form hides itself once it has unloaded
  Unload();
}

void QtForm::moveEvent(QMoveEvent* pEvent) {
  QWidget::moveEvent(pEvent);
  if (bFrameKnown && pEvent->spontaneous()) tToolkit.ReportFramePress();
}

void QtForm::resizeEvent(QResizeEvent* pEvent) {
  QWidget::resizeEvent(pEvent);
  tMenus.Bar().setGeometry(0, 0, width(), tMenus.BarHeight());
  pClient->setGeometry(ClientPlace());
  ReportResize();
}

void QtForm::ReportResize() {
  if (!bLoadReturned || !bShown) return;
  const std::pair tNow(size(), State());
  if (tReportedSize == tNow) return;
  tReportedSize = tNow;
  Deliver([](FormEvents& tEvents) { tEvents.Resize(); });
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
