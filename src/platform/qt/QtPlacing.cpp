#include "platform/qt/QtPlacing.h"

namespace platform::qt {

bool QtPlacing::Ask(const QRect& tOuter) {
  // Before the window is placed, nobody but the program has a say in its size.
  if (bPlaced && lReports > 0) {
    bWaiting = true;
    return false;
  }
  tPending = tOuter;
  tCorner = tOuter.topLeft();
  tRequestedWith.reset();
  lQuietTicks = 0;
  return true;
}

std::optional<QRect> QtPlacing::Request(const QMargins& tFrame) {
  if (!tPending.has_value() || tRequestedWith == tFrame) return std::nullopt;
  tRequestedWith = tFrame;
  lQuietTicks = 0;
  return tPending;
}

bool QtPlacing::Tick() {
  if (!bExposed || IsAtRest() || ++lQuietTicks < REST_TICKS) return false;
  tPending.reset();
  bPlaced = true;
  return true;
}

}  // namespace platform::qt
