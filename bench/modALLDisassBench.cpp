#include <benchmark/benchmark.h>
#include <z80ex/z80ex_dasm.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "z80/modALLDisass.h"

// The decoder beside libz80ex's disassembler: one pass over 64 KB of a real program or of random
// bytes; each steps by the lengths that it finds itself. "per_instruction" is the time to compare.

namespace {

using modALLDisass::MemoryImage;

using Decode = std::int32_t (*)(MemoryImage& abImage, std::int32_t lAddress);

std::int32_t DecodeHere(MemoryImage& abImage, std::int32_t lAddress) {
  const auto tInstruction = modALLDisass::DisassembleInstruction(abImage, lAddress);
  benchmark::DoNotOptimize(tInstruction);
  return tInstruction.lLength;
}

std::int32_t DecodeZ80ex(MemoryImage& abImage, std::int32_t lAddress) {
  const auto fnRead = [](Z80EX_WORD iAddress, void* pImage) -> Z80EX_BYTE {
    return (*static_cast<MemoryImage*>(pImage))[iAddress];
  };
  std::array<char, 64> acText;
  int lStates = 0;
  int lStatesTaken = 0;
  const int lLength = z80ex_dasm(acText.data(), acText.size(), 0, &lStates, &lStatesTaken, fnRead,
                                 static_cast<Z80EX_WORD>(lAddress), &abImage);
  benchmark::DoNotOptimize(acText);
  return lLength;
}

/// The 32 KB ROM of an MSX computer, twice over; false where its package is not installed.
bool FillWithRom(MemoryImage& abImage) {
  std::ifstream tFile("/usr/share/cbios/cbios_main_msx1.rom", std::ios::binary);
  const std::vector<char> abRom{std::istreambuf_iterator<char>(tFile), {}};
  if (abRom.size() != abImage.size() / 2) return false;
  std::copy(abRom.begin(), abRom.end(), abImage.begin());
  std::copy(abRom.begin(), abRom.end(), abImage.begin() + abImage.size() / 2);
  return true;
}

bool FillAtRandom(MemoryImage& abImage) {
  std::minstd_rand tRandom(1);
  for (auto& bByte : abImage) bByte = static_cast<std::uint8_t>(tRandom() >> 16U);
  return true;
}

void Disassemble64K(benchmark::State& tState, bool (*fnFill)(MemoryImage&), Decode fnDecode) {
  static MemoryImage abImage;
  if (!fnFill(abImage)) {
    tState.SkipWithError("the ROM of package cbios is missing");
    return;
  }
  std::int64_t lInstructions = 0;
  for ([[maybe_unused]] auto tPass : tState) {
    for (std::int32_t lAddress = 0; lAddress < 0x10000; lAddress += fnDecode(abImage, lAddress))
      ++lInstructions;
  }
  tState.SetItemsProcessed(lInstructions);
  tState.counters["per_instruction"] =
      benchmark::Counter(static_cast<double>(lInstructions),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK_CAPTURE(Disassemble64K, rom_decoder, FillWithRom, DecodeHere);
BENCHMARK_CAPTURE(Disassemble64K, rom_libz80ex, FillWithRom, DecodeZ80ex);
BENCHMARK_CAPTURE(Disassemble64K, random_decoder, FillAtRandom, DecodeHere);
BENCHMARK_CAPTURE(Disassemble64K, random_libz80ex, FillAtRandom, DecodeZ80ex);

}  // namespace
