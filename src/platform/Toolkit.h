#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The seam to the window toolkit: forms with their controls and menus, message boxes, the file
/// dialog, the mouse hook, list subclassing and icons.
///
/// The window's logic is written against these small abstract classes; a toolkit fulfils them, and
/// a recording stand-in does in tests. Lengths are in twips (1/1440 inch) unless a name says
/// pixels. Text is 8-bit: UTF-8 in captions, messages and text boxes, any byte in a list line.
namespace platform {

/// A rectangle in twips.
struct TwipsRect {
  std::int32_t lLeft = 0;
  std::int32_t lTop = 0;
  std::int32_t lWidth = 0;
  std::int32_t lHeight = 0;
};

/// A point in twips.
struct TwipsPoint {
  std::int32_t lLeft = 0;
  std::int32_t lTop = 0;
};

/// A size, in the unit that the giver names.
struct Size {
  std::int32_t lWidth = 0;
  std::int32_t lHeight = 0;
};

// ---- The design of a form -----------------------------------------------------------------------

enum class ControlKind : std::uint8_t { Label, TextBox, Button, CheckBox, ListBox };

/// A key that works wherever the focus is in the form, by its virtual-key code; 0: none.
struct KeyDesign {
  std::int16_t iKeyCode = 0;
  bool bControl = false;  ///< with Ctrl

