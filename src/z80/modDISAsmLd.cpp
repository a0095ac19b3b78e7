#include <array>

#include "z80/modDISAsmEncoders.h"
#include "z80/modDISAsmOperands.h"

namespace modDISAsm {

namespace {

/// A form of LD whose two operands are fixed.
struct FixedLoad {
  std::string_view sDest, sSource;
  std::int32_t lOpcode;
};

constexpr std::array<FixedLoad, 4> SPECIAL_REGISTERS{
    {{"I", "A", 0x47}, {"R", "A", 0x4F}, {"A", "I", 0x57}, {"A", "R", 0x5F}}};

constexpr std::array<FixedLoad, 5> FIXED_FORMS{{{"(BC)", "A", 0x02},
                                                {"(DE)", "A", 0x12},
                                                {"A", "(BC)", 0x0A},
                                                {"A", "(DE)", 0x1A},
                                                {"SP", "HL", 0xF9}}};

/// Every form of LD that involves IX, IY, their halves or an indexed operand. Beside an index
/// register H, L and (HL) have no encoding of their own, and two memory operands none at all; they
/// give the bytes that their numbers give, which the processor reads as another instruction.
bool AsmEncodeLDIndex(std::string_view sDest, std::string_view sSource, const AsmOutput& tOutput) {
  std::uint8_t bPrefix = 0;
  if (AsmIsIndexRegister(sDest, bPrefix)) {
    return AsmIsBracketed(sSource) ? AsmEmitWithWord(tOutput, bPrefix, 0x2A, AsmInnerText(sSource))
                                   : AsmEmitWithWord(tOutput, bPrefix, 0x21, sSource);
  }
  if (AsmIsIndexRegister(sSource, bPrefix)) {
    if (AsmIsBracketed(sDest)) return AsmEmitWithWord(tOutput, bPrefix, 0x22, AsmInnerText(sDest));
    if (sDest == "SP") return AsmEmit2(tOutput, bPrefix, 0xF9);
  }

  const std::int16_t iDest = AsmRegIndex(sDest);
  const std::int16_t iSource = AsmRegIndex(sSource);
  std::uint8_t bSourcePrefix = 0;
  const std::int16_t iDestHalf = AsmHalfIndexRegister(sDest, bPrefix);
  const std::int16_t iSourceHalf = AsmHalfIndexRegister(sSource, bSourcePrefix);
  if (iDestHalf >= 0 && iSourceHalf >= 0) {
    if (bPrefix != bSourcePrefix) {
      return AsmFail(tOutput.sError, {"Invalid mixed IX/IY half registers"});
    }
    return AsmEmit2(tOutput, bPrefix, 0x40 + 8 * iDestHalf + iSourceHalf);
  }
  if (iDestHalf >= 0) {
    if (iSource >= 0) return AsmEmit2(tOutput, bPrefix, 0x40 + 8 * iDestHalf + iSource);
    return AsmEmitWithByte(tOutput, bPrefix, 8 * iDestHalf + 0x06, sSource);
  }
  if (iSourceHalf >= 0 && iDest >= 0) {
    return AsmEmit2(tOutput, bSourcePrefix, 0x40 + 8 * iDest + iSourceHalf);
  }

  std::uint8_t bDisplacement = 0;
  if (AsmParseIndexed(sDest, bPrefix, bDisplacement, tOutput.sError)) {
    if (iSource >= 0) return AsmEmit3(tOutput, bPrefix, 0x70 + iSource, bDisplacement);
    std::int32_t lValue = 0;
    return AsmParseNumber(sSource, lValue, MAX_BYTE, tOutput.sError) &&
           AsmEmit4(tOutput, bPrefix, 0x36, bDisplacement, lValue);
  }
  if (!tOutput.sError.empty()) return false;
  if (AsmParseIndexed(sSource, bPrefix, bDisplacement, tOutput.sError)) {
    if (iDest < 0) return AsmFail(tOutput.sError, {"Invalid LD indexed destination"});
    return AsmEmit3(tOutput, bPrefix, 0x46 + 8 * iDest, bDisplacement);
  }

  // The operands count as one text here, so "I" before "X" is a mention as well.
  const bool bAcross =
      sDest.ends_with('I') && (sSource.starts_with('X') || sSource.starts_with('Y'));
  if (bAcross || AsmMentionsIndex(sDest) || AsmMentionsIndex(sSource)) {
    return AsmFail(tOutput.sError, {"Invalid LD IX/IY syntax"});
  }
  tOutput.sError.clear();
  return false;
}

}  // namespace

bool AsmEncodeLD(std::string_view sOperands, const AsmOutput& tOutput) {
  std::string_view sDest;
  std::string_view sSource;
  if (!AsmSplitOperands(sOperands, sDest, sSource)) {
    return AsmFail(tOutput.sError, {"Invalid LD syntax"});
  }
  if (AsmEncodeLDIndex(sDest, sSource, tOutput)) return true;
  if (!tOutput.sError.empty()) return false;

  for (const FixedLoad& tLoad : SPECIAL_REGISTERS) {
    if (sDest == tLoad.sDest && sSource == tLoad.sSource) {
      return AsmEmit2(tOutput, 0xED, tLoad.lOpcode);
    }
  }
  const std::int16_t iDestPair = AsmPairIndex(sDest);
  const std::int16_t iSourcePair = AsmPairIndex(sSource);
  if (AsmIsBracketed(sDest) && iSourcePair >= 0 && iSourcePair != PAIR_HL) {
    return AsmEmitWithWord(tOutput, 0xED, 0x43 + 16 * iSourcePair, AsmInnerText(sDest));
  }
  if (AsmIsBracketed(sSource) && iDestPair >= 0 && iDestPair != PAIR_HL) {
    return AsmEmitWithWord(tOutput, 0xED, 0x4B + 16 * iDestPair, AsmInnerText(sSource));
  }
  for (const FixedLoad& tLoad : FIXED_FORMS) {
    if (sDest == tLoad.sDest && sSource == tLoad.sSource) return AsmEmit1(tOutput, tLoad.lOpcode);
  }
  const std::int16_t iDest = AsmRegIndex(sDest);
  const std::int16_t iSource = AsmRegIndex(sSource);
  if (iDest >= 0 && iSource >= 0) {
    if (iDest == MEMORY_HL && iSource == MEMORY_HL) {
      return AsmFail(tOutput.sError, {"LD (HL),(HL) is HALT"});
    }
    return AsmEmit1(tOutput, 0x40 + 8 * iDest + iSource);
  }
  if (AsmIsBracketed(sSource)) {
    if (iDestPair == PAIR_HL) return AsmEmitWithWord(tOutput, 0x2A, AsmInnerText(sSource));
    if (sDest == "A") return AsmEmitWithWord(tOutput, 0x3A, AsmInnerText(sSource));
  }
  if (iDest >= 0) return AsmEmitWithByte(tOutput, 8 * iDest + 0x06, sSource);
  if (iDestPair >= 0) return AsmEmitWithWord(tOutput, 16 * iDestPair + 0x01, sSource);
  if (AsmIsBracketed(sDest)) {
    std::int32_t lAddress = 0;
    if (!AsmParseNumber(AsmInnerText(sDest), lAddress, MAX_WORD, tOutput.sError)) return false;
    if (iSourcePair == PAIR_HL) return AsmEmit3(tOutput, 0x22, lAddress % 256, lAddress / 256);
    if (sSource == "A") return AsmEmit3(tOutput, 0x32, lAddress % 256, lAddress / 256);
  }
  return AsmFail(tOutput.sError, {"LD syntax not supported yet"});
}

}  // namespace modDISAsm
