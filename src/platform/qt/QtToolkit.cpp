#include "platform/qt/QtToolkit.h"

#include <QBuffer>
#include <QDialog>
#include <QIcon>
#include <QImageReader>
#include <QMouseEvent>
#include <QScreen>
#include <QStyle>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "platform/Environment.h"
#include "platform/StandardStreams.h"
#include "platform/ToolkitFactory.h"
#include "platform/linux/EndSignals.h"
#include "platform/qt/QtAccessible.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtForm.h"
#include "platform/qt/QtMetrics.h"
#include "platform/qt/QtStyle.h"

namespace platform {

namespace {

constexpr int NO_DISPLAY = 1;  // exit status

/// Qt aborts where it has no display, as if the program had crashed; what it says before that may
/// tell why it has none.
void EndWithoutDisplay(QtMsgType eType, const QMessageLogContext& /*tContext*/,
                       const QString& sMessage) {
  if (eType != QtFatalMsg) {
    PrintError(sMessage.toStdString() + '\n');
    return;
  }
  const auto fnVariable = [](const char* sName) {
    const char* const sValue = std::getenv(sName);
    return sName +
           (sValue != nullptr ? " is \"" + std::string(sValue) + '"' : std::string(" is not set"));
  };
  PrintError(std::string(::program_invocation_short_name) +
             ": there is no display to open a window on (" + fnVariable("DISPLAY") + ", " +
             fnVariable("WAYLAND_DISPLAY") + ")\n");
  std::quick_exit(NO_DISPLAY);
}

}  // namespace

std::unique_ptr<Toolkit> CreateToolkit(int& lArgc, char** asArgv) {
  const QtMessageHandler fnUsual = qInstallMessageHandler(EndWithoutDisplay);
  auto pToolkit = std::make_unique<qt::QtToolkit>(lArgc, asArgv);
  qInstallMessageHandler(fnUsual);
  return pToolkit;
}

namespace qt {

namespace {

using std::chrono::steady_clock;

/// How long the window system may take to carry out the program's own wishes for its windows.
constexpr std::chrono::milliseconds OWN_ACTION_ECHO{500};

constexpr std::uint32_t HOOK_HANDLE = 1;  // there is at most one hook
constexpr std::uintptr_t WM_NCLBUTTONDOWN = 0xA1;

std::intptr_t DefaultListProc(std::uint32_t /*hWnd*/, std::uint32_t /*uMsg*/,
                              std::uintptr_t /*wParam*/, std::intptr_t /*lParam*/) {
  return 0;
}

/// A press as the Windows message number: down, or the second down of a double-click.
std::uintptr_t PressMessage(const QMouseEvent& tPress) {
  constexpr std::uintptr_t WM_LBUTTONDOWN = 0x201;
  constexpr std::uintptr_t WM_RBUTTONDOWN = 0x204;
  constexpr std::uintptr_t WM_MBUTTONDOWN = 0x207;
  constexpr std::uintptr_t WM_XBUTTONDOWN = 0x20B;
  constexpr std::uintptr_t TO_DOUBLE_CLICK = 2;
  std::uintptr_t lDown = WM_XBUTTONDOWN;
  if (tPress.button() == Qt::LeftButton) lDown = WM_LBUTTONDOWN;
  if (tPress.button() == Qt::RightButton) lDown = WM_RBUTTONDOWN;
  if (tPress.button() == Qt::MiddleButton) lDown = WM_MBUTTONDOWN;
  return tPress.type() == QEvent::MouseButtonDblClick ? lDown + TO_DOUBLE_CLICK : lDown;
}

}  // namespace

/// Sees every press once: where it enters a window, before it goes from widget to widget.
class QtToolkit::MouseWatch final : public QObject {
 public:
  explicit MouseWatch(MouseProc fnItsProc) : fnProc(fnItsProc) { qApp->installEventFilter(this); }

  void Report(std::uintptr_t lMessage) const { fnProc(0, lMessage, 0); }

  bool eventFilter(QObject* pWatched, QEvent* pEvent) override {
    const bool bPress = pEvent->type() == QEvent::MouseButtonPress;
    if (pWatched->isWindowType() && (bPress || pEvent->type() == QEvent::MouseButtonDblClick)) {
      const auto& tPress = static_cast<const QMouseEvent&>(*pEvent);
      // The second press of a double-click comes both ways; it counts as the double-click.
      if (!bPress || tPress.flags() != Qt::MouseEventCreatedDoubleClick)
        Report(PressMessage(tPress));
    }
    return false;
  }