  constexpr bool operator==(const KeyDesign&) const = default;
};

/// One control as designed. A caption names a text box or list for assistive tools only.
struct ControlDesign {
  std::int16_t iControl;  ///< the number that the form knows the control by
  ControlKind eKind;
  std::string_view sName;     ///< the control's own name, for tests and style sheets
  std::string_view sCaption;  ///< shown text, or the accessible name of a text box or list
  TwipsRect tPlace;
  std::int16_t iTabOrder = -1;   ///< place in the tab order from 0; -1: not reached by Tab
  std::int16_t iMaxLength = 0;   ///< most characters of a text box; 0: no limit
  bool bVisible = true;          ///< shown at load
  bool bListingFont = false;     ///< drawn in the form's listing font
  KeyDesign tKey{};              ///< presses the button, as a click does
  std::int32_t lBackColor = -1;  ///< 00BBGGRRH, with black text on it; -1: the theme's own
};

enum class MenuKind : std::uint8_t {
  Menu,       ///< opens its items; on the menu bar when it has no parent
  Popup,      ///< a menu that only ShowPopupMenu opens
  Item,       ///< a command
  Separator,  ///< a line between items
  ItemArray,  ///< a row of commands made at run time; element 0 always exists
};

/// One menu entry as designed; entries of one parent stand in table order.
struct MenuDesign {
  std::int16_t iMenu;
  std::int16_t iParent;  ///< the entry it belongs to; -1: none
  MenuKind eKind;
  std::string_view sCaption;
  bool bVisible = true;
  char bAccessKey = 0;  ///< a letter of the caption that opens the menu with Alt; 0: none
  KeyDesign tKey{};     ///< chooses the command
};

/// A form as designed: the one table that every toolkit builds its form from.
struct FormDesign {
  std::string_view sName;
  std::string_view sCaption;
  std::span<const ControlDesign> atControl;
  std::span<const MenuDesign> atMenu;
  std::string_view sListingFont;  ///< wanted family; the best fixed-pitch one where missing
  double dListingPoints;          ///< wanted size in points, bold
  std::int16_t iListingColumns;   ///< characters of a line that must be visible ...
  std::int32_t lListingWidth;     ///< ... in a list this wide, without scrolling sideways
  Size tSmallest;                 ///< least room for the controls, in twips
  std::int32_t lGreatestWidth;    ///< of the window, for who drags its frame, in twips; 0: any
  std::int16_t iTimerInterval;    ///< the form's timer, in milliseconds; disabled at load
};

// ---- Controls -----------------------------------------------------------------------------------

/// What all controls have. Focus events come from the event loop, after the handler that caused
/// them. A control that is disabled or hidden under the focus was not left by the user and raises
/// no LostFocus; the focus goes to the form's list box, where no key can do harm, or to nobody.
class Control {
 public:
  virtual ~Control() = default;
  virtual void SetEnabled(bool bEnabled) = 0;
  virtual bool Enabled() const = 0;
  virtual void SetVisible(bool bVisible) = 0;
  virtual bool Visible() const = 0;  ///< as set, whatever the form's own state
  virtual void SetFocus() = 0;
  virtual void Move(const TwipsRect& tPlace) = 0;
  virtual TwipsRect Place() const = 0;
  virtual void BringToFront() = 0;  ///< above the form's other controls
};

/// A field of one line. Blanks around text that is pasted or dropped are left out where it becomes
/// the whole contents, or would not fit otherwise; then it is cut at the maximum length.
class TextBox : public virtual Control {
 public:
  virtual std::string Text() const = 0;
  virtual void SetText(std::string_view sText) = 0;  ///< cut at the maximum length
  virtual void SelectAll() = 0;
  /// What assistive tools call it from now on; one that has the focus is announced by that name.
  virtual void SetAccessibleName(std::string_view sName) = 0;
};

class CheckBox : public virtual Control {
 public:
  virtual bool Checked() const = 0;
};

/// Columns of a list's lines, counted from 0: lFirst up to but not lEnd.
struct ColumnRange {
  std::int32_t lFirst;
  std::int32_t lEnd;
};

/// Where a list box takes its lines from; the form owns the lines, the list holds no copy.
class ListLines {
 public:
  virtual ~ListLines() = default;
  virtual std::int32_t LineCount() const = 0;
  /// The bytes of a line, 0 to LineCount() - 1; valid until the lines change.
  virtual std::string_view Line(std::int32_t lIndex) const = 0;
  /// The parts of every line that step back behind the others, which a list draws in a quieter
  /// shade; in ascending order, and as long-lived as the lines.
  virtual std::span<const ColumnRange> QuietColumns() const { return {}; }
};

/// A list of 8-bit text lines with one selectable line.
class ListBox : public virtual Control {
 public:
  /// Takes the lines from here on from pLines (nullptr: an empty list), which must outlive that.
  /// Nothing is selected and the top line is 0 afterwards.
  virtual void SetLines(const ListLines* pLines) = 0;
  /// Tells that lRemoved lines from lFirst on were replaced by lInserted others. Selection and top
  /// line stay with their lines; a selected line that was itself replaced leaves the selection at
  /// its index, or at the last inserted line where there are fewer (none when there is none).
  virtual void LinesReplaced(std::int32_t lFirst, std::int32_t lRemoved,
                             std::int32_t lInserted) = 0;
  virtual std::int32_t SelectedIndex() const = 0;  ///< -1: none
  /// Selects a line, without scrolling, and raises Click like a user's selection; -1 selects none.
  virtual void SetSelectedIndex(std::int32_t lIndex) = 0;
  virtual std::int32_t TopIndex() const = 0;  ///< the first visible line
  /// How far the lines are scrolled sideways, in twips: what of them lies left of the list.
  virtual std::int32_t LeftOffset() const = 0;
  virtual void ScrollToLeft() = 0;  ///< back sideways, to the first column
  /// The height of the part that shows whole lines, in twips: without borders and scroll bar.
  virtual std::int32_t InnerHeight() const = 0;
  /// Scrolls a line to the top, or as far up as the end of the list allows.
  virtual void SetTopIndex(std::int32_t lIndex) = 0;
  virtual std::int32_t ItemHeightPixels() const = 0;  ///< LB_GETITEMHEIGHT; below 1: unknown
  /// LB_ITEMFROMPOINT: the nearest line in the low 16 bits, the high ones 0 inside the client area.
  virtual std::uint32_t ItemFromPoint(std::int32_t lXPixels, std::int32_t lYPixels) const = 0;
  virtual double TextWidth(std::string_view sText) const = 0;  ///< in the list's font, in twips
  virtual std::uint32_t WindowHandle() const = 0;              ///< never 0; for subclassing
};

// ---- Forms --------------------------------------------------------------------------------------

enum class WindowState : std::uint8_t { Normal = 0, Minimized = 1, Maximized = 2 };

enum class MousePointer : std::uint8_t { Default, Hourglass };

enum class IconKind : std::uint8_t { Small = 0, Big = 1 };  ///< as WM_SETICON numbers them

/// A form's outer place in twips; fractions where a pixel is no whole number of twips.
struct FormPlace {
  double dTop = 0;
  double dLeft = 0;
  double dHeight = 0;
  double dWidth = 0;
};

/// How a file dialog ended.
struct FileDialogResult {
  enum class Outcome : std::uint8_t { Chosen, Cancelled, Failed } eOutcome = Outcome::Cancelled;
  std::string sPath;         ///< Chosen: the file's path
  std::int32_t lError = 0;   ///< Failed: the error's number
  std::string sDescription;  ///< Failed: the error's description
};

/// What a file dialog is asked for.
struct FileDialogRequest {
  bool bSave = false;
  std::string_view sFilter;       ///< "caption|pattern|caption|pattern..."
  std::int32_t lFilterIndex = 1;  ///< the preselected filter, from 1
  std::int32_t lFlags = 0;        ///< OFN_ flags of the Windows common dialogs
  std::int32_t lMaxFileSize = 0;  ///< longest path in characters
  std::string_view sFileName;     ///< initial name
};

/// A window with controls, menus and a timer. Controls are reached by their design number; asking
/// for one as a kind that it is not is an error of the program.
class Form {
 public:
  virtual ~Form() = default;

