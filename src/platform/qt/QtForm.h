#pragma once

#include <QTimer>
#include <QWidget>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/Toolkit.h"
#include "platform/qt/QtMenus.h"
#include "platform/qt/QtToolkit.h"

class QDialog;

namespace platform::qt {

/// A form, which is its own top-level window.
///
/// Every event reaches the form's logic through Deliver. An unloaded form stays as a hidden window
/// whose methods do no harm, until its logic is gone and nothing of the form is on the stack.
class QtForm final : public QWidget, public Form, public std::enable_shared_from_this<QtForm> {
 public:
  QtForm(QtToolkit& tItsToolkit, const FormDesign& tDesign, std::shared_ptr<FormEvents> pLogic);
  ~QtForm() override;
  QtForm(const QtForm&) = delete;
  QtForm& operator=(const QtForm&) = delete;

  Control& ControlOf(std::int16_t iControl) override;
  TextBox& TextBoxOf(std::int16_t iControl) override;
  CheckBox& CheckBoxOf(std::int16_t iControl) override;
  ListBox& ListBoxOf(std::int16_t iControl) override;
  std::string Name() const override;
  std::string Caption() const override;
  void SetCaption(std::string_view sCaption) override;
  FormPlace Place() const override;
  void SetTop(double dTop) override;
  void SetLeft(double dLeft) override;
  void SetHeight(double dHeight) override;
  void SetWidth(double dWidth) override;
  Size InnerSize() const override;
  WindowState State() const override;
  void SetState(WindowState eState) override;
  void Show() override;
  void BringToTop() override;
  void SetFocus() override;
  void SetMousePointer(MousePointer ePointer) override;
  double TextHeight(std::string_view sText) const override;
  void SetTimerEnabled(bool bEnabled) override;
  void SetIcon(IconKind eKind, std::uint32_t hIcon) override;
  void LoadMenuItem(std::int16_t iMenu, std::int16_t iIndex) override;
  void UnloadMenuItem(std::int16_t iMenu, std::int16_t iIndex) override;
  void SetMenuCaption(std::int16_t iMenu, std::int16_t iIndex, std::string_view sCaption) override;
  void SetMenuChecked(std::int16_t iMenu, std::int16_t iIndex, bool bChecked) override;
  void SetMenuVisible(std::int16_t iMenu, std::int16_t iIndex, bool bVisible) override;
  void ShowPopupMenu(std::int16_t iMenu) override;
  FileDialogResult ShowFileDialog(const FileDialogRequest& tRequest) override;
  void Unload() override;

  void Load();              ///< raises the Load event
  bool IsUnloaded() const;  ///< true once QueryUnload has ended
  QtToolkit& OwnToolkit() const { return tToolkit; }
  const std::shared_ptr<FormEvents>& Logic() const { return pEvents; }

  /// The one way of every event to the form's logic: gives what fnCall gives, or the result type's
  /// default when the form is closing. Form and logic stay alive until it returns.
  template <class Call>
  auto Deliver(Call&& fnCall) {
    using Result = std::invoke_result_t<Call, FormEvents&>;
    if (eLife != Life::Loaded) return Result();
    const Delivery tDelivery(*this);
    return std::forward<Call>(fnCall)(*tDelivery.pLogic);
  }

  /// Delivers from the event loop, for events that arise where Qt must not be disturbed, as in the
  /// middle of a change of focus; not at all when the form is closing by then.
  void Post(std::function<void(FormEvents&)> fnCall);

  /// Notes the control that got the focus; gives the one that got it before, or -1.
  std::int16_t NoteFocus(std::int16_t iControl) { return std::exchange(iFocus, iControl); }

  /// Runs a dialog that is modal to this form until it is answered or the form is unloaded; gives
  /// the dialog's result, QDialog::Rejected for an unloaded form.
  int RunDialog(QDialog& tDialog);

 protected:
  bool event(QEvent* pEvent) override;
  bool eventFilter(QObject* pWatched, QEvent* pEvent) override;
  void changeEvent(QEvent* pEvent) override;
  void closeEvent(QCloseEvent* pEvent) override;
  void moveEvent(QMoveEvent* pEvent) override;
  void resizeEvent(QResizeEvent* pEvent) override;
  void wheelEvent(QWheelEvent* pEvent) override;

 private:
  enum class Life : std::uint8_t { Loaded, Unloading, Unloaded };

  /// What holds while an event is handled: form and logic live, and message boxes know their owner.
  struct Delivery {
    explicit Delivery(QtForm& frm);
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;
    std::shared_ptr<QtForm> pForm;
    std::shared_ptr<FormEvents> pLogic;
    QtForm* pPrevious;
  };

  void BuildControls(const FormDesign& tDesign);
  QRect OuterPlace() const;
  void SetOuterPlace(const QRect& tPlace);
  QRect ClientPlace() const;
  void RunPosted();
  void ReportActivation();
  void ReportResize();

  QtToolkit& tToolkit;
  std::shared_ptr<FormEvents> pEvents;
  std::string sName;
  QWidget* pClient;
  QtMenus tMenus;
  std::map<std::int16_t, std::unique_ptr<Control>> colControl;
  QTimer tmrForm;
  Life eLife = Life::Loaded;
  std::int16_t iFocus = -1;
  bool bLoadReturned = false;
  bool bShown = false;
  bool bFrameKnown = false;
  bool bActivationAsked = false;
  QRect tWanted;  // the outer place, until the frame is known
  std::optional<std::pair<QSize, WindowState>> tReportedSize;
  std::array<std::uint32_t, 2> ahIcon{};
  std::vector<QDialog*> apDialog;  // open, innermost last
  std::deque<std::function<void(FormEvents&)>> afnPosted;
};

}  // namespace platform::qt
