#include "link/modALLSharedMap.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cinttypes>
#include <cstdio>
#include <optional>

#include "config/modALLProcessError.h"
#include "config/modALLProcessFolders.h"
#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMapConfig.h"
#include "platform/Environment.h"
#include "platform/NamedMemory.h"
#include "platform/Toolkit.h"
#include "util/modALLUtilityMessages.h"

namespace modALLSharedMap {

namespace {

using modALLProcess::RuntimeError;
using modALLUtility::ADDRESS_SPACE;

constexpr std::size_t RAM_CHANGED_OFFSET = 6;

void ShowError(const std::string& sPrompt) {
  modALLUtility::ShowMessage(sPrompt, modALLUtility::MSG_CRITICAL + modALLUtility::MSG_OK_ONLY,
                             modALLUtility::TITLE_ERROR);
}

void ShowSystemError(const char* sCall) {
  std::array<char, 9> sCode = {};
  std::snprintf(sCode.data(), sCode.size(), "%" PRIX32, platform::LastSystemError());
  ShowError(std::string(sCall) + " failed - LastError: " + sCode.data());
}

std::size_t CheckedIndex(std::int16_t iIndex) {
  if (iIndex < 0 || iIndex >= static_cast<std::int16_t>(SHARED_MAP_COUNT)) {
    throw RuntimeError(9, "Subscript out of range");
  }
  return static_cast<std::size_t>(iIndex);
}

bool IsMapped(std::size_t lIndex) {
  return hSharedMap[lIndex] != 0 && lSharedMapBase[lIndex] != nullptr;
}

// A part of a mapped block, cut where the block ends.
std::span<std::uint8_t> BlockPart(std::size_t lIndex, std::size_t lOffset, std::size_t lBytes) {
  if (!IsMapped(lIndex)) return {};
  const std::size_t lSize = platform::NamedMemorySize(lSharedMapBase[lIndex]);
  if (lOffset >= lSize) return {};
  return {lSharedMapBase[lIndex] + lOffset, std::min(lBytes, lSize - lOffset)};
}

void CopyPadded(std::span<const std::uint8_t> abSource, std::span<std::uint8_t> abTarget) {
  const auto tEnd = std::copy(abSource.begin(), abSource.end(), abTarget.begin());
  std::fill(tEnd, abTarget.end(), std::uint8_t{0});
}

// A field of the control block, which other processes read and write at any moment.
template <typename Number>
std::optional<std::atomic_ref<Number>> ControlNumber(std::size_t lOffset) {
  const auto abField = BlockPart(CONTROL_BLOCK, lOffset, sizeof(Number));
  if (abField.size() < sizeof(Number)) return std::nullopt;
  return std::atomic_ref<Number>(*reinterpret_cast<Number*>(abField.data()));
}

// From the host's byte order to the block's, and back.
constexpr std::uint32_t LittleEndian(std::uint32_t lValue) {
  if constexpr (std::endian::native == std::endian::little) return lValue;
  return (lValue >> 24U) | ((lValue >> 8U) & 0xFF00U) | ((lValue << 8U) & 0xFF0000U) |
         (lValue << 24U);
}

ConfigValues ReadConfigValues() {
  const auto tText =
      platform::ReadFileText(modALLProcess::TempFolder() + platform::PATH_SEPARATOR + "VARNEL.tmp");
  switch (tText.eOutcome) {
    case platform::FileText::Outcome::Read:
      return ParseConfigText(tText.sText);
    case platform::FileText::Outcome::Missing:
      throw RuntimeError(53, "File not found");
    default:
      throw RuntimeError(75, "Path/File access error");
  }
}

}  // namespace

bool SharedMapOpen(std::int16_t iIndex, bool bZeroFill) {
  const std::size_t lIndex = CheckedIndex(iIndex);
  // Opening a mapped block again would only lose the handle that closing its view needs.
  if (IsMapped(lIndex)) return false;
  modALLProcess::CloseHandleAndClear(hSharedMap[lIndex]);
  hSharedMap[lIndex] = platform::OpenNamedMemory(sSharedMapName[lIndex]);
  if (hSharedMap[lIndex] == 0) {
    hSharedMap[lIndex] =
        platform::CreateNamedMemory(sSharedMapName[lIndex], SHARED_MAP_SIZE[lIndex]);
  }
  if (hSharedMap[lIndex] == 0) {
    ShowSystemError("CreateFileMapping");
    return false;
  }
  lSharedMapBase[lIndex] = platform::MapNamedMemory(hSharedMap[lIndex]);
  if (lSharedMapBase[lIndex] == nullptr) {
    ShowSystemError("MapViewOfFile");
    return false;
  }
  if (bZeroFill) std::ranges::fill(BlockPart(lIndex, 0, SHARED_MAP_SIZE[lIndex]), std::uint8_t{0});
  return true;
}

void SharedMapClose(std::int16_t iIndex) {
  const std::size_t lIndex = CheckedIndex(iIndex);
  if (!IsMapped(lIndex)) return;
  platform::UnmapNamedMemory(lSharedMapBase[lIndex]);
  modALLProcess::CloseHandleAndClear(hSharedMap[lIndex]);
}

void ReadConfigTempFile() {
  try {
    ConfigValues tValues = ReadConfigValues();
    lIconNumber = tValues.lIconNumber;
    auto pText = tValues.asText.begin();
    for (auto& sName : sSharedMapName) sName = *pText++;
    sSpareText = *pText++;
    for (auto& tEvent : modALLProcess::tProgramEvent) tEvent.sName = *pText++;
    modALLProcess::sShowAddrEventName = *pText++;
    modALLProcess::sBreakpointEventName = *pText++;
    modALLProcess::sThirdEventName = *pText++;
  } catch (const RuntimeError& tError) {
    ShowError("Unable to read configuration temp file\r\n\r\nError: " +
              std::to_string(tError.Number()) + " - " + tError.what());
    platform::TheToolkit().EndProgram(1);
  }
}

std::span<std::uint8_t> RamImage() { return BlockPart(RAM_BLOCK, 0, ADDRESS_SPACE); }

std::span<std::uint8_t> ProtectionMap() {
  return BlockPart(RAM_BLOCK, PROTECTION_MAP_OFFSET, ADDRESS_SPACE);
}

void CopyRamImage(std::span<std::uint8_t, ADDRESS_SPACE> abTarget) {
  CopyPadded(RamImage(), abTarget);
}

void CopyProtectionMap(std::span<std::uint8_t, ADDRESS_SPACE> abTarget) {
  CopyPadded(ProtectionMap(), abTarget);
}

void ReadRam(std::int32_t lAddr, std::span<std::uint8_t> abTarget) {
  const auto abRam = RamImage();
  for (std::uint8_t& bByte : abTarget) {
    const auto lOffset = static_cast<std::size_t>(modALLUtility::AddrAdd(lAddr, 0));
    bByte = lOffset < abRam.size() ? abRam[lOffset] : std::uint8_t{0};
    lAddr = modALLUtility::AddrAdd(lAddr, 1);
  }
}

void WriteRam(std::int32_t lAddr, std::span<const std::uint8_t> abBytes) {
  const auto abRam = RamImage();
  for (const std::uint8_t bByte : abBytes) {
    const auto lOffset = static_cast<std::size_t>(modALLUtility::AddrAdd(lAddr, 0));
    if (lOffset < abRam.size()) abRam[lOffset] = bByte;
    lAddr = modALLUtility::AddrAdd(lAddr, 1);
  }
}

std::int32_t ReadControlField(ControlField eField) {
  const auto tNumber = ControlNumber<std::uint32_t>(static_cast<std::size_t>(eField));
  return tNumber ? static_cast<std::int32_t>(LittleEndian(tNumber->load())) : 0;
}

void WriteControlField(ControlField eField, std::int32_t lValue) {
  const auto tNumber = ControlNumber<std::uint32_t>(static_cast<std::size_t>(eField));
  if (tNumber) tNumber->store(LittleEndian(static_cast<std::uint32_t>(lValue)));
}

std::uint8_t RamChanged() {
  const auto tNumber = ControlNumber<std::uint8_t>(RAM_CHANGED_OFFSET);
  return tNumber ? tNumber->load() : std::uint8_t{0};
}

void SetRamChanged(std::uint8_t bValue) {
  const auto tNumber = ControlNumber<std::uint8_t>(RAM_CHANGED_OFFSET);
  if (tNumber) tNumber->store(bValue);
}

}  // namespace modALLSharedMap
