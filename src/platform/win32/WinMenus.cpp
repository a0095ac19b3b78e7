#include "platform/win32/WinMenus.h"

#include <algorithm>

#include "platform/win32/WinMetrics.h"

namespace platform::win32 {

namespace {

/// Holds the menu's number, from 1, and the index: 0 is what a message without a command has.
WORD CommandOf(std::int16_t iMenu, std::int16_t iIndex) { return MAKEWORD(iIndex, iMenu + 1); }

void RemoveEntries(HMENU hMenu) {
  for (int lEntry = ::GetMenuItemCount(hMenu); lEntry > 0; --lEntry)
    ::RemoveMenu(hMenu, 0, MF_BYPOSITION);
}

}  // namespace

WinMenus::WinMenus(std::span<const MenuDesign> atDesign) {
  atEntry.reserve(atDesign.size());
  for (const MenuDesign& tDesign : atDesign) {
    Entry& tEntry =
        atEntry.emplace_back(Entry{tDesign.iMenu, tDesign.iParent, tDesign.eKind, nullptr, {}});
    tEntry.colItem[0] = {WideOf(tDesign.sCaption), false, tDesign.bVisible};
    if (tDesign.eKind == MenuKind::Menu || tDesign.eKind == MenuKind::Popup)
      tEntry.hOwn.reset(::CreatePopupMenu());
    if (tDesign.eKind == MenuKind::Menu && tDesign.iParent < 0) {
      if (hBar == nullptr) hBar.reset(::CreateMenu());
      ::AppendMenuW(hBar.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(tEntry.hOwn.get()),
                    tEntry.colItem[0].sCaption.c_str());
    }
  }
}

void WinMenus::MenuDestroyer::operator()(HMENU hMenu) const {
  RemoveEntries(hMenu);
  ::DestroyMenu(hMenu);
}

WinMenus::Entry& WinMenus::EntryAt(std::int16_t iMenu) {
  return *std::ranges::find(atEntry, iMenu, &Entry::iMenu);
}

void WinMenus::LoadItem(std::int16_t iMenu, std::int16_t iIndex) {
  Entry& tEntry = EntryAt(iMenu);
  if (tEntry.eKind == MenuKind::ItemArray)
    tEntry.colItem.try_emplace(iIndex, Item{{}, false, false});
}

void WinMenus::UnloadItem(std::int16_t iMenu, std::int16_t iIndex) {
  if (iIndex != 0) EntryAt(iMenu).colItem.erase(iIndex);
}

WinMenus::Item* WinMenus::Find(std::int16_t iMenu, std::int16_t iIndex) {
  Entry& tEntry = EntryAt(iMenu);
  const auto itItem =
      tEntry.colItem.find(tEntry.eKind == MenuKind::ItemArray ? iIndex : std::int16_t{0});
  return itItem == tEntry.colItem.end() ? nullptr : &itItem->second;
}

void WinMenus::Fill(HMENU hOpening) const {
  const auto itMenu = std::ranges::find_if(
      atEntry, [=](const Entry& tEntry) { return tEntry.hOwn.get() == hOpening; });
  if (itMenu == atEntry.end()) return;
  RemoveEntries(hOpening);
  for (const Entry& tEntry : atEntry) {
    if (tEntry.iParent != itMenu->iMenu) continue;
    for (const auto& [iIndex, tItem] : tEntry.colItem) {
      if (!tItem.bVisible) continue;
      if (tEntry.eKind == MenuKind::Separator) {
        ::AppendMenuW(hOpening, MF_SEPARATOR, 0, nullptr);
      } else if (tEntry.hOwn != nullptr) {
        ::AppendMenuW(hOpening, MF_POPUP, reinterpret_cast<UINT_PTR>(tEntry.hOwn.get()),
                      tItem.sCaption.c_str());
      } else {
        ::AppendMenuW(hOpening, tItem.bChecked ? MF_CHECKED : MF_STRING,
                      CommandOf(tEntry.iMenu, iIndex), tItem.sCaption.c_str());
      }
    }
  }
}

std::pair<std::int16_t, std::int16_t> WinMenus::EntryOf(WORD iCommand) {
  return {static_cast<std::int16_t>(HIBYTE(iCommand) - 1), LOBYTE(iCommand)};
}

}  // namespace platform::win32
