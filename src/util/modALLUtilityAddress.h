#pragma once

#include <cstdint>
#include <string>

/// Address arithmetic and hexadecimal text, on which decoder, listing and in-place assembly rest.
namespace modALLUtility {

/// Size of the Z80's address space in bytes.
inline constexpr std::int32_t ADDRESS_SPACE = 65536;

/// Steps through the 64 KB address space with wrap-around in both directions.
/// @param lBase    any 32-bit number, normally an address 0 to 65535
/// @param lOffset  added whole, or, with bSigned, as the two's-complement value of its low 8 bits
/// @return the sum modulo 65536
constexpr std::int32_t AddrAdd(std::int32_t lBase, std::int32_t lOffset, bool bSigned = false) {
  const std::int32_t lStep = bSigned ? static_cast<std::int8_t>(lOffset & 0xFF) : lOffset;
  return static_cast<std::int32_t>(
      (static_cast<std::uint32_t>(lBase) + static_cast<std::uint32_t>(lStep)) & 0xFFFFU);
}

/// The value in upper-case hexadecimal without prefix, padded with zeros to four digits; a value
/// that needs more digits is returned whole, a negative one as its 8-digit two's complement.
std::string Hex4(std::int32_t lValue);

/// The character of a hexadecimal digit, upper case.
/// @param lNibble  0 to 15
constexpr char HexDigit(std::uint32_t lNibble) { return "0123456789ABCDEF"[lNibble & 0xFU]; }

/// The upper-case form of an ASCII letter; any other character code as it is, for neither
/// hexadecimal digits nor instructions have other letters.
constexpr std::int32_t UpperCase(std::int32_t lCharacter) {
  return lCharacter >= 'a' && lCharacter <= 'z' ? lCharacter - 'a' + 'A' : lCharacter;
}

}  // namespace modALLUtility
