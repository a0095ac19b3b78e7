#include "z80/modALLDisass.h"

#include <array>

#include "z80/modALLDisassTables.h"

namespace modALLDisass {

namespace {

constexpr std::array<std::string_view, 4> STACK_PAIRS = {"BC", "DE", "HL", "AF"};
constexpr std::array<std::string_view, 8> CONDITIONS = {"NZ", "Z", "NC", "C", "PO", "PE", "P", "M"};
constexpr std::array<std::string_view, 4> ROWS_00_TO_18 = {"NOP", "EX AF,AF'", "DJNZ e", "JR e"};
constexpr std::array<std::string_view, 8> INDIRECT_LOADS = {"LD (BC),A", "LD A,(BC)",  "LD (DE),A",
                                                            "LD A,(DE)", "LD (nn),HL", "LD HL,(nn)",
                                                            "LD (nn),A", "LD A,(nn)"};
constexpr std::array<std::string_view, 8> ACCUMULATOR = {"RLCA", "RRCA", "RLA", "RRA",
                                                         "DAA",  "CPL",  "SCF", "CCF"};
constexpr std::array<std::string_view, 4> RETURNS = {"RET", "EXX", "JP (HL)", "LD SP,HL"};
constexpr std::array<std::string_view, 8> ROWS_C3_TO_FB = {
    "JP nn", "", "OUT (n),A", "IN A,(n)", "EX (SP),HL", "EX DE,HL", "DI", "EI"};
constexpr std::array<std::string_view, 8> RESTARTS = {"RST 00H", "RST 08H", "RST 10H", "RST 18H",
                                                      "RST 20H", "RST 28H", "RST 30H", "RST 38H"};

/// The rows of the four prefix bytes are never asked for.
constexpr InstructionText UnprefixedText(const Opcode& tOpcode) {
  const auto [lWhole, lX, lY, lZ, lP, lQ] = tOpcode;
  switch (lX) {
    case 0:
      switch (lZ) {
        case 0:
          return lY < 4 ? Text(ROWS_00_TO_18[lY]) : Text("JR ", CONDITIONS[lY - 4], ",e");
        case 1:
          return lQ == 0 ? Text("LD ", PAIRS[lP], ",nn") : Text("ADD HL,", PAIRS[lP]);
        case 2:
          return Text(INDIRECT_LOADS[lY]);
        case 3:
          return Text(lQ == 0 ? "INC " : "DEC ", PAIRS[lP]);
        case 4:
          return Text("INC ", DisassRegName(lY));
        case 5:
          return Text("DEC ", DisassRegName(lY));
        case 6:
          return Text("LD ", DisassRegName(lY), ",n");
        default:
          return Text(ACCUMULATOR[lY]);
      }
    case 1:
      return lWhole == 0x76 ? Text("HALT") : Text("LD ", DisassRegName(lY), ",", DisassRegName(lZ));
    case 2:
      return Text(ALU[lY], DisassRegName(lZ));
    default:
      switch (lZ) {
        case 0:
          return Text("RET ", CONDITIONS[lY]);
        case 1:
          return lQ == 0 ? Text("POP ", STACK_PAIRS[lP]) : Text(RETURNS[lP]);
        case 2:
          return Text("JP ", CONDITIONS[lY], ",nn");
        case 3:
          return Text(ROWS_C3_TO_FB[lY]);
        case 4:
          return Text("CALL ", CONDITIONS[lY], ",nn");
        case 5:
          return lQ == 0 ? Text("PUSH ", STACK_PAIRS[lP]) : Text("CALL nn");
        case 6:
          return Text(ALU[lY], "n");
        default:
          return Text(RESTARTS[lY]);
      }
  }
}

constexpr Table UNPREFIXED = MakeTable(UnprefixedText, 1, 1);

}  // namespace

MemoryImage abMemoryImage{};

Instruction DisassembleAfterPrefix(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                                   std::string_view sMark) {
  const std::uint8_t bOpcode = ByteAt(abImage, lAddress, iShift);
  switch (bOpcode) {
    case 0xCB:
      return DisassembleCB(abImage, lAddress, iShift, sMark);
    case 0xED:
      return DisassembleED(abImage, lAddress, iShift, sMark);
    case 0xDD:
    case 0xFD:
      return DisassembleIndexed(abImage, lAddress, iShift, sMark);
    default:
      return Fill(UNPREFIXED[bOpcode], abImage, lAddress, iShift, sMark);
  }
}

Instruction DisassembleInstruction(ImageView abImage, std::int32_t lAddress) {
  return DisassembleAfterPrefix(abImage, lAddress, 0, "");
}

}  // namespace modALLDisass
