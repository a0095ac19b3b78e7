#pragma once

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/Toolkit.h"

/// What all toolkits have in common, whatever draws their windows: the life of a form, the one way
/// of events to its logic, and who owns whom.
namespace platform {

class FormCore;

class ToolkitCore : public Toolkit {
 public:
  void LoadForm(const FormDesign& tDesign, std::shared_ptr<FormEvents> pEvents) final;
  std::vector<std::shared_ptr<FormEvents>> LoadedForms() const final;
  Form* FormByName(std::string_view sName) final;
  Form* ActiveForm() final;
  void DoEvents() final;
  std::int32_t MessageBox(std::string_view sPrompt, std::int32_t lStyle,
                          std::string_view sTitle) final;
  Size ScreenSize() const final;
  bool IsEndingProgram() const final { return bEndingProgram; }

  // What follows is for the toolkit's own forms.

  /// Keeps a form that has unloaded until nobody can reach it any more.
  void FormUnloaded(const std::shared_ptr<FormCore>& pForm);
  void TellOfNoMemory();  ///< in a message box, where there is memory for that
  void NoteEndOfProgram() { bEndingProgram = true; }  ///< the system's doing
  /// Has Sweep called soon, once no handler is on the stack; unloaded forms may have become free.
  virtual void SweepLater() = 0;
  /// Exchanges the form whose event is being handled; gives the previous one, nullptr for none.
  FormCore* ExchangeHandling(FormCore* pForm) { return std::exchange(pHandling, pForm); }

 protected:
  /// Builds a form, unseen; its Load comes later.
  virtual std::shared_ptr<FormCore> NewForm(const FormDesign& tDesign,
                                            std::shared_ptr<FormEvents> pEvents) = 0;
  /// The form that is active itself or by a dialog; nullptr: none.
  virtual FormCore* FrontForm() = 0;
  virtual void RunPendingEvents() = 0;
  /// A modal message box over a form, or over no window when that is nullptr or unseen.
  virtual std::int32_t RunMessageBox(FormCore* pOwner, std::string_view sPrompt,
                                     std::int32_t lStyle, std::string_view sTitle) = 0;
  virtual Size ScreenPixels() const = 0;

  const std::vector<std::shared_ptr<FormCore>>& Forms() const { return apForm; }
  void Sweep();         ///< lets go of unloaded forms that nobody can reach any more
  void LetGoOfForms();  ///< for the end, while the window system is still there

 private:
  struct UnloadedForm {
    std::shared_ptr<FormCore> pForm;
    std::weak_ptr<FormEvents> pEvents;
  };

  std::vector<std::shared_ptr<FormCore>> apForm;  // loaded or unloading, oldest first
  std::vector<UnloadedForm> atUnloaded;
  FormCore* pHandling = nullptr;
  bool bEndingProgram = false;
  bool bTellingOfNoMemory = false;
  std::chrono::steady_clock::time_point tLastEvents;
};

/// A form. Every event reaches its logic through Deliver. An unloaded form stays as a hidden window
/// whose methods do no harm, until its logic is gone and nothing of the form is on the stack.
class FormCore : public Form, public std::enable_shared_from_this<FormCore> {
 public:
  FormCore(ToolkitCore& tItsToolkit, std::string_view sItsName, std::shared_ptr<FormEvents> pLogic);
  ~FormCore() override;
  FormCore(const FormCore&) = delete;
  FormCore& operator=(const FormCore&) = delete;

  Control& ControlOf(std::int16_t iControl) final { return *colControl.at(iControl); }
  TextBox& TextBoxOf(std::int16_t iControl) final;
  CheckBox& CheckBoxOf(std::int16_t iControl) final;
  ListBox& ListBoxOf(std::int16_t iControl) final;
  std::string Name() const final { return sName; }
  FormPlace Place() const final;
  void SetTop(double dTop) final;
  void SetLeft(double dLeft) final;
  void SetHeight(double dHeight) final;
  void SetWidth(double dWidth) final;
  Size InnerSize() const final;
  void Unload() final;

  void Load();  ///< raises the Load event; lets its errors through
  bool IsUnloaded() const { return eLife == Life::Unloaded; }  ///< QueryUnload has ended
  bool WasShown() const { return bShown; }
  const std::shared_ptr<FormEvents>& Logic() const { return pEvents; }

  /// The one way of every event to the form's logic: gives what fnCall gives, or the result type's
  /// default when the form is closing, or when memory ran out, which the user is told. Form and
  /// logic stay alive until it returns.
  template <class Call>
  auto Deliver(Call&& fnCall) {
    using Result = std::invoke_result_t<Call, FormEvents&>;
    if (eLife != Life::Loaded) return Result();
    const Delivery tDelivery(*this);
    try {
      return std::forward<Call>(fnCall)(*tDelivery.pLogic);
    } catch (const std::bad_alloc&) {
      tToolkit.TellOfNoMemory();
    }
    return Result();
  }

 protected:
  /// A place in pixels.
  struct PixelPlace {
    std::int32_t lLeft, lTop, lWidth, lHeight;
  };
  virtual PixelPlace OuterPlace() const = 0;
  virtual void SetOuterPlace(const PixelPlace& tPlace) = 0;
  virtual Size InnerPixels() const = 0;
  /// Stops the timer, has all that is modal to the form come back, and hides the window.
  virtual void Vanish() = 0;

  void AddControl(std::int16_t iControl, std::unique_ptr<Control> pControl);
  /// Ends the way of events for good: the window is about to be destroyed.
  void Silence() { eLife = Life::Unloaded; }
  /// Reports a resize when size or state are not what was reported last; nothing before the form
  /// was shown.
  void ReportResize();
  /// Reports a resize even so: the form had asked for something that had to wait.
  void ReportResizeAgain();
  void NoteShown() { bShown = true; }

 private:
  enum class Life : std::uint8_t { Loaded, Unloading, Unloaded };

  /// What holds while an event is handled: form and logic live, and message boxes know their owner.
  struct Delivery {
    explicit Delivery(FormCore& frm);
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;
    std::shared_ptr<FormCore> pForm;
    std::shared_ptr<FormEvents> pLogic;
    FormCore* pPrevious;
  };

  ToolkitCore& tToolkit;
  std::shared_ptr<FormEvents> pEvents;
  std::string sName;
  std::map<std::int16_t, std::unique_ptr<Control>> colControl;
  Life eLife = Life::Loaded;
  bool bShown = false;
  std::optional<std::array<std::int32_t, 3>> alReportedSize;  // width, height and state
};

}  // namespace platform
