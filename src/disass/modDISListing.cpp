#include "disass/modDISListing.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>

namespace modDISListing {

using modALLUtility::AddrAdd;
using modALLUtility::ADDRESS_SPACE;
using modALLUtility::HexDigit;

namespace {

constexpr std::size_t ADDRESS_DIGITS = 4;
constexpr std::size_t BYTES_COLUMN = 5;
constexpr std::size_t CHARACTERS_COLUMN = INSTRUCTION_COLUMN + INSTRUCTION_WIDTH + 1;

std::size_t Index(std::int32_t lValue) { return static_cast<std::size_t>(lValue); }

}  // namespace

BuiltLine BuildListingLine(modALLDisass::ImageView abImage, std::int32_t lAddress) {
  if (lAddress < 0 || lAddress >= ADDRESS_SPACE) {
    throw std::out_of_range("listing line at an address outside 0000 to FFFF");
  }
  const modALLDisass::Instruction tInstruction =
      modALLDisass::DisassembleInstruction(abImage, lAddress);
  const std::int32_t lLength = tInstruction.lLength;

  std::string sLine(CHARACTERS_COLUMN + 2 * Index(lLength), ' ');
  for (std::size_t lDigit = 0; lDigit < ADDRESS_DIGITS; ++lDigit) {
    sLine[lDigit] = HexDigit(static_cast<std::uint32_t>(lAddress) >> (12U - 4U * lDigit));
  }
  for (std::int32_t lByte = 0; lByte < lLength; ++lByte) {
    const std::uint8_t bValue = abImage[Index(AddrAdd(lAddress, lByte))];
    // The byte columns end where the instruction begins, in the middle of a sixth byte.
    const std::size_t lColumn = BYTES_COLUMN + 3 * Index(lByte);
    if (lColumn < INSTRUCTION_COLUMN) {
      sLine[lColumn] = HexDigit(bValue >> 4U);
    }
    if (lColumn + 1 < INSTRUCTION_COLUMN) {
      sLine[lColumn + 1] = HexDigit(bValue);
    }
    sLine[CHARACTERS_COLUMN + 2 * Index(lByte)] = static_cast<char>(bValue);
  }
  std::ranges::copy(tInstruction.tText.View().substr(0, INSTRUCTION_WIDTH),
                    sLine.begin() + INSTRUCTION_COLUMN);
  return {std::move(sLine), lLength};
}

std::int32_t LineAddress(std::string_view sLine) {
  std::int32_t lAddress = 0;
  const std::string_view sDigits = sLine.substr(0, ADDRESS_DIGITS);
  std::from_chars(sDigits.data(), sDigits.data() + sDigits.size(), lAddress, 16);
  return lAddress;
}

std::int32_t LineLength(std::string_view sLine) {
  return static_cast<std::int32_t>(sLine.size() - CHARACTERS_COLUMN) / 2;
}

std::int32_t CountLineBytes(std::string_view sLine) {
  std::int32_t lCount = 0;
  for (const std::size_t lColumn : {5U, 8U, 11U, 14U}) {
    lCount += sLine.substr(lColumn, 2) != "  " ? 1 : 0;
  }
  return std::max(lCount, 1);
}

std::string_view LineInstruction(std::string_view sLine) {
  std::string_view sText = sLine.substr(INSTRUCTION_COLUMN, INSTRUCTION_WIDTH);
  sText.remove_prefix(std::min(sText.find_first_not_of(' '), sText.size()));
  return sText.substr(0, sText.find_last_not_of(' ') + 1);
}

bool IsAddrInChange(std::int32_t lAddress, std::int32_t lChanged, std::int32_t lCount) {
  return lCount >= 1 && AddrAdd(lAddress, -lChanged) < lCount;
}

bool LineTouchesChange(std::int32_t lLine, std::int32_t lLength, std::int32_t lChanged,
                       std::int32_t lCount) {
  for (std::int32_t lByte = 0; lByte < lLength; ++lByte) {
    if (IsAddrInChange(AddrAdd(lLine, lByte), lChanged, lCount)) {
      return true;
    }
  }
  return false;
}

std::string CompleteAddress(std::string_view sText) {
  if (sText.size() > ADDRESS_DIGITS ||
      sText.find_first_not_of("0123456789ABCDEFabcdef") != std::string_view::npos) {
    return {};
  }
  return modALLUtility::Hex4(
      LineAddress(std::string(ADDRESS_DIGITS - sText.size(), '0').append(sText)));
}

void WriteMemoryImage(std::int32_t lAddress, std::span<const std::uint8_t> abBytes) {
  for (const std::uint8_t bValue : abBytes) {
    modALLDisass::abMemoryImage[Index(lAddress)] = bValue;
    lAddress = AddrAdd(lAddress, 1);
  }
  ++lMemoryImageVersion;
}

std::span<const platform::ColumnRange> Listing::QuietColumns() const {
  static constexpr std::array<platform::ColumnRange, 2> QUIET{
      {{BYTES_COLUMN, INSTRUCTION_COLUMN},
       {CHARACTERS_COLUMN, std::numeric_limits<std::int32_t>::max()}}};
  return QUIET;
}

void Listing::Clear(std::int32_t lRangeStart, std::int32_t lRangeEnd) {
  lFirstAddr = lRangeStart;
  lLastAddr = lRangeEnd;
  asLine.clear();
  bLineStart.fill(0);
  lLineIndex.fill(0);
}

void Listing::RebuildAddressMaps() {
  bLineStart.fill(0);
  lLineIndex.fill(0);
  for (std::int32_t lIndex = 0; lIndex < LineCount(); ++lIndex) {
    MapLine(lIndex);
  }
}

void Listing::MapLine(std::int32_t lIndex) {
  const std::string_view sLine = Line(lIndex);
  const std::int32_t lAddress = LineAddress(sLine);
  const std::int32_t lLast = std::min(lAddress + CountLineBytes(sLine), ADDRESS_SPACE) - 1;
  std::fill(lLineIndex.begin() + lAddress, lLineIndex.begin() + lLast + 1, lIndex);
  bLineStart[Index(lAddress)] = 1;
}

std::int32_t Listing::LineStartingAt(std::int32_t lAddress) const {
  if (lAddress < 0 || lAddress >= ADDRESS_SPACE || !IsLineStart(lAddress) ||
      LineIndex(lAddress) >= LineCount()) {
    return -1;
  }
  return LineIndex(lAddress);
}

std::int32_t Listing::LineAtOrBelow(std::int32_t lAddress) const {
  const auto itAbove = std::ranges::upper_bound(asLine, lAddress, {}, LineAddress);
  return static_cast<std::int32_t>(itAbove - asLine.begin()) - 1;
}

Listing::Replaced Listing::RefreshFromAddress(modALLDisass::ImageView abImage,
                                              std::int32_t lAddress, std::int32_t lLastChanged) {
  const std::int32_t lFirst = LineStartingAt(lAddress);
  if (lFirst < 0) {
    return {};
  }

  std::vector<std::string> asNew;
  std::int32_t lInStep = ADDRESS_SPACE;  // where old and new boundaries agree again, if anywhere
  for (std::int32_t lNext = lAddress; lNext <= lLastAddr;) {
    BuiltLine tBuilt = BuildListingLine(abImage, lNext);
    asNew.push_back(std::move(tBuilt.sLine));
    lNext += tBuilt.lLength;
    if (lNext <= lLastAddr && lNext > lLastChanged && IsLineStart(lNext)) {
      lInStep = lNext;
      break;
    }
  }

  const std::int32_t lLast =
      lInStep < ADDRESS_SPACE ? std::max(LineIndex(lInStep) - 1, lFirst) : LineCount() - 1;
  const Replaced tReplaced{lFirst, lLast - lFirst + 1, static_cast<std::int32_t>(asNew.size())};
  const std::int32_t lOverwritten = std::min(tReplaced.lRemoved, tReplaced.lInserted);
  const auto itOld = asLine.begin() + lFirst;
  std::move(asNew.begin(), asNew.begin() + lOverwritten, itOld);
  if (tReplaced.lInserted > lOverwritten) {
    asLine.insert(itOld + lOverwritten, std::make_move_iterator(asNew.begin() + lOverwritten),
                  std::make_move_iterator(asNew.end()));
  } else {
    asLine.erase(itOld + lOverwritten, itOld + tReplaced.lRemoved);
  }

  // What a whole RebuildAddressMaps would give, without reading 65,536 lines again in each of 16
  // windows: below lAddress nothing changed, from lInStep on the lines only moved. An entry that
  // no line covers is 0, and line 0 never lies behind a replaced one.
  std::fill(lLineIndex.begin() + lAddress, lLineIndex.begin() + lInStep, 0);
  std::fill(bLineStart.begin() + lAddress, bLineStart.begin() + lInStep, std::uint8_t{0});
  for (std::int32_t lLine = lFirst; lLine < lFirst + tReplaced.lInserted; ++lLine) {
    MapLine(lLine);
  }
  const std::int32_t lMoved = tReplaced.lInserted - tReplaced.lRemoved;
  if (lMoved != 0) {
    std::transform(lLineIndex.begin() + lInStep, lLineIndex.end(), lLineIndex.begin() + lInStep,
                   [lMoved](std::int32_t lLine) { return lLine != 0 ? lLine + lMoved : 0; });
  }
  return tReplaced;
}

std::vector<Listing::Replaced> Listing::RefreshChanged(modALLDisass::ImageView abImage,
                                                       std::int32_t lChanged, std::int32_t lCount) {
  std::vector<Replaced> atReplaced;
  // Refreshes the lines that show a byte of lFrom to lTo, a piece that does not wrap.
  const auto fnRefresh = [&](std::int32_t lFrom, std::int32_t lTo) {
    std::int32_t lLine = LineAtOrBelow(lFrom);
    if (lLine < 0 || LineAddress(Line(lLine)) + LineLength(Line(lLine)) <= lFrom) {
      ++lLine;
    }
    if (lLine < LineCount() && LineAddress(Line(lLine)) <= lTo) {
      atReplaced.push_back(RefreshFromAddress(abImage, LineAddress(Line(lLine)), lTo));
    }
  };
  if (lCount < 1 || LineCount() == 0) {
    return atReplaced;
  }
  const std::int32_t lEnd = lChanged + lCount - 1;
  if (lEnd >= ADDRESS_SPACE) {
    fnRefresh(0, lEnd - ADDRESS_SPACE);
  }
  fnRefresh(lChanged, std::min(lEnd, ADDRESS_SPACE - 1));
  // The last line may show bytes from the other end of the address space.
  const std::string_view sLast = Line(LineCount() - 1);
  const std::int32_t lWrapped = LineAddress(sLast) + LineLength(sLast) - ADDRESS_SPACE;
  if (lChanged < lWrapped || (lEnd >= ADDRESS_SPACE && lWrapped > 0)) {
    atReplaced.push_back(RefreshFromAddress(abImage, LineAddress(sLast), ADDRESS_SPACE - 1));
  }
  return atReplaced;
}

}  // namespace modDISListing
