#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Turns one line of Z80 assembly text into the bytes of one instruction. Encodings are those of
/// the Zilog Z80 CPU User Manual, with the undocumented instructions that the decoder shows as
/// well: IXH, IXL, IYH and IYL, SLL, IN (C), OUT (C),0 and the indexed rotates and bit
/// instructions that copy their result into a register.
namespace modDISAsm {

/// The bytes of one instruction in the order in which they stand in memory.
struct AsmBytes {
  /// The instruction's bytes first, zeros after them.
  std::array<std::uint8_t, 4> abByte{};
  /// How many bytes belong to the instruction: 1 to 4, or 0 when there is none.
  std::int16_t iLength = 0;

  /// The bytes that belong to the instruction.
  [[nodiscard]] std::span<const std::uint8_t> View() const {
    return std::span(abByte).first(static_cast<std::size_t>(iLength));
  }
};

/// Assembles one instruction. Depends on nothing but its arguments and keeps nothing.
/// @param sText     the instruction in any case and of any length, blanks and TABs anywhere between
///                  its words, optionally with the decoder's undocumented mark "*" in front;
///                  numbers are hexadecimal ("1F", "1FH", "&H1F") or, behind "#", decimal
/// @param lAddress  0 to 65535: where the instruction will stand; JR and DJNZ count from there
/// @param tBytes    receives the instruction; no bytes when the text is rejected
/// @param sError    receives "" on success, else the one message that says what is wrong
/// @return whether the text was assembled
bool AsmAssemble(std::string_view sText, std::int32_t lAddress, AsmBytes& tBytes,
                 std::string& sError);

}  // namespace modDISAsm
