#include "../tests/z80/RoundTrip.h"
#include "FuzzInput.h"

// An address and what stands there; a single byte stands all over memory. Whatever that is, it
// decodes to a text that fits the listing's column and a length that covers every byte it rests on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  static modALLDisass::MemoryImage abImage;
  std::span<const std::uint8_t> abInput(pData, lSize);
  std::int32_t lAddress = TakeAddress(abInput);
  abImage.fill(abInput.size() == 1 ? abInput[0] : std::uint8_t{0});
  PutBytes(abImage, lAddress, abInput);
  for (int lInstruction = 0; lInstruction < 8; ++lInstruction) {
    const auto tDecoded = modALLDisass::DisassembleInstruction(abImage, lAddress);
    const std::string sText(tDecoded.tText.View());
    Require(tDecoded.lLength >= 1, "no length");
    Require(!sText.empty() && sText.size() <= 19, "text of a wrong length: " + sText);
    Require(sText.front() != ' ' && sText.back() != ' ', "blanks around: " + sText);
    const std::int32_t lNext = modALLUtility::AddrAdd(lAddress, tDecoded.lLength);
    if (tDecoded.lLength < modALLUtility::ADDRESS_SPACE) {
      abImage[static_cast<std::size_t>(lNext)] ^= 0xFFU;
      const auto tAgain = modALLDisass::DisassembleInstruction(abImage, lAddress);
      abImage[static_cast<std::size_t>(lNext)] ^= 0xFFU;
      Require(tAgain.lLength == tDecoded.lLength && tAgain.tText.View() == sText,
              "a byte beyond its length changes " + sText);
    }
    // A run of prefixes all around memory takes long, and its tail is as long again.
    if (tDecoded.lLength > 256) break;
    lAddress = lNext;
  }
  return 0;
}