  virtual Control& ControlOf(std::int16_t iControl) = 0;
  virtual TextBox& TextBoxOf(std::int16_t iControl) = 0;
  virtual CheckBox& CheckBoxOf(std::int16_t iControl) = 0;
  virtual ListBox& ListBoxOf(std::int16_t iControl) = 0;

  virtual std::string Name() const = 0;
  virtual std::string Caption() const = 0;
  virtual void SetCaption(std::string_view sCaption) = 0;
  virtual FormPlace Place() const = 0;  ///< the outer place, frame included
  virtual void SetTop(double dTop) = 0;
  virtual void SetLeft(double dLeft) = 0;
  virtual void SetHeight(double dHeight) = 0;
  virtual void SetWidth(double dWidth) = 0;
  virtual Size InnerSize() const = 0;  ///< room for the controls, without frame and menu bar
  virtual WindowState State() const = 0;
  virtual void SetState(WindowState eState) = 0;
  virtual void Show() = 0;
  virtual void BringToTop() = 0;  ///< to the top of the z-order
  virtual void SetFocus() = 0;
  virtual void SetMousePointer(MousePointer ePointer) = 0;
  virtual double TextHeight(std::string_view sText) const = 0;  ///< in the form's font, in twips
  virtual void SetTimerEnabled(bool bEnabled) = 0;
  virtual void SetIcon(IconKind eKind, std::uint32_t hIcon) = 0;

  virtual void LoadMenuItem(std::int16_t iMenu, std::int16_t iIndex) = 0;    ///< hidden at first
  virtual void UnloadMenuItem(std::int16_t iMenu, std::int16_t iIndex) = 0;  ///< missing: nothing
  virtual void SetMenuCaption(std::int16_t iMenu, std::int16_t iIndex,
                              std::string_view sCaption) = 0;
  virtual void SetMenuChecked(std::int16_t iMenu, std::int16_t iIndex, bool bChecked) = 0;
  virtual void SetMenuVisible(std::int16_t iMenu, std::int16_t iIndex, bool bVisible) = 0;
  /// Shows a pop-up menu and lets events run until it is gone.
  /// @param tAt  the corner of the menu inside the form; none: at the pointer
  virtual void ShowPopupMenu(std::int16_t iMenu, std::optional<TwipsPoint> tAt) = 0;

  /// Shows a modal file dialog and lets events run until it is gone.
  virtual FileDialogResult ShowFileDialog(const FileDialogRequest& tRequest) = 0;

  /// Closes the form: QueryUnload, then it is gone. Nothing happens to a form that is closing.
  virtual void Unload() = 0;
};

/// What a form's logic hears. Calls come on the one user-interface thread, and may come while
/// another one is waiting in a message box, a dialog, a pop-up menu or DoEvents; the receiver is
/// kept alive until the outermost has returned, even when its form is unloaded meanwhile. After
/// QueryUnload nothing more is reported.
class FormEvents {
 public:
  virtual ~FormEvents() = default;
  virtual void Load(
      Form& frmLoaded) = 0;  ///< the form exists, unseen; valid until QueryUnload ends
  virtual void Activate() = 0;
  virtual void Resize() = 0;
  virtual void Timer() = 0;
  virtual void QueryUnload() = 0;
  virtual void Click(std::int16_t iControl) = 0;  ///< of a list: the selection was made or moved
  virtual void DblClick(std::int16_t iControl) = 0;
  virtual void GotFocus(std::int16_t iControl) = 0;
  virtual void LostFocus(std::int16_t iControl) = 0;  ///< not when another window takes over
  /// A key by its virtual-key code (13 Enter, 27 Esc, 38 Up, 40 Down; 93 the menu key,
  /// or Shift+F10). True: consumed.
  virtual bool KeyDown(std::int16_t iControl, std::int16_t iKeyCode) = 0;
  /// A typed character code; key combinations give their control code (3 for Ctrl+C). Gives the
  /// code to use in its place; 0 drops it.
  virtual std::int32_t KeyPress(std::int16_t iControl, std::int32_t lCharacter) = 0;
  /// A released mouse button (1 left, 2 right, 4 middle) at a point in twips within the control.
  virtual void MouseUp(std::int16_t iControl, std::int16_t iButton, std::int16_t iShift, double dX,
                       double dY) = 0;
  virtual void MenuClick(std::int16_t iMenu, std::int16_t iIndex) = 0;
};

// ---- The toolkit --------------------------------------------------------------------------------

/// A window procedure: handle, message number and its two arguments, as Windows has it.
using WindowProc = std::intptr_t (*)(std::uint32_t hWnd, std::uint32_t uMsg, std::uintptr_t wParam,
                                     std::intptr_t lParam);

/// A mouse hook procedure of the user-interface thread, as WH_MOUSE has it.
using MouseProc = std::intptr_t (*)(std::int32_t nCode, std::uintptr_t wParam,
                                    std::intptr_t lParam);

class Toolkit {
 public:
  virtual ~Toolkit() = default;

