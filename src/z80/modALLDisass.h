#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// Z80 instruction decoder: the bytes at one address of a 64 KB image to the text of one
/// instruction and its length. It covers the instruction set of Zilog's Z80 CPU User Manual
/// (UM0080) and the undocumented instructions as "The Undocumented Z80 Documented"
/// lists them, which carry the mark "* "; every byte sequence decodes to something.
namespace modALLDisass {

/// The Z80's whole address space, one byte per address.
using MemoryImage = std::array<std::uint8_t, 65536>;

/// A read-only view of such an image.
using ImageView = std::span<const std::uint8_t, 65536>;

/// The text of one instruction, held in place: at most 19 characters, the width of the listing's
/// text column.
class InstructionText {
 public:
  /// Number of characters that fit.
  static constexpr std::size_t MAX_LENGTH = 19;

  /// The characters; valid as long as this value is.
  [[nodiscard]] constexpr std::string_view View() const { return {abText.data(), bLength}; }

  /// Adds text behind what is there; what goes beyond MAX_LENGTH is cut off.
  constexpr void Append(std::string_view sPart) {
    for (const char bPart : sPart.substr(0, MAX_LENGTH - bLength)) abText[bLength++] = bPart;
  }

  /// Replaces the character at a position below MAX_LENGTH.
  constexpr void Put(std::size_t lPosition, char bNew) { abText[lPosition] = bNew; }

 private:
  std::array<char, MAX_LENGTH> abText{};
  std::uint8_t bLength = 0;
};

/// One decoded instruction.
struct Instruction {
  /// Upper case, never empty, no blank at either end.
  InstructionText tText;
  /// Bytes from the address to the end of the instruction, every prefix byte included: 1 to 4, and
  /// more behind DD/FD prefixes without effect, since a run of those can be as long as the memory;
  /// 65536 where the whole address space is one such run.
  std::int32_t lLength;
};

/// Decodes the instruction at an address; bytes behind FFFFH are read from 0000H on.
/// @param abImage   the memory to read, never written
/// @param lAddress  0 to 65535; of any other number the low 16 bits count
Instruction DisassembleInstruction(ImageView abImage, std::int32_t lAddress);

/// The decoder's memory image, from which every listing of the process is decoded: zero at the
/// start, filled by the listing and the in-place assembly, never written by the decoder. Belongs to
/// the user-interface thread.
extern MemoryImage abMemoryImage;

}  // namespace modALLDisass
