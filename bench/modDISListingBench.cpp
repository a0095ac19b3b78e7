// All 64 KB to listing lines and address tables, without a window.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

#include "disass/modDISListing.h"

namespace {

void ListWholeMemory(benchmark::State& tState) {
  // One-byte instructions throughout give the most lines; random bytes about a third of that.
  const auto pImage = std::make_unique<modALLDisass::MemoryImage>();
  if (tState.range(0) != 0) {
    std::mt19937 tRandom(1);
    for (std::uint8_t& bValue : *pImage) bValue = static_cast<std::uint8_t>(tRandom());
  }
  const auto pListing = std::make_unique<modDISListing::Listing>();
  for (auto tPass : tState) {
    pListing->Clear(0, modALLUtility::ADDRESS_SPACE - 1);
    for (std::int32_t lAddress = 0; lAddress < modALLUtility::ADDRESS_SPACE;) {
      modDISListing::BuiltLine tBuilt = modDISListing::BuildListingLine(*pImage, lAddress);
      pListing->Append(std::move(tBuilt.sLine));
      lAddress += tBuilt.lLength;
    }
    pListing->RebuildAddressMaps();
  }
  tState.counters["lines"] = pListing->LineCount();
}
BENCHMARK(ListWholeMemory)->ArgName("random")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
