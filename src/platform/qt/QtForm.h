#pragma once

#include <QTimer>
#include <QWidget>
#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/ToolkitCore.h"
#include "platform/qt/QtMenus.h"
#include "platform/qt/QtPlacing.h"
#include "platform/qt/QtToolkit.h"

class QDialog;

namespace platform::qt {

/// A form, which is its own top-level window.
class QtForm final : public QWidget, public FormCore {
 public:
  QtForm(QtToolkit& tItsToolkit, const FormDesign& tDesign, std::shared_ptr<FormEvents> pLogic);
  ~QtForm() override;
  QtForm(const QtForm&) = delete;
  QtForm& operator=(const QtForm&) = delete;

  std::string Caption() const override;
  void SetCaption(std::string_view sCaption) override;
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
  void ShowPopupMenu(std::int16_t iMenu, std::optional<TwipsPoint> tAt) override;
  FileDialogResult ShowFileDialog(const FileDialogRequest& tRequest) override;

  QtToolkit& OwnToolkit() const { return tToolkit; }

  /// Delivers from the event loop, for events that arise where Qt must not be disturbed, as in the
  /// middle of a change of focus; not at all when the form is closing by then.
  void Post(std::function<void(FormEvents&)> fnCall);
  void RunPosted();  ///< delivers at once what was posted

  /// Notes the control that got the focus; gives the one that got it before, or -1.
  std::int16_t NoteFocus(std::int16_t iControl) { return std::exchange(iFocus, iControl); }

  /// Moves the focus without the control that has it being left by the user.
  void TakeFocusTo(QWidget& tWidget);
  bool IsFocusTaken() const { return bFocusTaken; }  ///< it is being moved so

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
  void BuildControls(const FormDesign& tDesign);
  PixelPlace OuterPlace() const override;
  void SetOuterPlace(const PixelPlace& tPlace) override;
  Size InnerPixels() const override;
  void Vanish() override;
  QMargins Frame() const;
  void RequestPlace();
  void NoteChange();
  void ReportChange();
  void LetPlacingTick();
  QRect ClientPlace() const;
  void MapAgain();
  void ReportActivation();
  bool FrameWasPressed() const;

  QtToolkit& tToolkit;
  QWidget* pClient;
  QtMenus tMenus;
  QTimer tmrForm;
  QTimer tmrFocus;  // runs while a Wayland compositor was asked for the focus
  std::int16_t iFocus = -1;
  bool bFocusTaken = false;
  QtPlacing tPlacing;
  QTimer tmrPlacing;  // runs until the window is at rest
  std::array<std::uint32_t, 2> ahIcon{};
  std::vector<QDialog*> apDialog;  // open, innermost last
  std::deque<std::function<void(FormEvents&)>> afnPosted;
};

}  // namespace platform::qt