  /// Builds a form, unseen, counts it as loaded and raises its Load. The toolkit keeps pEvents
  /// until the form is unloaded.
  virtual void LoadForm(const FormDesign& tDesign, std::shared_ptr<FormEvents> pEvents) = 0;
  /// The loaded forms' logic, oldest first; a form that is unloading still counts.
  virtual std::vector<std::shared_ptr<FormEvents>> LoadedForms() const = 0;
  /// The loaded form of a name (compared without regard to case), or nullptr.
  virtual Form* FormByName(std::string_view sName) = 0;
  virtual Form* ActiveForm() = 0;  ///< nullptr: none of ours has the focus
  /// Runs events until no form is loaded.
  virtual void Run() = 0;
  /// Lets pending events run, then comes back.
  virtual void DoEvents() = 0;
  /// Ends the program at once: no form is unloaded, nothing is saved; what the system lent to the
  /// process goes back.
  [[noreturn]] virtual void EndProgram(std::int32_t lStatus) = 0;
  /// Whether the forms close because the system ends the program, for which it waits some seconds.
  virtual bool IsEndingProgram() const = 0;

  /// A modal message box over the form whose event is being handled; lStyle and the result are
  /// those of the Windows message box. Lets events run until it is gone; a box whose form is
  /// unloaded answers Cancel, No or else OK.
  virtual std::int32_t MessageBox(std::string_view sPrompt, std::int32_t lStyle,
                                  std::string_view sTitle) = 0;

  virtual Size ScreenSize() const = 0;  ///< in twips
  virtual double TwipsPerPixelX() const = 0;
  virtual double TwipsPerPixelY() const = 0;

  /// Installs the one mouse hook of the user-interface thread; gives its handle, 0 on failure.
  virtual std::uint32_t SetMouseHook(MouseProc fnMouseProc) = 0;
  virtual void RemoveMouseHook(std::uint32_t hHook) = 0;
  virtual std::intptr_t CallNextHook(std::uint32_t hHook, std::int32_t nCode, std::uintptr_t wParam,
                                     std::intptr_t lParam) = 0;

  /// Exchanges a list's window procedure; gives the previous one, nullptr on failure.
  virtual WindowProc SetWindowProc(std::uint32_t hWnd, WindowProc fnProc) = 0;
  virtual std::intptr_t CallWindowProc(WindowProc fnProc, std::uint32_t hWnd, std::uint32_t uMsg,
                                       std::uintptr_t wParam, std::intptr_t lParam) = 0;
  virtual WindowProc GetProp(std::uint32_t hWnd, const char* sName) = 0;  ///< nullptr: absent
  virtual void SetProp(std::uint32_t hWnd, const char* sName, WindowProc fnValue) = 0;
  virtual void RemoveProp(std::uint32_t hWnd, const char* sName) = 0;

  virtual Size IconSize(IconKind eKind) const = 0;  ///< in pixels; below 1: unknown
  /// Loads an icon file at a size in pixels; 0 on failure.
  virtual std::uint32_t LoadIcon(const std::string& sPath, Size tPixels) = 0;
};

/// The program's toolkit: the one that SetToolkit named. Calling it before is an error.
Toolkit& TheToolkit();

/// Names the toolkit that TheToolkit gives; main and tests call it once before anything else.
void SetToolkit(Toolkit& tToolkit);

}  // namespace platform
