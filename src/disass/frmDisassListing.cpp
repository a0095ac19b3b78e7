// The listing: building it, showing an address, and following changes of the memory.

#include <algorithm>
#include <cmath>
#include <new>

#include "disass/frmDisass.h"
#include "link/modALLSharedMap.h"
#include "util/modALLUtilityMessages.h"

using modALLDisass::abMemoryImage;
using modALLUtility::ADDRESS_SPACE;
using modALLUtility::Hex4;

namespace {

void TakeMemoryImage() {
  modALLSharedMap::CopyRamImage(abMemoryImage);
  ++modDISListing::lMemoryImageVersion;
}

/// Whether the memory sufficed for that.
template <class Job>
bool RunsInMemory(Job fnJob) {
  try {
    fnJob();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void TellOfNoMemory() {
  modALLUtility::ShowMessage("Not enough memory for the listing", modALLUtility::MSG_EXCLAMATION,
                             modALLUtility::TITLE_ERROR);
}

}  // namespace

void frmDisass::esegue_disass() {
  if (bInDisass) {
    return;
  }
  bInDisass = true;
  cmdDisass->SetEnabled(false);
  frmForm->SetMousePointer(platform::MousePointer::Hourglass);
  lstDis->SetLines(nullptr);
  lstDis->SetVisible(false);

  TakeMemoryImage();
  const bool bFilled = RunsInMemory([this] {
    FillListing();
    if (bUnloaded) {
      return;
    }
    tListing.RebuildAddressMaps();
    lstDis->SetLines(&tListing);
  });
  if (bUnloaded) {
    return;
  }
  if (!bFilled) {
    DropListing();
  }
  lstDis->SetVisible(true);
  frmForm->SetMousePointer(platform::MousePointer::Default);
  cmdDisass->SetEnabled(true);
  bInDisass = false;
  if (!bFilled) {
    TellOfNoMemory();
  }
}

/// For want of memory: an empty list, rather than a part of one that would be taken for the whole.
void frmDisass::DropListing() {
  lstDis->SetLines(nullptr);
  tListing.Clear(lStartAddr, lEndAddr);
}

/// Decodes the range into lines, letting events run after each one. Where an event changed the
/// memory image (another window listed anew or wrote an instruction), the lines so far were decoded
/// from other bytes than those to come, and all begins again.
void frmDisass::FillListing() {
  std::uint32_t lVersion = modDISListing::lMemoryImageVersion;
  tListing.Clear(lStartAddr, lEndAddr);
  for (std::int32_t lAddress = lStartAddr; lAddress <= lEndAddr;) {
    modDISListing::BuiltLine tBuilt = modDISListing::BuildListingLine(abMemoryImage, lAddress);
    tListing.Append(std::move(tBuilt.sLine));
    lAddress += tBuilt.lLength;
    platform::TheToolkit().DoEvents();
    if (bUnloaded) {
      return;
    }
    if (lVersion != modDISListing::lMemoryImageVersion) {
      lVersion = modDISListing::lMemoryImageVersion;
      tListing.Clear(lStartAddr, lEndAddr);
      lAddress = lStartAddr;
    }
  }
}

void frmDisass::position(const bool& bForceDisass, std::int32_t lAddrToShow) {
  // A window that the timer made list before it was ever active may become active meanwhile. The
  // listing in the making must keep its range, and the fields and the timer stay off until its end.
  if (bInDisass) {
    return;
  }
  if (EditorOpen()) {
    CloseAsmEditor(true);
  }
  txtStart->SetEnabled(false);
  txtEnd->SetEnabled(false);
  frmForm->SetTimerEnabled(false);

  std::int32_t lAddress =
      lAddrToShow < 0 ? modALLSharedMap::ReadControlField(modALLSharedMap::ControlField::ShowAddr)
                      : lAddrToShow;
  // A number that is no Z80 address is ignored: nothing moves, and a forced listing shows its
  // first line. A window that lists nothing yet begins at the start of memory.
  bool bAddress = lAddress >= 0 && lAddress < ADDRESS_SPACE;
  if (!bAddress && tListing.LineCount() == 0) {
    lAddress = 0;
    bAddress = true;
  }
  const bool bShown =
      bAddress && tListing.IsLineStart(lAddress) && lAddress >= lStartAddr && lAddress <= lEndAddr;
  if (!bForceDisass && bAddress && !bShown) {
    lStartAddr = lAddress;
    lEndAddr = std::min(lAddress + modDISListing::USUAL_LENGTH, ADDRESS_SPACE - 1);
    txtStart->SetText(Hex4(lStartAddr));
    txtEnd->SetText(Hex4(lEndAddr));
    esegue_disass();
  } else if (bForceDisass) {
    esegue_disass();
  }
  if (bUnloaded) {
    return;
  }

  if (bAddress || bForceDisass) {
    ShowLine(bAddress ? tListing.LineIndex(lAddress) : 0);
  }
  txtStart->SetEnabled(true);
  txtEnd->SetEnabled(true);
  lstDis->SetFocus();
  frmForm->SetTimerEnabled(true);
}

/// Selects a line in the middle of the view; an index that names no line does nothing.
void frmDisass::ShowLine(std::int32_t lIndex) {
  if (lIndex < 0 || lIndex >= tListing.LineCount()) {
    return;
  }
  const std::int32_t lTop = std::clamp(lIndex - VisibleLines() / 2, 0, tListing.LineCount() - 1);
  bListSelecting = true;
  lstDis->SetTopIndex(lTop);
  lstDis->SetSelectedIndex(lIndex);
  bListSelecting = false;
}

/// Selects a line without the listing's click handler taking it for the user's doing.
void frmDisass::SelectQuietly(std::int32_t lIndex) {
  bListSelecting = true;
  lstDis->SetSelectedIndex(lIndex);
  bListSelecting = false;
}

void frmDisass::EnsureListIndexVisible(std::int32_t lIndex) {
  const std::int32_t lVisible = VisibleLines();
  const std::int32_t lTop = lstDis->TopIndex();
  if (lIndex < lTop) {
    lstDis->SetTopIndex(lIndex);
  } else if (lIndex >= lTop + lVisible) {
    lstDis->SetTopIndex(lIndex - lVisible + 1);
  }
}

/// The height of one line in twips, exactly ...
double frmDisass::ListItemTwips() const {
  const std::int32_t lPixels = lstDis->ItemHeightPixels();
  return lPixels < 1 ? frmForm->TextHeight("A") : lPixels * platform::TheToolkit().TwipsPerPixelY();
}

/// ... and rounded.
std::int32_t frmDisass::GetListItemHeight() const {
  return static_cast<std::int32_t>(std::nearbyint(ListItemTwips()));
}

/// How many lines the list shows, at least 1.
std::int32_t frmDisass::VisibleLines() const {
  const double dHeight = ListItemTwips();
  // Half a pixel more, for both are whole pixels, which need not be whole twips.
  const double dInner = lstDis->InnerHeight() + platform::TheToolkit().TwipsPerPixelY() / 2;
  return dHeight > 0 ? std::max(static_cast<std::int32_t>(dInner / dHeight), 1) : 1;
}

/// Brings the listing, its tables and the list up to date after a change that is already in the
/// decoder's memory image; false when no listed line shows a changed byte.
bool frmDisass::RefreshFromChange(std::int32_t lAddrChanged, std::int32_t lBytesChanged) {
  bool bShown = false;
  const bool bRefreshed = RunsInMemory([&] {
    const auto atReplaced = tListing.RefreshChanged(abMemoryImage, lAddrChanged, lBytesChanged);
    for (const auto& [lFirst, lRemoved, lInserted] : atReplaced) {
      lstDis->LinesReplaced(lFirst, lRemoved, lInserted);
    }
    bShown = !atReplaced.empty();
  });
  if (bRefreshed) {
    return bShown;
  }
  CloseAsmEditor(true);
  DropListing();
  TellOfNoMemory();
  return false;
}

void frmDisass::DisassExternalRamChanged(std::int32_t lAddrChanged, std::int16_t iBytesChanged) {
  // A listing in the making begins again by itself.
  if (iBytesChanged < 1 || tListing.LineCount() == 0 || bInDisass || bUnloaded) {
    return;
  }
  const bool bEditing = EditorOpen();
  const std::int32_t lEdited = tListing.LineStartingAt(lEditAddr);
  const bool bTouched = bEditing && lEdited >= 0 &&
                        modDISListing::LineTouchesChange(
                            lEditAddr, modDISListing::CountLineBytes(tListing.Line(lEdited)),
                            lAddrChanged, iBytesChanged);
  if (!RefreshFromChange(lAddrChanged, iBytesChanged) || !bEditing) {
    return;
  }
  const std::int32_t lLine = tListing.LineStartingAt(lEditAddr);
  if (lLine < 0) {
    CloseAsmEditor(false);
    return;
  }
  SelectQuietly(lLine);
  if (bTouched) {
    OpenAsmEditor();
  }
  DisassEditFollowListScroll();
}
