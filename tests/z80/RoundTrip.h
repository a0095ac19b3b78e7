#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "util/modALLUtilityAddress.h"
#include "z80/modALLDisass.h"
#include "z80/modDISAsm.h"
#include "z80/modDISDebug.h"

/// An instruction of the Z80 with room for its operand bytes.
struct EveryForm {
  std::array<std::uint8_t, 4> abByte;
  /// Where the operand bytes stand, if it has any; behind DDCB and FDCB there is only one.
  std::array<std::size_t, 2> alOperand;
};

/// Calls fnVisit with each opcode behind no prefix, CB, ED, DD, FD, DDCB and FDCB.
template <typename Visit>
void VisitEveryForm(Visit fnVisit) {
  for (std::int32_t lOpcode = 0; lOpcode < 256; ++lOpcode) {
    const auto bOpcode = static_cast<std::uint8_t>(lOpcode);
    fnVisit(EveryForm{{bOpcode}, {1, 2}});
    fnVisit(EveryForm{{0xCB, bOpcode}, {2, 3}});
    fnVisit(EveryForm{{0xED, bOpcode}, {2, 3}});
    for (const auto bPrefix : {std::uint8_t{0xDD}, std::uint8_t{0xFD}}) {
      fnVisit(EveryForm{{bPrefix, bOpcode}, {2, 3}});
      fnVisit(EveryForm{{bPrefix, 0xCB, 0, bOpcode}, {2, 2}});
    }
  }
}

/// Writes bytes into an image, with wrap-around at FFFFH.
inline void PutBytes(modALLDisass::MemoryImage& abImage, std::int32_t lAddress,
                     std::span<const std::uint8_t> abBytes) {
  for (const std::uint8_t bByte : abBytes) {
    abImage[static_cast<std::size_t>(lAddress)] = bByte;
    lAddress = modALLUtility::AddrAdd(lAddress, 1);
  }
}

/// Whether the assembler rejects a text of the decoder, and rightly so: a number that spells a
/// register pair and is to be stored at (HL) reads like the pair, and a relative jump behind
/// prefixes without effect can go further than its own two bytes can span.
/// @param lFirst, lLast  where the text's bytes begin and end
inline bool IsOneWay(const modALLDisass::MemoryImage& abImage, std::int32_t lFirst,
                     std::int32_t lLast, std::string_view sText, std::string_view sError) {
  if (sText == "LD (HL),BC" || sText == "LD (HL),DE") return sError == "Invalid hex value: HL";
  if (!sText.starts_with("* JR ") && !sText.starts_with("* DJNZ ")) return false;
  const auto iWay = static_cast<std::int16_t>(
      modALLUtility::AddrAdd(lLast - lFirst - 1, abImage[static_cast<std::size_t>(lLast)], true));
  return (iWay < -128 || iWay > 127) && sError == "Relative jump out of range";
}

/// Decodes, assembles and decodes again what stands at an address, leaving there what the assembler
/// made. Text without the undocumented mark must give its own bytes back, marked text its text.
/// @return "" or what went wrong
inline std::string RoundTripFault(modALLDisass::MemoryImage& abImage, std::int32_t lAddress) {
  const auto tDecoded = modALLDisass::DisassembleInstruction(abImage, lAddress);
  const std::string sText(tDecoded.tText.View());
  modDISAsm::AsmBytes tBytes;
  std::string sError;
  if (!modDISAsm::AsmAssemble(sText, lAddress, tBytes, sError)) {
    const std::int32_t lLast = modALLUtility::AddrAdd(lAddress, tDecoded.lLength - 1);
    return IsOneWay(abImage, lAddress, lLast, sText, sError) ? "" : sText + ": " + sError;
  }
  if (!modDISDebug::DebugIsMarked(sText)) {
    return modDISDebug::DebugBytesEqual(abImage, lAddress, tDecoded.lLength, tBytes.View())
               ? ""
               : sText + " has other bytes";
  }
  PutBytes(abImage, lAddress, tBytes.View());
  const auto tBack = modALLDisass::DisassembleInstruction(abImage, lAddress);
  const std::string sBack(tBack.tText.View());
  return tBack.lLength == tBytes.iLength &&
                 modDISDebug::DebugNormalizeText(sBack) == modDISDebug::DebugNormalizeText(sText)
             ? ""
             : sText + " came back as " + sBack;
}
