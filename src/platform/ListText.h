#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "platform/Toolkit.h"

/// What the list boxes of all toolkits have in common: where the lines stand in the box, how their
/// bytes are shown, and where a line goes when others are replaced.
namespace platform {

/// Distance of a list's text from the list's outer left edge, in twips.
inline constexpr std::int32_t LIST_TEXT_LEFT = 60;

/// Distance of the first line from the list's outer top edge, in twips: half of what an editor in
/// place is higher than its line, so that both texts stand on one base line.
inline constexpr std::int32_t LIST_TEXT_TOP = 30;

/// True for bytes that are shown as a small mark, the others being shown as ISO 8859-1 has them:
/// control characters have no picture of their own, and the soft hyphen hides in most fonts.
constexpr bool IsShownAsMark(unsigned char bCode) {
  return bCode < 0x20 || (bCode >= 0x7F && bCode < 0xA0) || bCode == 0xAD;
}

/// What stands for a mark in texts, as for a screen reader or a terminal: the middle dot.
inline constexpr unsigned char MARK_CHARACTER = 0xB7;

/// The columns that a line needs, one a byte; a blank at its end needs none.
constexpr std::int32_t TextColumns(std::string_view sLine) {
  return static_cast<std::int32_t>(sLine.size()) - (sLine.ends_with(' ') ? 1 : 0);
}

/// Whether a column of a line is one of those that step back, and up to which column that holds.
struct ColumnRun {
  bool bQuiet;
  std::int32_t lEnd;
};

constexpr ColumnRun RunAt(std::span<const ColumnRange> atQuiet, std::int32_t lColumn) {
  for (const ColumnRange& tRange : atQuiet) {
    if (lColumn < tRange.lFirst) return {false, tRange.lFirst};
    if (lColumn < tRange.lEnd) return {true, tRange.lEnd};
  }
  return {false, std::numeric_limits<std::int32_t>::max()};
}

/// The line that a typed character goes to, as in the lists of Windows: the next one behind lIndex
/// (-1: none is selected) that begins with it, from the last line on to the first; -1: there is
/// none.
inline std::int32_t NextLineBeginning(const ListLines& tLines, std::int32_t lIndex,
                                      char bCharacter) {
  const auto fnUpper = [](char bAny) { return std::toupper(static_cast<unsigned char>(bAny)); };
  const std::int32_t lCount = tLines.LineCount();
  for (std::int32_t lStep = 1; lStep <= lCount; ++lStep) {
    const std::int32_t lNext = (lIndex + lStep) % lCount;
    const std::string_view sLine = tLines.Line(lNext);
    if (!sLine.empty() && fnUpper(sLine.front()) == fnUpper(bCharacter)) return lNext;
  }
  return -1;
}

/// Lines replaced by others, as ListBox::LinesReplaced tells of them.
struct ReplacedLines {
  std::int32_t lFirst;
  std::int32_t lRemoved;
  std::int32_t lInserted;

  /// Where a line stands now; for a replaced one the new line at its index, or the last new one.
  constexpr std::int32_t Moved(std::int32_t lIndex) const {
    if (lIndex < lFirst) return lIndex;
    return lIndex >= lFirst + lRemoved ? lIndex + lInserted - lRemoved
                                       : std::min(lIndex, lFirst + lInserted - 1);
  }

  /// As Moved for a selection (-1: none), which a replaced line loses when no new one comes.
  constexpr std::int32_t MovedSelection(std::int32_t lIndex) const {
    const bool bGone = lInserted == 0 && lIndex >= lFirst && lIndex < lFirst + lRemoved;
    return bGone ? -1 : Moved(lIndex);
  }
};

}  // namespace platform
