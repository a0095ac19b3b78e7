#include "z80/modDISDebug.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "util/modALLUtilityAddress.h"
#include "z80/modDISAsm.h"
#include "z80/modDISAsmOperands.h"

namespace modDISDebug {

namespace {

void ReplaceAll(std::string& sText, std::string_view sOld, std::string_view sNew) {
  std::size_t lFound = sText.find(sOld);
  if (lFound == std::string::npos) return;
  std::string sResult;
  std::size_t lStart = 0;
  for (; lFound != std::string::npos; lFound = sText.find(sOld, lStart)) {
    sResult.append(sText, lStart, lFound - lStart).append(sNew);
    lStart = lFound + sOld.size();
  }
  sText = sResult.append(sText, lStart);
}

/// Puts the bytes into the image from lAddress on and leaves in abBytes what stood there, so that a
/// second call takes them out again.
void SwapBytes(modALLDisass::MemoryImage& abImage, std::int32_t lAddress,
               std::span<std::uint8_t> abBytes) {
  for (std::uint8_t& bByte : abBytes) {
    std::swap(bByte, abImage[static_cast<std::size_t>(lAddress)]);
    lAddress = modALLUtility::AddrAdd(lAddress, 1);
  }
}

/// Whether the assembled bytes, standing where the text was decoded, decode to the same text.
bool DecodesBack(modALLDisass::MemoryImage& abWork, std::int32_t lAddress,
                 const modDISAsm::AsmBytes& tBytes, std::string_view sText) {
  auto abSwap = tBytes.abByte;
  const auto abUsed = std::span(abSwap).first(tBytes.View().size());
  SwapBytes(abWork, lAddress, abUsed);
  const auto tBack = modALLDisass::DisassembleInstruction(abWork, lAddress);
  SwapBytes(abWork, lAddress, abUsed);
  return DebugNormalizeText(sText) == DebugNormalizeText(tBack.tText.View());
}

}  // namespace

CheckCounters CheckImages(modALLDisass::ImageView abReference, modALLDisass::MemoryImage& abWork,
                          const std::function<bool()>& fnYield) {
  CheckCounters tCounters;
  modDISAsm::AsmBytes tBytes;
  std::string sError;
  std::int32_t lAddress = 0;
  while (lAddress < modALLUtility::ADDRESS_SPACE) {
    const auto tDecoded = modALLDisass::DisassembleInstruction(abReference, lAddress);
    if (tDecoded.lLength <= 0) break;
    const std::string_view sText = tDecoded.tText.View();
    ++tCounters.lChecked;
    if (modDISAsm::AsmAssemble(sText, lAddress, tBytes, sError)) {
      ++tCounters.lSupported;
      if (!DebugBytesEqual(abReference, lAddress, tDecoded.lLength, tBytes.View())) {
        ++(DebugIsMarked(sText) ? tCounters.lOpcodeIgnored : tCounters.lOpcodeMismatch);
      }
      if (!DecodesBack(abWork, lAddress, tBytes, sText)) ++tCounters.lMismatch;
    } else {
      ++tCounters.lUnsupported;
    }
    lAddress += tDecoded.lLength;
    if (tCounters.lChecked % INSTRUCTIONS_PER_YIELD == 0 && !fnYield()) break;
  }
  return tCounters;
}

std::string CheckSummary(const CheckCounters& tCounters) {
  std::string sSummary = "Assembler debug completed.";
  const std::pair<std::string_view, std::int32_t> atLine[] = {
      {"Checked: ", tCounters.lChecked},
      {"Supported: ", tCounters.lSupported},
      {"Unsupported: ", tCounters.lUnsupported},
      {"Mismatch: ", tCounters.lMismatch},
      {"Opcode mismatch: ", tCounters.lOpcodeMismatch},
      {"Opcode ignored: ", tCounters.lOpcodeIgnored},
  };
  for (const auto& [sLabel, lCount] : atLine) {
    sSummary.append("\r\n").append(sLabel).append(std::to_string(lCount));
  }
  return sSummary;
}

std::string DebugNormalizeText(std::string_view sText) {
  std::string_view sTrimmed = modDISAsm::AsmTrimBlanks(sText);
  if (sTrimmed.starts_with('*')) sTrimmed = modDISAsm::AsmTrimBlanks(sTrimmed.substr(1));
  std::string sNormal(sTrimmed);
  std::ranges::transform(sNormal, sNormal.begin(), modDISAsm::AsmUpperCase);
  while (sNormal.find("  ") != std::string::npos) ReplaceAll(sNormal, "  ", " ");
  constexpr std::pair<std::string_view, std::string_view> REPLACEMENTS[] = {
      {" ,", ","}, {", ", ","}, {"( ", "("},  {" )", ")"}, {" + ", "+"},
      {"+ ", "+"}, {" +", "+"}, {" - ", "-"}, {"- ", "-"}, {" -", "-"},
  };
  for (const auto& [sOld, sNew] : REPLACEMENTS) ReplaceAll(sNormal, sOld, sNew);
  return sNormal;
}

bool DebugIsMarked(std::string_view sText) {
  return modDISAsm::AsmTrimBlanks(sText).starts_with('*');
}

bool DebugBytesEqual(modALLDisass::ImageView abImage, std::int32_t lAddress, std::int32_t lLength,
                     std::span<const std::uint8_t> abAssembled) {
  if (!std::cmp_equal(lLength, abAssembled.size())) return false;
  for (const std::uint8_t bByte : abAssembled) {
    if (abImage[static_cast<std::size_t>(lAddress)] != bByte) return false;
    lAddress = modALLUtility::AddrAdd(lAddress, 1);
  }
  return true;
}

}  // namespace modDISDebug
