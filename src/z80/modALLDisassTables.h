#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "util/modALLUtilityAddress.h"
#include "z80/modALLDisass.h"

/// What the decoder's opcode tables share; internal to the decoder.
///
/// A table is written as a function from an opcode to its text, in the grouping of the opcode's
/// bits. Operands are lower-case letters in that text, as in Zilog's manual: "n" a byte, "nn" a
/// 16-bit number, "e" the target of a relative jump, "d" an index displacement. The compiler turns
/// the function into 256 finished rows, so that decoding copies a row and fills in the digits;
/// composing the texts while decoding was measured to take three to four times as long.
namespace modALLDisass {

/// Stands in front of every undocumented instruction, once.
inline constexpr std::string_view MARK = "* ";

/// Register operands by three bits of the opcode.
inline constexpr std::array<std::string_view, 8> REGISTERS = {"B", "C", "D",    "E",
                                                              "H", "L", "(HL)", "A"};
/// The operand code of (HL), the one "register" in memory.
inline constexpr std::uint32_t REGISTER_MEMORY = 6;

/// Register pairs by bits 5-4 of the opcode.
inline constexpr std::array<std::string_view, 4> PAIRS = {"BC", "DE", "HL", "SP"};

/// Arithmetic and logic with the accumulator by bits 5-3; only four of them name it.
inline constexpr std::array<std::string_view, 8> ALU = {"ADD A,", "ADC A,", "SUB ", "SBC A,",
                                                        "AND ",   "XOR ",   "OR ",  "CP "};
/// Rotates and shifts behind CBH by bits 5-3.
inline constexpr std::array<std::string_view, 8> ROTATES = {"RLC ", "RRC ", "RL ",  "RR ",
                                                            "SLA ", "SRA ", "SLL ", "SRL "};
/// The one undocumented entry of ROTATES.
inline constexpr std::uint32_t ROTATE_SLL = 6;

/// Bit instructions behind CBH by bits 7-6; 0 stands for the rotates.
inline constexpr std::array<std::string_view, 4> BITS = {"", "BIT ", "RES ", "SET "};

/// An opcode byte, split the way in which the Z80's own decoding groups it.
struct Opcode {
  constexpr explicit Opcode(std::uint32_t lOpcode)
      : lWhole(lOpcode),
        lX(lWhole >> 6U),
        lY((lWhole >> 3U) & 7U),
        lZ(lWhole & 7U),
        lP(lY >> 1U),
        lQ(lY & 1U) {}

