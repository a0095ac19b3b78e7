#include "../tests/z80/RoundTrip.h"
#include "FuzzInput.h"

// An address and what stands there, decoded, assembled and decoded again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  static modALLDisass::MemoryImage abImage;
  std::span<const std::uint8_t> abInput(pData, lSize);
  const std::int32_t lAddress = TakeAddress(abInput);
  abImage.fill(0);
  PutBytes(abImage, lAddress, abInput);
  const std::string sFault = RoundTripFault(abImage, lAddress);
  Require(sFault.empty(), sFault);
  return 0;
}
