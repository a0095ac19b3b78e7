#include "z80/modDISAsmOperands.h"

#include <algorithm>

namespace modDISAsm {

namespace {

constexpr std::uint8_t PREFIX_IX = 0xDD;
constexpr std::uint8_t PREFIX_IY = 0xFD;

template <typename... Name>
constexpr std::array<std::uint64_t, sizeof...(Name)> KeyTable(Name... sName) {
  return {AsmTextKey(sName)...};
}

constexpr auto REGISTERS = KeyTable("B", "C", "D", "E", "H", "L", "(HL)", "A");
constexpr auto PAIRS = KeyTable("BC", "DE", "HL", "SP");
constexpr auto STACK_PAIRS = KeyTable("BC", "DE", "HL", "AF");
constexpr auto CONDITIONS = KeyTable("NZ", "Z", "NC", "C", "PO", "PE", "P", "M");

template <std::size_t COUNT>
std::int16_t TableIndex(const std::array<std::uint64_t, COUNT>& alTable,
                        std::string_view sOperand) {
  const std::uint64_t lKey = AsmTextKey(sOperand);
  for (std::size_t lIndex = 0; lIndex < COUNT; ++lIndex) {
    if (alTable[lIndex] == lKey) return static_cast<std::int16_t>(lIndex);
  }
  return -1;
}

/// A number in either base; the messages differ in their words only.
struct NumberBase {
  std::int32_t lBase;
  std::string_view sMissing, sInvalid, sOutOfRange;
};
constexpr NumberBase DECIMAL{10, "Missing decimal value", "Invalid decimal value: #",
                             "Decimal value out of range: #"};
constexpr NumberBase HEXADECIMAL{16, "Missing hex value",
                                 "Invalid hex value: ", "Hex value out of range: "};

/// The value of a digit, or more than any base allows.
constexpr std::int32_t DigitValue(char bDigit) {
  const char bChar = AsmUpperCase(bDigit);
  if (bChar >= '0' && bChar <= '9') return bChar - '0';
  if (bChar >= 'A' && bChar <= 'F') return bChar - 'A' + 10;
  return 99;
}

bool ParseDigits(std::string_view sDigits, const NumberBase& tBase, std::int32_t& lValue,
                 std::int32_t lMaximum, std::string& sError) {
  const auto fnFail = [&](std::string_view sMessage) {
    std::string sUpper(sDigits);
    std::ranges::transform(sUpper, sUpper.begin(), AsmUpperCase);
    return AsmFail(sError, {sMessage, sUpper});
  };
  if (sDigits.empty()) return fnFail(tBase.sMissing);
  // Wide enough for one digit beyond any maximum; from there on the value stays too large.
  std::int64_t lSum = 0;
  for (const char bChar : sDigits) {
    const std::int32_t lDigit = DigitValue(bChar);
    if (lDigit >= tBase.lBase) return fnFail(tBase.sInvalid);
    if (lSum <= lMaximum) lSum = lSum * tBase.lBase + lDigit;
  }
  if (lSum > lMaximum) return fnFail(tBase.sOutOfRange);
  lValue = static_cast<std::int32_t>(lSum);
  return true;
}

}  // namespace

bool AsmFail(std::string& sError, std::initializer_list<std::string_view> asPart) {
  sError.clear();
  for (const std::string_view sPart : asPart) sError += sPart;
  return false;
}

std::string_view AsmTrimBlanks(std::string_view sText) {
  const std::size_t lFirst = std::min(sText.find_first_not_of(' '), sText.size());
  return sText.substr(lFirst, sText.find_last_not_of(' ') + 1 - lFirst);
}

bool AsmSplitOperands(std::string_view sText, std::string_view& sFirst, std::string_view& sSecond) {
  const std::size_t lComma = sText.find(',');
  if (lComma == std::string_view::npos) return false;
  sFirst = AsmTrimBlanks(sText.substr(0, lComma));
  sSecond = AsmTrimBlanks(sText.substr(lComma + 1));
  return !sFirst.empty() && !sSecond.empty();
}

std::int16_t AsmRegIndex(std::string_view sOperand) { return TableIndex(REGISTERS, sOperand); }

std::int16_t AsmPairIndex(std::string_view sOperand) { return TableIndex(PAIRS, sOperand); }

std::int16_t AsmStackPairIndex(std::string_view sOperand) {
  return TableIndex(STACK_PAIRS, sOperand);
}

std::int16_t AsmConditionIndex(std::string_view sOperand) {
  return TableIndex(CONDITIONS, sOperand);
}

bool AsmIsIndexRegister(std::string_view sOperand, std::uint8_t& bPrefix) {
  if (sOperand.size() != 2 || sOperand[0] != 'I') return false;
  if (sOperand[1] != 'X' && sOperand[1] != 'Y') return false;
  bPrefix = sOperand[1] == 'X' ? PREFIX_IX : PREFIX_IY;
  return true;
}

std::int16_t AsmHalfIndexRegister(std::string_view sOperand, std::uint8_t& bPrefix) {
  const bool bHigh = sOperand.ends_with('H');
  if (sOperand.size() != 3 || (!bHigh && !sOperand.ends_with('L'))) return -1;
  if (!AsmIsIndexRegister(sOperand.substr(0, 2), bPrefix)) return -1;
  return bHigh ? 4 : 5;
}

bool AsmMentionsIndex(std::string_view sText) {
  return sText.find("IX") != std::string_view::npos || sText.find("IY") != std::string_view::npos;
}

bool AsmIsBracketed(std::string_view sOperand) {
  return sOperand.starts_with('(') && sOperand.ends_with(')');
}

std::string_view AsmInnerText(std::string_view sOperand) {
  return sOperand.substr(1, sOperand.size() - 2);
}

bool AsmParseNumber(std::string_view sText, std::int32_t& lValue, std::int32_t lMaximum,
                    std::string& sError) {
  sText = AsmTrimBlanks(sText);
  if (sText.empty()) return AsmFail(sError, {"Missing numeric value"});
  if (sText.starts_with('#')) {
    return ParseDigits(sText.substr(1), DECIMAL, lValue, lMaximum, sError);
  }
  if (sText.starts_with("&H") || sText.starts_with("&h")) sText.remove_prefix(2);
  if (sText.ends_with('H') || sText.ends_with('h')) sText.remove_suffix(1);
  return ParseDigits(sText, HEXADECIMAL, lValue, lMaximum, sError);
}

bool AsmParseIndexed(std::string_view sOperand, std::uint8_t& bPrefix, std::uint8_t& bDisplacement,
                     std::string& sError) {
  if (!AsmIsBracketed(sOperand)) return false;
  const std::string_view sWritten = AsmInnerText(sOperand);
  TextRoom tRoom(sWritten.size());
  const std::span<char> abRoom = tRoom.Room();
  const auto itEnd = std::ranges::remove_copy(sWritten, abRoom.begin(), ' ').out;
  const std::string_view sInner(abRoom.data(), static_cast<std::size_t>(itEnd - abRoom.begin()));

  if (!AsmIsIndexRegister(sInner.substr(0, 2), bPrefix)) return false;
  if (!sInner.substr(2).starts_with('+')) {
    return AsmFail(sError, {"Invalid indexed operand: ", sOperand});
  }
  std::int32_t lValue = 0;
  if (!AsmParseNumber(sInner.substr(3), lValue, MAX_BYTE, sError)) return false;
  bDisplacement = static_cast<std::uint8_t>(lValue);
  return true;
}

}  // namespace modDISAsm