  std::uint32_t lWhole;  ///< 0 to FFH
  std::uint32_t lX;      ///< bits 7-6
  std::uint32_t lY;      ///< bits 5-3
  std::uint32_t lZ;      ///< bits 2-0
  std::uint32_t lP;      ///< bits 5-4
  std::uint32_t lQ;      ///< bit 3
};

/// The register operand that the low three bits of a code byte select.
constexpr std::string_view DisassRegName(std::uint32_t lCode) { return REGISTERS[lCode & 7U]; }

/// The bit number in bits 5-3 of a code byte, "0" to "7".
constexpr std::string_view DisassBitNumber(std::uint32_t lCode) {
  return std::string_view("01234567").substr((lCode >> 3U) & 7U, 1);
}

/// Strings the parts of an instruction together.
template <class... TPart>
constexpr InstructionText Text(const TPart&... sPart) {
  InstructionText tText;
  (tText.Append(sPart), ...);
  return tText;
}

/// One opcode, ready to be copied: its text with zeros where operand digits go.
struct Row {
  struct Gap {
    std::uint8_t bPosition;  ///< of the first digit in the text
    std::uint8_t bOffset;    ///< of the operand byte from the instruction's first effective byte
  };
  InstructionText tText;
  std::array<Gap, 2> atGap;
  std::uint8_t bGaps;    ///< how many of atGap are used
  bool bRelative;        ///< the one gap takes the target of a jump, in four digits
  bool bMarked;          ///< the text has MARK in front
  std::uint8_t bLength;  ///< all bytes of the instruction
};
using Table = std::array<Row, 256>;

/// @param tText         the text with operand letters; empty where the table has no such opcode
/// @param lOpcodeBytes  bytes of the instruction that are no operands
/// @param lOperand      offset of the first operand byte
consteval Row MakeRow(const InstructionText& tText, std::size_t lOpcodeBytes,
                      std::size_t lOperand) {
  Row tRow{};
  const std::string_view sText = tText.View();
  std::size_t lOperandBytes = 0;
  const auto fnGap = [&](std::size_t lOffset, std::string_view sDigits) {
    tRow.atGap[tRow.bGaps++] = {static_cast<std::uint8_t>(tRow.tText.View().size()),
                                static_cast<std::uint8_t>(lOperand + lOffset)};
    tRow.tText.Append(sDigits);
    ++lOperandBytes;
  };
  for (std::size_t lAt = 0; lAt < sText.size(); ++lAt) {
    if (sText.substr(lAt, 2) == "nn") {  // the high digits come first, the high byte second
      fnGap(1, "00");
      fnGap(0, "00");
      ++lAt;
    } else if (sText[lAt] == 'n' || sText[lAt] == 'd') {
      fnGap(lOperandBytes, "00");
    } else if (sText[lAt] == 'e') {
      fnGap(0, "0000");
      tRow.bRelative = true;
    } else {
      tRow.tText.Append(sText.substr(lAt, 1));
    }
  }
  tRow.bMarked = sText.starts_with(MARK);
  tRow.bLength = static_cast<std::uint8_t>(lOpcodeBytes + lOperandBytes);
  return tRow;
}

/// All rows of a table; parameters as for MakeRow.
template <class TText>
consteval Table MakeTable(TText fnText, std::size_t lOpcodeBytes, std::size_t lOperand) {
  Table atRow{};
  for (std::uint32_t lCode = 0; lCode < atRow.size(); ++lCode)
    atRow[lCode] = MakeRow(fnText(Opcode(lCode)), lOpcodeBytes, lOperand);
  return atRow;
}

/// The byte at an offset from an address, with wrap-around.
inline std::uint8_t ByteAt(ImageView abImage, std::int32_t lAddress, std::int32_t lOffset) {
  return abImage[static_cast<std::size_t>(modALLUtility::AddrAdd(lAddress, lOffset))];
}

/// Writes an operand byte into a text as two hexadecimal digits, or, with bRelative, the target of
/// the relative jump whose displacement that byte is, as four.
/// @param lOffset    bytes from the address to the operand byte
/// @param lPosition  of the first digit in the text
inline void DisassOperandHex(ImageView abImage, std::int32_t lAddress, std::int32_t lOffset,
                             bool bRelative, InstructionText& tText, std::size_t lPosition) {
  std::uint32_t lValue = ByteAt(abImage, lAddress, lOffset);
  if (bRelative) {
    const std::int32_t lNext = modALLUtility::AddrAdd(lAddress, lOffset + 1);
    lValue = static_cast<std::uint32_t>(
        modALLUtility::AddrAdd(lNext, static_cast<std::int32_t>(lValue), true));
    tText.Put(lPosition++, modALLUtility::HexDigit(lValue >> 12U));
    tText.Put(lPosition++, modALLUtility::HexDigit(lValue >> 8U));
  }
  tText.Put(lPosition++, modALLUtility::HexDigit(lValue >> 4U));
  tText.Put(lPosition, modALLUtility::HexDigit(lValue));
}

/// The instruction of a row, whose first byte stands at offset iShift, with its operands.
inline Instruction Fill(const Row& tRow, ImageView abImage, std::int32_t lAddress,
                        std::uint16_t iShift, std::string_view sMark) {
  Instruction tInstruction{tRow.tText, iShift + tRow.bLength};
  std::size_t lMoved = 0;
  if (!sMark.empty() && !tRow.bMarked) {
    tInstruction.tText = Text(sMark, tRow.tText.View());
    lMoved = sMark.size();
  }
  for (std::size_t lGap = 0; lGap < tRow.bGaps; ++lGap) {
    const Row::Gap tGap = tRow.atGap[lGap];
    DisassOperandHex(abImage, lAddress, iShift + tGap.bOffset, tRow.bRelative, tInstruction.tText,
                     tGap.bPosition + lMoved);
  }
  return tInstruction;
}

// The decoders. Each decodes the instruction whose first byte stands at offset iShift from the
// address, behind iShift DD/FD prefixes without effect, and counts those in the length. sMark is
// "" or, behind such prefixes, MARK.

/// Any instruction, by its first byte; hands over to the others for CBH, EDH, DDH and FDH.
Instruction DisassembleAfterPrefix(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                                   std::string_view sMark);
/// CBH: rotates, shifts and bit instructions.
Instruction DisassembleCB(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                          std::string_view sMark);
/// EDH: block, 16-bit and system instructions.
Instruction DisassembleED(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                          std::string_view sMark);
/// DDH and FDH: instructions on IX and IY, and runs of these prefixes.
Instruction DisassembleIndexed(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                               std::string_view sMark);

}  // namespace modALLDisass
