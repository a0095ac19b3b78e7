#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/Toolkit.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

/// A form's menus, built from the design's table. Windows cannot hide a menu entry, so a menu that
/// opens is filled anew with what it is to show. Entries are reached by menu number and, for the
/// elements of an item array, by index; a missing element is passed over.
class WinMenus {
 public:
  struct Item {
    std::wstring sCaption;
    bool bChecked = false;
    bool bVisible = true;
  };

  explicit WinMenus(std::span<const MenuDesign> atDesign);

  HMENU Bar() const { return hBar.get(); }  ///< nullptr: nothing belongs on one

  void LoadItem(std::int16_t iMenu, std::int16_t iIndex);
  void UnloadItem(std::int16_t iMenu, std::int16_t iIndex);
  Item* Find(std::int16_t iMenu, std::int16_t iIndex);  ///< nullptr: missing

  HMENU Handle(std::int16_t iMenu) { return EntryAt(iMenu).hOwn.get(); }  ///< nullptr: opens none
  void Fill(HMENU hOpening) const;  ///< for WM_INITMENUPOPUP; others' menus are left alone

  /// The command identifier of the item that the design gives a key; 0: none.
  WORD CommandOf(const KeyDesign& tKey) const;

  /// The menu entry of a command identifier, as menu number and index.
  static std::pair<std::int16_t, std::int16_t> EntryOf(WORD iCommand);

 private:
  /// Destroys a menu without the menus that open from it, which have owners of their own.
  struct MenuDestroyer {
    void operator()(HMENU hMenu) const;
  };
  using OwnedMenu = std::unique_ptr<std::remove_pointer_t<HMENU>, MenuDestroyer>;

  struct Entry {
    std::int16_t iMenu;
    std::int16_t iParent;
    MenuKind eKind;
    KeyDesign tKey;
    OwnedMenu hOwn;  // of a menu that opens
    std::map<std::int16_t, Item> colItem;
  };

  Entry& EntryAt(std::int16_t iMenu);

  std::vector<Entry> atEntry;  // in table order
  OwnedMenu hBar;
};

}  // namespace platform::win32
