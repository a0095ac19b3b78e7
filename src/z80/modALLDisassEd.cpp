#include <array>

#include "z80/modALLDisassTables.h"

namespace modALLDisass {

namespace {

/// Interrupt modes by bits 5-3; the documented ones are 0, 2 and 3.
constexpr std::array<std::string_view, 8> MODES = {"IM 0", "IM 0", "IM 1", "IM 2",
                                                   "IM 0", "IM 0", "IM 1", "IM 2"};
constexpr std::array<std::string_view, 6> SYSTEM = {"LD I,A", "LD R,A", "LD A,I",
                                                    "LD A,R", "RRD",    "RLD"};
/// Block instructions by bits 4-3 and 1-0.
constexpr std::array<std::array<std::string_view, 4>, 4> BLOCKS = {
    {{"LDI", "CPI", "INI", "OUTI"},
     {"LDD", "CPD", "IND", "OUTD"},
     {"LDIR", "CPIR", "INIR", "OTIR"},
     {"LDDR", "CPDR", "INDR", "OTDR"}}};

constexpr InstructionText ExtendedText(const Opcode& tOpcode) {
  const auto [lWhole, lX, lY, lZ, lP, lQ] = tOpcode;
  // Many of these stand at several codes, of which only one is documented.
  const auto fnMarkUnless = [](bool bDocumented) { return bDocumented ? "" : MARK; };
  if (lX == 1) {
    switch (lZ) {
      case 0:
        if (lY == REGISTER_MEMORY) return Text(MARK, "IN (C)");
        return Text("IN ", DisassRegName(lY), ",(C)");
      case 1:
        if (lY == REGISTER_MEMORY) return Text(MARK, "OUT (C),0");
        return Text("OUT (C),", DisassRegName(lY));
      case 2:
        return Text(lQ == 0 ? "SBC HL," : "ADC HL,", PAIRS[lP]);
      case 3: {
        // HL has its documented forms at 22H and 2AH, without prefix.
        const std::string_view sMarkHl = fnMarkUnless(lP != 2);
        return lQ == 0 ? Text(sMarkHl, "LD (nn),", PAIRS[lP])
                       : Text(sMarkHl, "LD ", PAIRS[lP], ",(nn)");
      }
      case 4:
        return Text(fnMarkUnless(lWhole == 0x44), "NEG");
      case 5:
        if (lWhole == 0x4D) return Text("RETI");
        return Text(fnMarkUnless(lWhole == 0x45), "RETN");
      case 6:
        return Text(fnMarkUnless(lY == 0 || lY == 2 || lY == 3), MODES[lY]);
      default:
        if (lY < SYSTEM.size()) return Text(SYSTEM[lY]);
        break;
    }
  }
  if (lX == 2 && lY >= 4 && lZ < 4) return Text(BLOCKS[lY - 4][lZ]);
  return Text(MARK, "NOP");
}

constexpr Table BEHIND_ED = MakeTable(ExtendedText, 2, 2);

}  // namespace

Instruction DisassembleED(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                          std::string_view sMark) {
  return Fill(BEHIND_ED[ByteAt(abImage, lAddress, iShift + 1)], abImage, lAddress, iShift, sMark);
}

}  // namespace modALLDisass
