#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Toolkit.h"
#include "util/modALLUtilityAddress.h"
#include "z80/modALLDisass.h"

/// Listing lines and the address tables over them: all of the listing that needs no window.
///
/// A line's text is the only record of its address and byte count. It stands as
///   columns 1-4    the address in hexadecimal
///   columns 6-21   the bytes, two digits and a blank each
///   columns 22-40  the instruction
///   from column 42 the bytes as characters, each followed by a blank
namespace modDISListing {

inline constexpr std::int32_t INSTRUCTION_COLUMN = 21;  ///< characters before the instruction
inline constexpr std::int32_t INSTRUCTION_WIDTH = 19;

/// How far behind its start a range ends unless the user says otherwise.
inline constexpr std::int32_t USUAL_LENGTH = 0x2000;

/// A built line and how many bytes its instruction takes (1 or more).
struct BuiltLine {
  std::string sLine;
  std::int32_t lLength;
};

/// Decodes the instruction at an address and writes its line.
/// @param lAddress  0 to 65535; throws std::out_of_range otherwise
BuiltLine BuildListingLine(modALLDisass::ImageView abImage, std::int32_t lAddress);

/// The address in a line's first four characters, 0 to 65535.
std::int32_t LineAddress(std::string_view sLine);

/// The number of bytes that a line shows in its four byte columns, 1 to 4.
std::int32_t CountLineBytes(std::string_view sLine);

/// The number of bytes of a line's instruction, from its character column: 1 or more.
std::int32_t LineLength(std::string_view sLine);

/// The instruction column without leading and trailing blanks.
std::string_view LineInstruction(std::string_view sLine);

/// True when lAddress is one of the lCount addresses from lChanged on (with wrap); false for a
/// count below 1.
bool IsAddrInChange(std::int32_t lAddress, std::int32_t lChanged, std::int32_t lCount);

/// True when one of the lLength addresses from lLine on is one of those changed.
bool LineTouchesChange(std::int32_t lLine, std::int32_t lLength, std::int32_t lChanged,
                       std::int32_t lCount);

/// The four upper-case digits of an address text with leading zeros ("C0" gives "00C0"), or empty
/// when the text is no hexadecimal number of up to four digits.
std::string CompleteAddress(std::string_view sText);

/// Writes bytes into the decoder's memory image from lAddress on, from FFFFH on to 0000H.
void WriteMemoryImage(std::int32_t lAddress, std::span<const std::uint8_t> abBytes);

/// Counts the changes of the decoder's memory image, so that a listing in the making sees that
/// another window has changed what its lines were decoded from.
inline std::uint32_t lMemoryImageVersion = 0;

/// The lines of one window and, for every address, which line covers it.
class Listing : public platform::ListLines {
 public:
  /// What was replaced: lRemoved lines from lFirst on by lInserted new ones, 0: nothing.
  struct Replaced {
    std::int32_t lFirst = 0;
    std::int32_t lRemoved = 0;
    std::int32_t lInserted = 0;
  };

  std::int32_t LineCount() const override { return static_cast<std::int32_t>(asLine.size()); }
  std::string_view Line(std::int32_t lIndex) const override {
    return asLine[static_cast<std::size_t>(lIndex)];
  }

  /// The bytes, in both their columns: address and instruction are what a reader looks for.
  std::span<const platform::ColumnRange> QuietColumns() const override;

  /// No lines, and every entry of both tables 0; the lines to come are those of a range.
  void Clear(std::int32_t lRangeStart, std::int32_t lRangeEnd);
  void Append(std::string sLine) { asLine.push_back(std::move(sLine)); }

  /// Refills lLineIndex and bLineStart from the line texts.
  void RebuildAddressMaps();

  /// Decodes again, from the line start lAddress until the old and the new instruction boundaries
  /// agree behind lLastChanged, the last changed byte; abImage already holds the new bytes.
  Replaced RefreshFromAddress(modALLDisass::ImageView abImage, std::int32_t lAddress,
                              std::int32_t lLastChanged);

  /// Brings every line up to date that shows one of the lCount bytes (with wrap) changed from
  /// lChanged on. What was replaced is to be told to a list in this order.
  std::vector<Replaced> RefreshChanged(modALLDisass::ImageView abImage, std::int32_t lChanged,
                                       std::int32_t lCount);

  /// True when an address lies in the listed range.
  bool InRange(std::int32_t lAddress) const {
    return lAddress >= lFirstAddr && lAddress <= lLastAddr;
  }

  /// The line that covers an address, 0 to 65535; 0 also where none does.
  std::int32_t LineIndex(std::int32_t lAddress) const {
    return lLineIndex[static_cast<std::size_t>(lAddress)];
  }
  /// True when a listed instruction starts at an address, 0 to 65535.
  bool IsLineStart(std::int32_t lAddress) const {
    return bLineStart[static_cast<std::size_t>(lAddress)] != 0;
  }
  /// The line that starts at an address, or -1; any 32-bit number may be asked for.
  std::int32_t LineStartingAt(std::int32_t lAddress) const;

 private:
  void MapLine(std::int32_t lIndex);
  std::int32_t LineAtOrBelow(std::int32_t lAddress) const;

  // The listed range; the window's own runs ahead of it while the user enters a new one.
  std::int32_t lFirstAddr = 0;
  std::int32_t lLastAddr = 0;
  std::vector<std::string> asLine;
  std::array<std::int32_t, modALLUtility::ADDRESS_SPACE> lLineIndex{};
  std::array<std::uint8_t, modALLUtility::ADDRESS_SPACE> bLineStart{};
};

}  // namespace modDISListing
