#include "tools/ToolInput.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <istream>
#include <system_error>
#include <vector>

#include "platform/SavedFile.h"
#include "util/modALLUtilityAddress.h"

namespace ToolInput {

std::optional<std::uint32_t> ParseHex(std::string_view sText, std::uint32_t lHighest) {
  std::uint32_t lValue = 0;
  const char* const pEnd = sText.data() + sText.size();
  const auto tResult = std::from_chars(sText.data(), pEnd, lValue, 16);
  if (tResult.ec != std::errc() || tResult.ptr != pEnd || lValue > lHighest) return std::nullopt;
  return lValue;
}

std::string SystemMessage(const std::string& sWhat) {
  return errno == 0 ? sWhat : sWhat + ": " + std::generic_category().message(errno);
}

std::optional<std::int32_t> LoadStream(std::istream& tInput, const std::string& sName,
                                       std::int32_t lAddress,
                                       std::span<std::uint8_t, 65536> abImage,
                                       std::string& sError) {
  const auto abTarget = abImage.subspan(static_cast<std::size_t>(lAddress));
  std::vector<char> abRead(abTarget.size() + 1);  // one more than fits, to see whether all did
  errno = 0;
  tInput.read(abRead.data(), static_cast<std::streamsize>(abRead.size()));
  const auto lRead = static_cast<std::size_t>(tInput.gcount());
  if (tInput.bad()) {
    sError = SystemMessage("cannot read " + sName);
  } else if (lRead == 0) {
    sError = sName + " is empty";
  } else if (lRead > abTarget.size()) {
    sError = sName + " goes past FFFF when loaded at " + modALLUtility::Hex4(lAddress);
  } else {
    std::copy_n(abRead.begin(), lRead, abTarget.begin());
    return static_cast<std::int32_t>(lRead);
  }
  return std::nullopt;
}

std::optional<std::int32_t> LoadFile(const std::string& sPath, std::int32_t lAddress,
                                     std::span<std::uint8_t, 65536> abImage, std::string& sError) {
  errno = 0;
  std::ifstream tFile(sPath, std::ios::binary);
  if (!tFile) {
    sError = SystemMessage("cannot open " + sPath);
    return std::nullopt;
  }
  return LoadStream(tFile, sPath, lAddress, abImage, sError);
}

bool WriteFile(const std::string& sPath, std::string_view sContents, std::string& sError) {
  const std::string sReason = platform::SaveFileOrWriteStream(sPath, sContents);
  if (sReason.empty()) return true;
  sError = "cannot write " + sPath + ": ";
  sError += sReason;
  return false;
}

}  // namespace ToolInput
