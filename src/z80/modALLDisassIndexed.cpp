#include "z80/modALLDisassTables.h"

namespace modALLDisass {

namespace {

constexpr std::uint8_t PREFIX_IX = 0xDD;
constexpr std::uint8_t PREFIX_IY = 0xFD;

constexpr bool IsIndexPrefix(std::uint8_t bCode) {
  return bCode == PREFIX_IX || bCode == PREFIX_IY;
}

/// What a prefix puts in the place of HL, H, L and (HL).
struct IndexRegister {
  std::string_view sWhole, sHigh, sLow, sMemory;
};
constexpr IndexRegister INDEX_X = {"IX", "IXH", "IXL", "(IX + d)"};
constexpr IndexRegister INDEX_Y = {"IY", "IYH", "IYL", "(IY + d)"};

constexpr bool IsHalf(std::uint32_t lCode) { return lCode == 4 || lCode == 5; }

constexpr std::string_view RegOrHalf(const IndexRegister& tIndex, std::uint32_t lCode) {
  if (!IsHalf(lCode)) return DisassRegName(lCode);
  return lCode == 4 ? tIndex.sHigh : tIndex.sLow;
}

/// Empty for an opcode on which the prefix has no effect.
constexpr InstructionText IndexedText(const Opcode& tOpcode, const IndexRegister& tIndex) {
  const auto [lWhole, lX, lY, lZ, lP, lQ] = tOpcode;
  const std::string_view sIndex = tIndex.sWhole;
  const std::string_view sMemory = tIndex.sMemory;
  switch (lWhole) {
    case 0x09:
    case 0x19:
    case 0x29:
    case 0x39:
      return Text("ADD ", sIndex, ",", lP == 2 ? sIndex : PAIRS[lP]);
    case 0x21:
      return Text("LD ", sIndex, ",nn");
    case 0x22:
      return Text("LD (nn),", sIndex);
    case 0x2A:
      return Text("LD ", sIndex, ",(nn)");
    case 0x23:
      return Text("INC ", sIndex);
    case 0x2B:
      return Text("DEC ", sIndex);
    case 0x24:
    case 0x2C:
      return Text(MARK, "INC ", RegOrHalf(tIndex, lY));
    case 0x25:
    case 0x2D:
      return Text(MARK, "DEC ", RegOrHalf(tIndex, lY));
    case 0x26:
    case 0x2E:
      return Text(MARK, "LD ", RegOrHalf(tIndex, lY), ",n");
    case 0x34:
      return Text("INC ", sMemory);
    case 0x35:
      return Text("DEC ", sMemory);
    case 0x36:
      return Text("LD ", sMemory, ",n");
    case 0x76:
      return {};  // HALT, where LD (HL),(HL) would stand
    case 0xE1:
      return Text("POP ", sIndex);
    case 0xE5:
      return Text("PUSH ", sIndex);
    case 0xE3:
      return Text("EX (SP),", sIndex);
    case 0xE9:
      return Text("JP (", sIndex, ")");
    case 0xF9:
      return Text("LD SP,", sIndex);
    default:
      break;
  }
  // Beside (IX + d), H and L keep their meaning; elsewhere the halves take their place.
  if (lX == 1 && lZ == REGISTER_MEMORY) return Text("LD ", DisassRegName(lY), ",", sMemory);
  if (lX == 1 && lY == REGISTER_MEMORY) return Text("LD ", sMemory, ",", DisassRegName(lZ));
  if (lX == 1 && (IsHalf(lY) || IsHalf(lZ)))
    return Text(MARK, "LD ", RegOrHalf(tIndex, lY), ",", RegOrHalf(tIndex, lZ));
  if (lX == 2 && IsHalf(lZ)) return Text(MARK, ALU[lY], RegOrHalf(tIndex, lZ));
  if (lX == 2 && lZ == REGISTER_MEMORY) return Text(ALU[lY], sMemory);
  return {};
}

/// An operation byte that names a register gets a copy of the result there; rotates and shifts name
/// it first, the others last.
constexpr InstructionText IndexedBitText(const Opcode& tOpcode, const IndexRegister& tIndex) {
  const bool bCopy = tOpcode.lZ != REGISTER_MEMORY;
  const std::string_view sCopy = bCopy ? DisassRegName(tOpcode.lZ) : "";
  const std::string_view sComma = bCopy ? "," : "";
  if (tOpcode.lX == 0) {
    return Text(tOpcode.lY == ROTATE_SLL ? MARK : "", ROTATES[tOpcode.lY], sCopy, sComma,
                tIndex.sMemory);
  }
  return Text(tOpcode.lX == 1 && bCopy ? MARK : "", BITS[tOpcode.lX],
              DisassBitNumber(tOpcode.lWhole), ",", tIndex.sMemory, sComma, sCopy);
}

/// The tables of one prefix. Behind CBH the displacement stands before the operation byte.
struct IndexTables {
  Table atPlain, atBits;
};

consteval IndexTables MakeIndexTables(const IndexRegister& tIndex) {
  return {MakeTable([&](const Opcode& tOpcode) { return IndexedText(tOpcode, tIndex); }, 2, 2),
          MakeTable([&](const Opcode& tOpcode) { return IndexedBitText(tOpcode, tIndex); }, 3, 2)};
}

constexpr IndexTables BEHIND_IX = MakeIndexTables(INDEX_X);
constexpr IndexTables BEHIND_IY = MakeIndexTables(INDEX_Y);

}  // namespace

Instruction DisassembleIndexed(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                               std::string_view sMark) {
  // Only the last prefix of a run counts. A run that comes back to its own start has none: its
  // length is that of the address space, so that whoever steps through memory gets to the end.
  while (IsIndexPrefix(ByteAt(abImage, lAddress, iShift + 1))) {
    if (iShift == modALLUtility::ADDRESS_SPACE - 1)
      return {Text(MARK, "NOP"), modALLUtility::ADDRESS_SPACE};
    ++iShift;
    sMark = MARK;
  }

  const bool bIX = ByteAt(abImage, lAddress, iShift) == PREFIX_IX;
  const IndexTables& tTables = bIX ? BEHIND_IX : BEHIND_IY;
  const std::uint8_t bOpcode = ByteAt(abImage, lAddress, iShift + 1);
  const Row& tRow = bOpcode == 0xCB ? tTables.atBits[ByteAt(abImage, lAddress, iShift + 3)]
                                    : tTables.atPlain[bOpcode];
  if (!tRow.tText.View().empty()) return Fill(tRow, abImage, lAddress, iShift, sMark);
  return DisassembleAfterPrefix(abImage, lAddress, static_cast<std::uint16_t>(iShift + 1), MARK);
}

}  // namespace modALLDisass