 private:
  MouseProc fnProc;
};

bool QtToolkit::Application::notify(QObject* pReceiver, QEvent* pEvent) {
  try {
    return QApplication::notify(pReceiver, pEvent);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

QtToolkit::QtToolkit(int& lArgc, char** asArgv)
    : tApplication(lArgc, asArgv), tEndSignal(CatchFirstEndSignal(), QSocketNotifier::Read) {
  // Forms are drawn for controls of the usual heights, which not every desktop's style keeps to.
  if (qEnvironmentVariableIsEmpty("QT_STYLE_OVERRIDE")) QApplication::setStyle(new FormStyle);
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the application owns its style
  InstallAccessibility();
  if (OnWayland()) {
    // Where the compositor leaves the title bar to Qt, that cuts a caption's end off, where the
    // window's number is, and knows no other font than the one of what is no widget.
    constexpr int CAPTION_STRETCH = 80;
    const QFont tUsual = QApplication::font();
    QFont tCaption = tUsual;
    tCaption.setStretch(CAPTION_STRETCH);
    QApplication::setFont(tCaption);
    QApplication::setFont(tUsual, "QWidget");
  }
  QApplication::setQuitOnLastWindowClosed(false);  // unseen forms count, too
  tmrSweep.setSingleShot(true);
  QObject::connect(&tmrSweep, &QTimer::timeout, &tmrSweep, [this]() { Sweep(); });
  // It stays readable: what opens after the signal, as behind a message at the start, closes, too.
  QObject::connect(&tEndSignal, &QSocketNotifier::activated, &tEndSignal, [this]() { CloseAll(); });
  QObject::connect(
      &tApplication, &QGuiApplication::commitDataRequest, &tApplication,
      [this](QSessionManager& /*tSession*/) { NoteEndOfProgram(); }, Qt::DirectConnection);
}

QtToolkit::~QtToolkit() { LetGoOfForms(); }

// ---- Forms and events ---------------------------------------------------------------------------

std::shared_ptr<FormCore> QtToolkit::NewForm(const FormDesign& tDesign,
                                             std::shared_ptr<FormEvents> pEvents) {
  return std::make_shared<QtForm>(*this, tDesign, std::move(pEvents));
}

FormCore* QtToolkit::FrontForm() {
  for (QWidget* pWidget = QApplication::activeWindow(); pWidget != nullptr;
       pWidget = pWidget->parentWidget()) {
    if (auto* pForm = dynamic_cast<QtForm*>(pWidget)) return pForm;
  }
  return nullptr;
}

void QtToolkit::Run() {
  bRunning = true;
  while (!Forms().empty()) QApplication::exec();
  bRunning = false;
}

void QtToolkit::SweepLater() {
  tmrSweep.start();
  if (bRunning && Forms().empty()) QApplication::exit();
}

bool QtToolkit::OnWayland() {
  return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void QtToolkit::CloseAll() {
  NoteEndOfProgram();
  // The oldest last: it is the place of the window closed last that the next start takes up.
  const std::vector<std::shared_ptr<FormCore>> apOpen(Forms().rbegin(), Forms().rend());
  for (const auto& pForm : apOpen) {
    if (pForm->WasShown()) pForm->Unload();
  }
  // A form that is not shown yet waits in a message, and what follows is its own to decide.
  for (QWidget* pWidget : QApplication::topLevelWidgets()) {
    if (auto* pDialog = qobject_cast<QDialog*>(pWidget)) pDialog->reject();
  }
}

void QtToolkit::RunPendingEvents() { QCoreApplication::processEvents(); }

void QtToolkit::EndProgram(std::int32_t lStatus) { std::quick_exit(lStatus); }

std::int32_t QtToolkit::RunMessageBox(FormCore* pOwner, std::string_view sPrompt,
                                      std::int32_t lStyle, std::string_view sTitle) {
  return qt::RunMessageBox(dynamic_cast<QtForm*>(pOwner), sPrompt, lStyle, sTitle);
}

// ---- Screen and icons ---------------------------------------------------------------------------

Size QtToolkit::ScreenPixels() const {
  const QSize tPixels = QGuiApplication::primaryScreen()->size();
  return {tPixels.width(), tPixels.height()};
}

double QtToolkit::TwipsPerPixelX() const { return qt::TwipsPerPixelX(); }

double QtToolkit::TwipsPerPixelY() const { return qt::TwipsPerPixelY(); }

Size QtToolkit::IconSize(IconKind eKind) const {
  const int lPixels = QApplication::style()->pixelMetric(
      eKind == IconKind::Small ? QStyle::PM_SmallIconSize : QStyle::PM_LargeIconSize);
  return {lPixels, lPixels};
}

std::uint32_t QtToolkit::LoadIcon(const std::string& sPath, Size tPixels) {
  // Read here, for Qt would wait for the writer of a pipe, and read a device for ever.
  const FileText tFile = ReadFileText(sPath);
  auto abFile = QByteArray::fromStdString(tFile.sText);
  QBuffer tBuffer(&abFile);
  QImageReader tReader(&tBuffer);
  QIcon tIcon;
  do {
    tIcon.addPixmap(QPixmap::fromImage(tReader.read()));
  } while (tReader.jumpToNextImage());
  // Of the file's pictures an icon gives the one nearest to the wanted size.
  const QImage tPicture = tIcon.pixmap(QSize(tPixels.lWidth, tPixels.lHeight), 1.0).toImage();
  if (tPicture.isNull()) return 0;
  // Every window loads the same icon: it is kept once.
  const auto itKept = std::ranges::find(atIcon, tPicture);
  const auto hIcon = static_cast<std::uint32_t>(itKept - atIcon.begin() + 1);
  if (itKept == atIcon.end()) atIcon.push_back(tPicture);
  return hIcon;
}

const QImage* QtToolkit::Icon(std::uint32_t hIcon) const {
  return hIcon == 0 || hIcon > atIcon.size() ? nullptr : &atIcon[hIcon - 1];
}

// ---- Mouse hook ---------------------------------------------------------------------------------

std::uint32_t QtToolkit::SetMouseHook(MouseProc fnMouseProc) {
  if (pMouseWatch != nullptr || fnMouseProc == nullptr) return 0;
  pMouseWatch = std::make_unique<MouseWatch>(fnMouseProc);
  return HOOK_HANDLE;
}

void QtToolkit::RemoveMouseHook(std::uint32_t hHook) {
  if (hHook == HOOK_HANDLE) pMouseWatch.reset();
}

std::intptr_t QtToolkit::CallNextHook(std::uint32_t /*hHook*/, std::int32_t /*nCode*/,
                                      std::uintptr_t /*wParam*/, std::intptr_t /*lParam*/) {
  return 0;
}

void QtToolkit::NoteOwnAction() { tLastOwnAction = steady_clock::now(); }

bool QtToolkit::FollowsOwnAction() const {
  return steady_clock::now() - tLastOwnAction < OWN_ACTION_ECHO;
}

void QtToolkit::ReportFramePress() const {
  if (pMouseWatch != nullptr) pMouseWatch->Report(WM_NCLBUTTONDOWN);
}

// ---- List subclassing ---------------------------------------------------------------------------

std::uint32_t QtToolkit::AddList() {
  colList.emplace(++hLastList, ListWindow{DefaultListProc, {}});
  return hLastList;
}

void QtToolkit::RemoveList(std::uint32_t hWnd) { colList.erase(hWnd); }

void QtToolkit::ListScrolled(std::uint32_t hWnd, std::uint32_t uMsg) {
  colList.at(hWnd).fnProc(hWnd, uMsg, 0, 0);
}

WindowProc QtToolkit::SetWindowProc(std::uint32_t hWnd, WindowProc fnProc) {
  const auto itList = colList.find(hWnd);
  if (itList == colList.end() || fnProc == nullptr) return nullptr;
  return std::exchange(itList->second.fnProc, fnProc);
}

std::intptr_t QtToolkit::CallWindowProc(WindowProc fnProc, std::uint32_t hWnd, std::uint32_t uMsg,
                                        std::uintptr_t wParam, std::intptr_t lParam) {
  return fnProc != nullptr ? fnProc(hWnd, uMsg, wParam, lParam) : 0;
}

WindowProc QtToolkit::GetProp(std::uint32_t hWnd, const char* sName) {
  const auto itList = colList.find(hWnd);
  if (itList == colList.end()) return nullptr;
  const auto itProp = itList->second.colProp.find(sName);
  return itProp == itList->second.colProp.end() ? nullptr : itProp->second;
}

void QtToolkit::SetProp(std::uint32_t hWnd, const char* sName, WindowProc fnValue) {
  if (const auto itList = colList.find(hWnd); itList != colList.end())
    itList->second.colProp[sName] = fnValue;
}

void QtToolkit::RemoveProp(std::uint32_t hWnd, const char* sName) {
  if (const auto itList = colList.find(hWnd); itList != colList.end())
    itList->second.colProp.erase(sName);
}

}  // namespace qt
}  // namespace platform
