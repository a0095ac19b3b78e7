#include "z80/modDISAsmEncoders.h"
#include "z80/modDISAsmOperands.h"

namespace modDISAsm {

namespace {

/// What an index routine returns at its end: false, with a message of its own when an operand that
/// no index form took mentions an index register all the same, else with none.
bool NoIndexForm(std::string_view sName, std::string_view sOperand, std::string& sError) {
  if (AsmMentionsIndex(sOperand)) return AsmFail(sError, {"Invalid ", sName, " IX/IY operand"});
  sError.clear();
  return false;
}

bool AsmEncodeIncDecIndex(std::string_view sOperand, bool bIncrement, const AsmOutput& tOutput) {
  std::uint8_t bPrefix = 0;
  std::uint8_t bDisplacement = 0;
  if (AsmIsIndexRegister(sOperand, bPrefix)) {
    return AsmEmit2(tOutput, bPrefix, bIncrement ? 0x23 : 0x2B);
  }
  const std::int16_t iHalf = AsmHalfIndexRegister(sOperand, bPrefix);
  if (iHalf >= 0) return AsmEmit2(tOutput, bPrefix, 8 * iHalf + (bIncrement ? 0x04 : 0x05));
  if (AsmParseIndexed(sOperand, bPrefix, bDisplacement, tOutput.sError)) {
    return AsmEmit3(tOutput, bPrefix, bIncrement ? 0x34 : 0x35, bDisplacement);
  }
  return NoIndexForm("INC/DEC", sOperand, tOutput.sError);
}

bool AsmEncodeADDIndex(std::string_view sFirst, std::string_view sSecond,
                       const AsmOutput& tOutput) {
  std::uint8_t bPrefix = 0;
  if (!AsmIsIndexRegister(sFirst, bPrefix)) return false;
  if (sSecond == "BC") return AsmEmit2(tOutput, bPrefix, 0x09);
  if (sSecond == "DE") return AsmEmit2(tOutput, bPrefix, 0x19);
  if (sSecond == sFirst) return AsmEmit2(tOutput, bPrefix, 0x29);
  if (sSecond == "SP") return AsmEmit2(tOutput, bPrefix, 0x39);
  return AsmFail(tOutput.sError, {"Invalid ADD IX/IY operand"});
}

bool AsmEncodeALUIndex(std::string_view sName, std::string_view sOperand, std::int32_t lBase,
                       const AsmOutput& tOutput) {
  std::uint8_t bPrefix = 0;
  std::uint8_t bDisplacement = 0;
  const std::int16_t iHalf = AsmHalfIndexRegister(sOperand, bPrefix);
  if (iHalf >= 0) return AsmEmit2(tOutput, bPrefix, lBase + iHalf);
  if (AsmParseIndexed(sOperand, bPrefix, bDisplacement, tOutput.sError)) {
    return AsmEmit3(tOutput, bPrefix, lBase + MEMORY_HL, bDisplacement);
  }
  return NoIndexForm(sName, sOperand, tOutput.sError);
}

/// ADC and SBC, which have the same forms.
/// @param lPairBase  opcode behind EDH of the form with HL and BC
bool EncodeWithCarry(std::string_view sName, std::string_view sOperands, std::int32_t lPairBase,
                     std::int32_t lBase, std::int32_t lImmediate, const AsmOutput& tOutput) {
  std::string_view sFirst;
  std::string_view sSecond;
  const bool bSplit = AsmSplitOperands(sOperands, sFirst, sSecond);
  if (bSplit && sFirst == "HL") {
    const std::int16_t iPair = AsmPairIndex(sSecond);
    if (iPair < 0) return AsmFail(tOutput.sError, {"Invalid ", sName, " HL operand"});
    return AsmEmit2(tOutput, 0xED, lPairBase + 16 * iPair);
  }
  if (bSplit && sFirst == "A") return AsmEncodeALU(sName, sSecond, lBase, lImmediate, tOutput);
  return AsmFail(tOutput.sError, {"Invalid ", sName, " syntax"});
}

/// Emits an indexed instruction of the CB group, or fails where the register that is to receive a
/// copy of the result is none.
bool EmitIndexedCopy(std::string_view sMnemonic, std::uint8_t bPrefix, std::uint8_t bDisplacement,
                     std::int32_t lBase, std::int16_t iRegister, const AsmOutput& tOutput) {
  if (iRegister < 0) {
    return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " indexed destination"});
  }
  return AsmEmit4(tOutput, bPrefix, 0xCB, bDisplacement, lBase + iRegister);
}

/// A rotate or shift of an indexed byte with a copy into a register, the two in either order.
bool EncodeShiftCopy(std::string_view sMnemonic, std::string_view sFirst, std::string_view sSecond,
                     std::int32_t lBase, const AsmOutput& tOutput) {
  std::uint8_t bPrefix = 0;
  std::uint8_t bDisplacement = 0;
  const auto fnCopyRegister = [](std::string_view sOperand) {
    const std::int16_t iRegister = AsmRegIndex(sOperand);
    return iRegister == MEMORY_HL ? std::int16_t{-1} : iRegister;
  };
  if (AsmParseIndexed(sSecond, bPrefix, bDisplacement, tOutput.sError)) {
    return EmitIndexedCopy(sMnemonic, bPrefix, bDisplacement, lBase, fnCopyRegister(sFirst),
                           tOutput);
  }
  if (!tOutput.sError.empty()) return false;
  if (AsmParseIndexed(sFirst, bPrefix, bDisplacement, tOutput.sError)) {
    return EmitIndexedCopy(sMnemonic, bPrefix, bDisplacement, lBase, fnCopyRegister(sSecond),
                           tOutput);
  }
  return false;
}

}  // namespace

