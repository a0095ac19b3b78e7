#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/Toolkit.h"

/// The table of open windows: their numbers, captions and Window menus, and which of them is
/// current and which is primary.
namespace modALLForms {

inline constexpr std::int32_t MAX_WINDOWS = 16;

/// The design numbers of a window's Window menu: the line above the window items, and the item
/// array whose element i stands for slot i.
struct WindowMenu {
  std::int16_t iSeparator;
  std::int16_t iItem;
};

/// What the table needs of a window. A window is registered no longer than its form is loaded.
class Window {
 public:
  virtual ~Window() = default;
  virtual platform::Form& WindowForm() = 0;
  virtual WindowMenu WindowMenuNumbers() const = 0;
  /// Loads another window of the same class, unseen; throws when that fails.
  virtual std::shared_ptr<Window> LoadNewInstance() = 0;
};

/// Gives the window the lowest free slot and makes it current; true also when it has a slot
/// already, false for nullptr or when the table is full.
bool RegisterWindow(Window* frm);

/// Frees the window's slot; a window without one changes nothing.
void UnregisterWindow(Window* frm);

/// Makes a registered window the current one.
void WindowActivated(Window* frm);

/// Brings the window of a slot to the front, restoring it when it is minimised; an index that
/// names no window does nothing.
void ActivateWindowSlot(std::int16_t iIndex);

/// Opens another window of the same class, offset from this one by twips.
/// @return false when the table is full or the window could not be loaded
bool OpenNewWindow(Window* frm, std::int32_t lDx, std::int32_t lDy);

std::int32_t WindowCount();

/// True for the window in the lowest occupied slot: the one that answers the emulator.
bool IsPrimaryWindow(const Window* frm);

}  // namespace modALLForms
