#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

/// The readers that all encoders share: what an operand may look like. They expect the text as
/// `AsmNormalizeText` leaves it. A register name can also be a hexadecimal number ("A", "DE"), so
/// an encoder asks the register tables first and reads a number only when no name fits.
namespace modDISAsm {

/// The largest byte operand, port or displacement.
inline constexpr std::int32_t MAX_BYTE = 0xFF;
/// The largest 16-bit operand, address or jump target.
inline constexpr std::int32_t MAX_WORD = 0xFFFF;

/// The number of (HL) among the 8-bit registers, and of HL among the register pairs.
inline constexpr std::int16_t MEMORY_HL = 6;
inline constexpr std::int16_t PAIR_HL = 2;

/// Room for a copy of a text: instructions of ordinary length stay off the heap.
class TextRoom {
 public:
  /// @param lLength  how many characters the copy may need
  explicit TextRoom(std::size_t lLength) {
    if (lLength > abShort.size()) sLong.resize(lLength);
  }
  /// At least as many characters as asked for; their contents are undefined.
  std::span<char> Room() {
    return sLong.empty() ? std::span<char>(abShort) : std::span<char>(sLong);
  }

 private:
  std::array<char, 80> abShort;
  std::string sLong;
};

/// Sets the error text to the parts put together.
/// @return false, as what an encoder returns when it rejects its operands
bool AsmFail(std::string& sError, std::initializer_list<std::string_view> asPart);

/// A text of up to seven characters as one number, so that the tables compare numbers; all longer
/// texts share a number that no shorter one has.
constexpr std::uint64_t AsmTextKey(std::string_view sText) {
  if (sText.size() > 7) return ~std::uint64_t{0};
  std::uint64_t lKey = sText.size();
  for (const char bChar : sText) lKey = lKey << 8U | static_cast<std::uint8_t>(bChar);
  return lKey;
}

/// ASCII letters in upper case; every other byte as it is, whatever the locale makes of it.
constexpr char AsmUpperCase(char bChar) {
  return bChar >= 'a' && bChar <= 'z' ? static_cast<char>(bChar - 'a' + 'A') : bChar;
}

/// The text without the blanks at both ends.
std::string_view AsmTrimBlanks(std::string_view sText);

/// Splits at the first "," into two parts without blanks at their ends; the second part may hold
/// further commas. Gives false, and parts without meaning, when there is no "," or an empty part.
bool AsmSplitOperands(std::string_view sText, std::string_view& sFirst, std::string_view& sSecond);

/// The number of an 8-bit register, or (HL), in an opcode: B 0, C 1, D 2, E 3, H 4, L 5, (HL) 6,
/// A 7; -1 for any other text.
std::int16_t AsmRegIndex(std::string_view sOperand);

/// The number of a register pair in an opcode: BC 0, DE 1, HL 2, SP 3; -1 for any other text.
std::int16_t AsmPairIndex(std::string_view sOperand);

/// The number of a pair that PUSH and POP take: BC 0, DE 1, HL 2, AF 3; -1 for any other text.
std::int16_t AsmStackPairIndex(std::string_view sOperand);

/// The number of a condition: NZ 0, Z 1, NC 2, C 3, PO 4, PE 5, P 6, M 7; -1 for any other text.
std::int16_t AsmConditionIndex(std::string_view sOperand);

/// Whether the operand is IX or IY; if so, bPrefix receives DDH or FDH.
bool AsmIsIndexRegister(std::string_view sOperand, std::uint8_t& bPrefix);

/// The number of half an index register in an opcode: IXH and IYH 4, IXL and IYL 5, and in bPrefix
/// DDH or FDH; -1 with bPrefix unchanged for any other text.
std::int16_t AsmHalfIndexRegister(std::string_view sOperand, std::uint8_t& bPrefix);

/// Whether "IX" or "IY" stands anywhere in the text, to tell an index form written wrongly from
/// none at all.
bool AsmMentionsIndex(std::string_view sText);

/// Whether the operand begins with "(" and ends with ")".
bool AsmIsBracketed(std::string_view sOperand);

/// What stands between the brackets of a bracketed operand.
std::string_view AsmInnerText(std::string_view sOperand);

/// Reads a number in either case: hexadecimal ("1F", "1FH", "&H1F"), or decimal behind "#". No
/// sign, no blank within, any length.
/// @param lValue    receives 0 to lMaximum; unchanged on failure
/// @param lMaximum  the largest value that is accepted
/// @param sError    receives the message on failure, else unchanged
bool AsmParseNumber(std::string_view sText, std::int32_t& lValue, std::int32_t lMaximum,
                    std::string& sError);

/// Reads an indexed operand, "(IX+n)" or "(IY+n)" with blanks anywhere inside.
/// @param bPrefix        receives DDH or FDH
/// @param bDisplacement  receives the displacement as a two's-complement byte
/// @param sError         receives a message for an indexed operand written wrongly; unchanged for
///                       one that is not indexed at all
/// @return whether it is an indexed operand
bool AsmParseIndexed(std::string_view sOperand, std::uint8_t& bPrefix, std::uint8_t& bDisplacement,
                     std::string& sError);

}  // namespace modDISAsm
