#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "z80/modALLDisass.h"

/// Checks assembler and decoder against each other on the program that stands in a memory image.
namespace modDISDebug {

/// The outcome of a check, in instructions.
struct CheckCounters {
  /// Decoded.
  std::int32_t lChecked = 0;
  /// Whose text the assembler accepted, or rejected.
  std::int32_t lSupported = 0;
  std::int32_t lUnsupported = 0;
  /// Whose assembled bytes decode to another text.
  std::int32_t lMismatch = 0;
  /// Assembled to other bytes than were decoded: unmarked, or marked undocumented.
  std::int32_t lOpcodeMismatch = 0;
  std::int32_t lOpcodeIgnored = 0;
};

/// How many instructions are checked between two calls that let other events run.
inline constexpr std::int32_t INSTRUCTIONS_PER_YIELD = 1024;

/// Walks the image from address 0000H instruction by instruction: decodes, assembles the text,
/// decodes the assembled bytes.
/// @param abReference  what is checked; must not change during the walk
/// @param abWork       starts equal to abReference; assembled bytes stand in it for one decoding at
///                     a time, so it is equal again at the end
/// @param fnYield      called after every INSTRUCTIONS_PER_YIELD instructions; false ends the walk
/// @return the counts up to the end of the image or of the walk
CheckCounters CheckImages(modALLDisass::ImageView abReference, modALLDisass::MemoryImage& abWork,
                          const std::function<bool()>& fnYield);

/// What the user is told about a check: seven lines separated by CR LF.
std::string CheckSummary(const CheckCounters& tCounters);

/// An instruction's text as two texts are compared: in upper case, without the undocumented mark
/// and without blanks that only set off ",", brackets, "+" and "-".
std::string DebugNormalizeText(std::string_view sText);

/// Whether the text carries the decoder's undocumented mark "*".
bool DebugIsMarked(std::string_view sText);

/// Whether the assembled bytes are the ones that were decoded.
/// @param lAddress  0 to 65535, where the decoded bytes begin; they wrap around at FFFFH
/// @param lLength   how many bytes were decoded
bool DebugBytesEqual(modALLDisass::ImageView abImage, std::int32_t lAddress, std::int32_t lLength,
                     std::span<const std::uint8_t> abAssembled);

}  // namespace modDISDebug
