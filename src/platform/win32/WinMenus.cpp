#include "platform/win32/WinMenus.h"

#include <algorithm>

#include "platform/win32/WinMetrics.h"

namespace platform::win32 {

namespace {

/// Holds the menu's number, from 1, and the index: 0 is what a message without a command has.
WORD CommandOfEntry(std::int16_t iMenu, std::int16_t iIndex) { return MAKEWORD(iIndex, iMenu + 1); }

/// A designed key as it stands beside a command; empty for none.
std::wstring KeyText(const KeyDesign& tKey) {
  if (tKey.iKeyCode == 0) return {};
  const std::wstring sKey = tKey.iKeyCode < VK_F1
                                ? std::wstring(1, static_cast<wchar_t>(tKey.iKeyCode))
                                : L"F" + std::to_wstring(tKey.iKeyCode - VK_F1 + 1);
  return (tKey.bControl ? L"\tCtrl+" : L"\t") + sKey;
}

/// A menu's caption with its access key marked.
std::wstring MarkedCaption(const MenuDesign& tDesign) {
  std::wstring sCaption = WideOf(tDesign.sCaption);
  if (tDesign.bAccessKey != 0)
    sCaption.insert(sCaption.find(static_cast<wchar_t>(tDesign.bAccessKey)), 1, L'&');
  return sCaption;
}

void RemoveEntries(HMENU hMenu) {
  for (int lEntry = ::GetMenuItemCount(hMenu); lEntry > 0; --lEntry)
    ::RemoveMenu(hMenu, 0, MF_BYPOSITION);
}

}  // namespace

WinMenus::WinMenus(std::span<const MenuDesign> atDesign) {
  atEntry.reserve(atDesign.size());
  for (const MenuDesign& tDesign : atDesign) {
    Entry& tEntry = atEntry.emplace_back(
        Entry{tDesign.iMenu, tDesign.iParent, tDesign.eKind, tDesign.tKey, nullptr, {}});
    tEntry.colItem[0] = {MarkedCaption(tDesign), false, tDesign.bVisible};
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
                      CommandOfEntry(tEntry.iMenu, iIndex),
                      (tItem.sCaption + KeyText(tEntry.tKey)).c_str());
      }
    }
  }
}

WORD WinMenus::CommandOf(const KeyDesign& tKey) const {
  const auto itEntry = std::ranges::find(atEntry, tKey, &Entry::tKey);
  return itEntry == atEntry.end() ? WORD{0} : CommandOfEntry(itEntry->iMenu, 0);
}

std::pair<std::int16_t, std::int16_t> WinMenus::EntryOf(WORD iCommand) {
  return {static_cast<std::int16_t>(HIBYTE(iCommand) - 1), LOBYTE(iCommand)};
}

}  // namespace platform::win32