bool AsmEncodeIncDec(std::string_view sOperand, bool bIncrement, const AsmOutput& tOutput) {
  if (AsmEncodeIncDecIndex(sOperand, bIncrement, tOutput)) return true;
  if (!tOutput.sError.empty()) return false;
  const std::int16_t iRegister = AsmRegIndex(sOperand);
  if (iRegister >= 0) return AsmEmit1(tOutput, 8 * iRegister + (bIncrement ? 0x04 : 0x05));
  const std::int16_t iPair = AsmPairIndex(sOperand);
  if (iPair >= 0) return AsmEmit1(tOutput, 16 * iPair + (bIncrement ? 0x03 : 0x0B));
  return AsmFail(tOutput.sError, {"Invalid INC/DEC operand"});
}

bool AsmEncodeADD(std::string_view sOperands, const AsmOutput& tOutput) {
  std::string_view sFirst;
  std::string_view sSecond;
  if (!AsmSplitOperands(sOperands, sFirst, sSecond)) {
    return AsmFail(tOutput.sError, {"Invalid ADD syntax"});
  }
  if (AsmEncodeADDIndex(sFirst, sSecond, tOutput)) return true;
  if (!tOutput.sError.empty()) return false;
  if (sFirst == "HL") {
    const std::int16_t iPair = AsmPairIndex(sSecond);
    if (iPair < 0) return AsmFail(tOutput.sError, {"Invalid ADD HL operand"});
    return AsmEmit1(tOutput, 16 * iPair + 0x09);
  }
  if (sFirst == "A") return AsmEncodeALU("ADD", sSecond, 0x80, 0xC6, tOutput);
  return AsmFail(tOutput.sError, {"Invalid ADD syntax"});
}

bool AsmEncodeADC(std::string_view sOperands, const AsmOutput& tOutput) {
  return EncodeWithCarry("ADC", sOperands, 0x4A, 0x88, 0xCE, tOutput);
}

bool AsmEncodeSBC(std::string_view sOperands, const AsmOutput& tOutput) {
  return EncodeWithCarry("SBC", sOperands, 0x42, 0x98, 0xDE, tOutput);
}

bool AsmEncodeALU(std::string_view sName, std::string_view sOperand, std::int32_t lBase,
                  std::int32_t lImmediate, const AsmOutput& tOutput) {
  if (AsmEncodeALUIndex(sName, sOperand, lBase, tOutput)) return true;
  if (!tOutput.sError.empty()) return false;
  const std::int16_t iRegister = AsmRegIndex(sOperand);
  if (iRegister >= 0) return AsmEmit1(tOutput, lBase + iRegister);
  if (AsmEmitWithByte(tOutput, lImmediate, sOperand)) return true;
  return AsmFail(tOutput.sError, {"Invalid ", sName, " operand"});
}

bool AsmEncodeShiftRotate(std::string_view sMnemonic, std::string_view sOperands,
                          std::int32_t lBase, const AsmOutput& tOutput) {
  const std::size_t lComma = sOperands.find(',');
  const bool bTwo = lComma != std::string_view::npos;
  std::uint8_t bPrefix = 0;
  std::uint8_t bDisplacement = 0;
  if (bTwo) {
    const std::string_view sFirst = AsmTrimBlanks(sOperands.substr(0, lComma));
    const std::string_view sSecond = AsmTrimBlanks(sOperands.substr(lComma + 1));
    if (EncodeShiftCopy(sMnemonic, sFirst, sSecond, lBase, tOutput)) return true;
  } else if (AsmParseIndexed(sOperands, bPrefix, bDisplacement, tOutput.sError)) {
    return AsmEmit4(tOutput, bPrefix, 0xCB, bDisplacement, lBase + MEMORY_HL);
  }
  if (!tOutput.sError.empty()) return false;
  if (AsmMentionsIndex(sOperands)) {
    return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " IX/IY operand"});
  }
  if (bTwo) return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " syntax"});
  const std::int16_t iRegister = AsmRegIndex(sOperands);
  if (iRegister < 0) return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " operand"});
  return AsmEmit2(tOutput, 0xCB, lBase + iRegister);
}

bool AsmEncodeBitOp(std::string_view sMnemonic, std::string_view sOperands, std::int32_t lBase,
                    const AsmOutput& tOutput) {
  std::string_view sBit;
  std::string_view sRest;
  if (!AsmSplitOperands(sOperands, sBit, sRest)) {
    return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " syntax"});
  }
  std::int32_t lBit = 0;
  if (!AsmParseNumber(sBit, lBit, 7, tOutput.sError)) return false;
  const std::int32_t lOpcode = lBase + 8 * lBit;

  const std::size_t lComma = sRest.find(',');
  const bool bExtra = lComma != std::string_view::npos;
  const std::string_view sTarget = AsmTrimBlanks(sRest.substr(0, lComma));
  std::uint8_t bPrefix = 0;
  std::uint8_t bDisplacement = 0;
  if (AsmParseIndexed(sTarget, bPrefix, bDisplacement, tOutput.sError)) {
    const std::int16_t iCopy =
        bExtra ? AsmRegIndex(AsmTrimBlanks(sRest.substr(lComma + 1))) : MEMORY_HL;
    return EmitIndexedCopy(sMnemonic, bPrefix, bDisplacement, lOpcode, iCopy, tOutput);
  }
  if (!tOutput.sError.empty()) return false;
  if (AsmMentionsIndex(sTarget)) {
    return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " IX/IY operand"});
  }
  const std::int16_t iRegister = AsmRegIndex(sTarget);
  if (iRegister < 0) return AsmFail(tOutput.sError, {"Invalid ", sMnemonic, " register"});
  return AsmEmit2(tOutput, 0xCB, lOpcode + iRegister);
}

}  // namespace modDISAsm
