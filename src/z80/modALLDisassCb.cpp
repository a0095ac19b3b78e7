#include "z80/modALLDisassTables.h"

namespace modALLDisass {

namespace {

constexpr InstructionText BitText(const Opcode& tOpcode) {
  const std::string_view sRegister = DisassRegName(tOpcode.lZ);
  if (tOpcode.lX == 0)
    return Text(tOpcode.lY == ROTATE_SLL ? MARK : "", ROTATES[tOpcode.lY], sRegister);
  return Text(BITS[tOpcode.lX], DisassBitNumber(tOpcode.lWhole), ",", sRegister);
}

constexpr Table BEHIND_CB = MakeTable(BitText, 2, 2);

}  // namespace

Instruction DisassembleCB(ImageView abImage, std::int32_t lAddress, std::uint16_t iShift,
                          std::string_view sMark) {
  return Fill(BEHIND_CB[ByteAt(abImage, lAddress, iShift + 1)], abImage, lAddress, iShift, sMark);
}

}  // namespace modALLDisass
