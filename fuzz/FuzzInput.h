#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

/// Ends the run with the input kept, as libFuzzer does on any crash, when something must not be so.
inline void Require(bool bHolds, const std::string& sWhat) {
  if (bHolds) return;
  std::fprintf(stderr, "%s\n", sWhat.c_str());
  std::abort();
}

/// Takes an address from the front of the input; missing bytes count as 0.
inline std::int32_t TakeAddress(std::span<const std::uint8_t>& abInput) {
  std::int32_t lAddress = 0;
  for (int lByte = 0; lByte < 2 && !abInput.empty(); ++lByte) {
    lAddress = 256 * lAddress + abInput.front();
    abInput = abInput.subspan(1);
  }
  return lAddress;
}
