#include "platform/qt/QtMenus.h"

#include <QAction>
#include <QShortcut>
#include <utility>

#include "platform/qt/QtMetrics.h"

namespace platform::qt {

QtMenus::QtMenus(QWidget& frmOwner, std::span<const MenuDesign> atDesign, ClickHandler fnItsClick)
    : frm(frmOwner), mnuBar(new QMenuBar(&frmOwner)), fnClick(std::move(fnItsClick)) {
  // The design's places count on a bar in the window, not on one at the screen's edge.
  mnuBar->setNativeMenuBar(false);
  for (const MenuDesign& tDesign : atDesign) Add(tDesign);

  // Alt alone reaches the bar by itself; F10 does not, outside Windows.
  auto* pF10 = new QShortcut(Qt::Key_F10, &frmOwner);
  QObject::connect(pF10, &QShortcut::activated, mnuBar, [this]() {
    if (!mnuBar->actions().isEmpty()) mnuBar->setActiveAction(mnuBar->actions().constFirst());
  });
}

void QtMenus::Add(const MenuDesign& tDesign) {
  Entry tEntry{.eKind = tDesign.eKind,
               .mnuParent = tDesign.iParent < 0 ? nullptr : colEntry.at(tDesign.iParent).mnuOwn,
               .mnuOwn = nullptr,
               .pEnd = nullptr,
               .colItem = {}};
  QAction* pItem = nullptr;
  if (tDesign.eKind == MenuKind::Menu || tDesign.eKind == MenuKind::Popup) {
    tEntry.mnuOwn = new QMenu(&frm);
    pItem = tEntry.mnuOwn->menuAction();
    if (tEntry.mnuParent != nullptr) tEntry.mnuParent->addMenu(tEntry.mnuOwn);
    tEntry.mnuOwn->setWindowTitle(TextOf(tDesign.sCaption));  // its name for assistive tools
    if (tEntry.mnuParent == nullptr && tDesign.eKind == MenuKind::Menu)
      mnuBar->addMenu(tEntry.mnuOwn);
  } else if (tDesign.eKind == MenuKind::Separator) {
    pItem = tEntry.mnuParent->addSeparator();
  } else {
    pItem = NewItem(*tEntry.mnuParent, tDesign.iMenu, 0);
    tEntry.mnuParent->addAction(pItem);
  }
  if (tDesign.eKind == MenuKind::ItemArray) {
    tEntry.pEnd = tEntry.mnuParent->addSeparator();
    tEntry.pEnd->setVisible(false);
  }
  QString sCaption = TextOf(tDesign.sCaption);
  if (tDesign.bAccessKey != 0)
    sCaption.insert(sCaption.indexOf(QLatin1Char(tDesign.bAccessKey)), QLatin1Char('&'));
  pItem->setText(sCaption);
  pItem->setShortcut(KeysOf(tDesign.tKey));
  pItem->setVisible(tDesign.bVisible);
  tEntry.colItem.emplace(std::int16_t{0}, pItem);
  colEntry.emplace(tDesign.iMenu, std::move(tEntry));
}

QAction* QtMenus::NewItem(QWidget& tParent, std::int16_t iMenu, std::int16_t iIndex) {
  auto* pItem = new QAction(&tParent);
  QObject::connect(pItem, &QAction::triggered, pItem, [this, pItem, iMenu, iIndex]() {
    // Only the form changes a check mark, and an item can only be checked while it is.
    if (pItem->isCheckable()) pItem->setChecked(true);
    fnClick(iMenu, iIndex);
  });
  return pItem;
}

int QtMenus::BarHeight() const {
  return mnuBar->actions().isEmpty() ? 0 : mnuBar->sizeHint().height();
}

QMenu* QtMenus::Popup(std::int16_t iMenu) { return colEntry.at(iMenu).mnuOwn; }

void QtMenus::LoadItem(std::int16_t iMenu, std::int16_t iIndex) {
  Entry& tEntry = colEntry.at(iMenu);
  if (tEntry.eKind != MenuKind::ItemArray || tEntry.colItem.contains(iIndex)) return;
  QAction* pItem = NewItem(*tEntry.mnuParent, iMenu, iIndex);
  pItem->setVisible(false);
  const auto itNext = tEntry.colItem.upper_bound(iIndex);
  tEntry.mnuParent->insertAction(itNext != tEntry.colItem.end() ? itNext->second : tEntry.pEnd,
                                 pItem);
  tEntry.colItem.emplace(iIndex, pItem);
}

void QtMenus::UnloadItem(std::int16_t iMenu, std::int16_t iIndex) {
  Entry& tEntry = colEntry.at(iMenu);
  const auto itItem = tEntry.colItem.find(iIndex);
  if (iIndex == 0 || itItem == tEntry.colItem.end()) return;
  tEntry.mnuParent->removeAction(itItem->second);
  itItem->second->deleteLater();  // its own click may be what unloads it
  tEntry.colItem.erase(itItem);
}

QAction* QtMenus::Item(std::int16_t iMenu, std::int16_t iIndex) const {
  const Entry& tEntry = colEntry.at(iMenu);
  const auto itItem =
      tEntry.colItem.find(tEntry.eKind == MenuKind::ItemArray ? iIndex : std::int16_t{0});
  return itItem == tEntry.colItem.end() ? nullptr : itItem->second;
}

}  // namespace platform::qt
