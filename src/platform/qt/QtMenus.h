#pragma once

#include <QMenu>
#include <QMenuBar>
#include <functional>
#include <map>
#include <span>
#include <string_view>

#include "platform/Toolkit.h"

namespace platform::qt {

/// A form's menus, built from the design's table. Entries are reached by menu number and, for the
/// elements of an item array, by index; a missing element is passed over.
class QtMenus {
 public:
  using ClickHandler = std::function<void(std::int16_t iMenu, std::int16_t iIndex)>;

  /// @param frmOwner  the window that the bar and the pop-up menus belong to
  QtMenus(QWidget& frmOwner, std::span<const MenuDesign> atDesign, ClickHandler fnItsClick);

  QMenuBar& Bar() { return *mnuBar; }
  int BarHeight() const;             ///< in pixels; 0: the design has no menus on a bar
  QMenu* Popup(std::int16_t iMenu);  ///< nullptr: not a menu that opens
  void LoadItem(std::int16_t iMenu, std::int16_t iIndex);
  void UnloadItem(std::int16_t iMenu, std::int16_t iIndex);
  QAction* Item(std::int16_t iMenu, std::int16_t iIndex) const;  ///< nullptr: missing

 private:
  struct Entry {
    MenuKind eKind;
    QMenu* mnuParent;  // nullptr: the menu bar, or none
    QMenu* mnuOwn;     // of a menu that opens
    QAction* pEnd;     // of an item array: stands behind its last element
    std::map<std::int16_t, QAction*> colItem;
  };

  void Add(const MenuDesign& tDesign);
  QAction* NewItem(QWidget& tParent, std::int16_t iMenu, std::int16_t iIndex);

  QWidget& frm;
  QMenuBar* mnuBar;
  ClickHandler fnClick;
  std::map<std::int16_t, Entry> colEntry;
};

}  // namespace platform::qt
