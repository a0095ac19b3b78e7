#include "tools/EmulatorLink.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "config/modALLProcessError.h"
#include "config/modALLProcessFolders.h"
#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"
#include "link/modALLSharedMapConfig.h"
#include "platform/Environment.h"
#include "platform/ExclusiveFile.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "tools/ToolInput.h"
#include "util/modALLUtilityAddress.h"

namespace {

using namespace modALLProcess;
using namespace modALLSharedMap;

constexpr std::int32_t ICON_NUMBER = 1;

bool RemoveFile(const std::string& sPath) { return std::remove(sPath.c_str()) == 0; }

// A stand-in that starts again finds the objects that companions still hold, and two that have
// folders of their own never meet: the names come from the folder's path (FNV-1a, 64 bits).
std::string NamePrefix(std::string_view sFolder) {
  std::uint64_t lHash = 0xCBF29CE484222325U;
  for (const char bCharacter : sFolder) {
    lHash = (lHash ^ static_cast<unsigned char>(bCharacter)) * 0x100000001B3U;
  }
  std::string sPrefix = "VARNEL-";
  for (std::uint32_t lShift = 64; lShift != 0;) {
    lShift -= 4;
    sPrefix += modALLUtility::HexDigit(static_cast<std::uint32_t>(lHash >> lShift));
  }
  return sPrefix;
}

/// Whether a temp file names a block that exists and is none of a stand-in's: it is an emulator's
/// then, and no companion would find that emulator any more if the file were replaced.
bool NamesOthersBlock(const std::string& sTempFile, const std::string& sPrefix) {
  const platform::FileText tFile = platform::ReadFileText(sTempFile);
  if (tFile.eOutcome != platform::FileText::Outcome::Read) return false;
  std::string sBlock;
  try {
    sBlock = ParseConfigText(tFile.sText).asText[RAM_BLOCK];
  } catch (const RuntimeError&) {
    return false;
  }
  std::uint32_t hBlock = sBlock.starts_with(sPrefix) ? 0 : platform::OpenNamedMemory(sBlock);
  const bool bExists = hBlock != 0;
  CloseHandleAndClear(hBlock);
  return bExists;
}

void NameObjects(const std::string& sPrefix) {
  for (std::size_t lIndex = 0; lIndex < SHARED_MAP_COUNT; ++lIndex) {
    sSharedMapName[lIndex] = sPrefix + "-block-" + std::to_string(lIndex);
  }
  for (std::size_t lIndex = 0; lIndex < PROGRAM_COUNT; ++lIndex) {
    tProgramEvent[lIndex].sName = sPrefix + "-program-" + std::to_string(lIndex);
  }
  sShowAddrEventName = sPrefix + "-show";
  sBreakpointEventName = sPrefix + "-breakpoint";
  sThirdEventName = sPrefix + "-third";
}

}  // namespace

EmulatorLink::~EmulatorLink() {
  if (hLock == 0) return;
  RemoveFile(sTempFile);
  RemoveFile(sIconFile);
  for (std::size_t lIndex = 0; lIndex < SHARED_MAP_COUNT; ++lIndex) {
    SharedMapClose(static_cast<std::int16_t>(lIndex));
  }
  for (ProgramEvent& tEvent : tProgramEvent) CloseHandleAndClear(tEvent.hEvent);
  CloseHandleAndClear(hShowAddrEvent);
  CloseHandleAndClear(hBreakpointEvent);
  // While it is held nobody else can have it under this name; a system that removes no file in use
  // does so afterwards, and then only when nobody took it over.
  const bool bRemoved = RemoveFile(sLockFile);
  CloseHandleAndClear(hLock);
  if (!bRemoved) RemoveFile(sLockFile);
}

bool EmulatorLink::Open(std::string& sError) {
  std::string sFolder;
  try {
    sFolder = TempFolder();
  } catch (const RuntimeError& tError) {
    sError = std::string("no temporary folder: ") + tError.what();
    return false;
  }
  sTempFile = sFolder + platform::PATH_SEPARATOR + "VARNEL.tmp";
  sIconFile =
      sFolder + platform::PATH_SEPARATOR + "wnd_form_icon_" + std::to_string(ICON_NUMBER) + ".ico";
  sLockFile = sFolder + platform::PATH_SEPARATOR + "VARNEL-emulator.lock";
  const std::string sPrefix = NamePrefix(sFolder);
  if (NamesOthersBlock(sTempFile, sPrefix)) {
    bTaken = true;
    sError = "an emulator runs for this user, by " + sTempFile;
    return false;
  }
  std::string sReason;
  hLock = platform::OpenExclusiveFile(sLockFile, &sReason);
  if (hLock == 0) {
    bTaken = sReason.empty();
    sError = bTaken ? "another stand-in runs for this user, by " + sLockFile
                    : "cannot write " + sLockFile + ": " + sReason;
    return false;
  }
  // What a stand-in left that was killed: nobody may start on it while the blocks change.
  RemoveFile(sTempFile);
  RemoveFile(sIconFile);
  NameObjects(sPrefix);
  return OpenBlocks(sError) && OpenEvents(sError);
}

bool EmulatorLink::OpenBlocks(std::string& sError) {
  for (std::size_t lIndex = 0; lIndex < SHARED_MAP_COUNT; ++lIndex) {
    const std::uint32_t lSize = SHARED_MAP_SIZE[lIndex];
    hSharedMap[lIndex] = platform::CreateNamedMemory(sSharedMapName[lIndex], lSize);
    if (hSharedMap[lIndex] != 0) {
      lSharedMapBase[lIndex] = platform::MapNamedMemory(hSharedMap[lIndex]);
    }
    if (platform::NamedMemorySize(lSharedMapBase[lIndex]) < lSize) {
      sError = lSharedMapBase[lIndex] != nullptr
                   ? "shared block " + std::to_string(lIndex) + " exists and is too small"
                   : "cannot create shared block " + std::to_string(lIndex) + " (system error " +
                         std::to_string(platform::LastSystemError()) + ")";
      return false;
    }
    std::fill_n(lSharedMapBase[lIndex], lSize, std::uint8_t{0});
  }
  return true;
}

bool EmulatorLink::OpenEvents(std::string& sError) {
  try {
    for (ProgramEvent& tEvent : tProgramEvent) tEvent.hEvent = CreateNamedEvent(tEvent.sName);
    hShowAddrEvent = CreateNamedEvent(sShowAddrEventName);
    hBreakpointEvent = CreateNamedEvent(sBreakpointEventName);
  } catch (const RuntimeError& tError) {
    sError = tError.what();
    return false;
  }
  // A companion told the one before: the address that belongs to such a signal is gone. The
  // show-address event is the companions' to take.
  for (const ProgramEvent& tEvent : tProgramEvent) platform::ResetNamedEvent(tEvent.hEvent);
  platform::ResetNamedEvent(hBreakpointEvent);
  return true;
}

bool EmulatorLink::Publish(const std::string& sIcon, std::string& sError) {
  if (!sIcon.empty()) {
    const platform::FileText tIcon = platform::ReadFileText(sIcon);
    if (tIcon.eOutcome != platform::FileText::Outcome::Read) {
      sError = "cannot read " + sIcon;
      return false;
    }
    if (!ToolInput::WriteFile(sIconFile, tIcon.sText, sError)) return false;
  }
  std::string sValues = std::to_string(ICON_NUMBER) + '\n';
  const auto AddText = [&sValues](const std::string& sText) { sValues += '"' + sText + "\"\n"; };
  std::ranges::for_each(sSharedMapName, AddText);
  AddText(sSpareText);
  for (const ProgramEvent& tEvent : tProgramEvent) AddText(tEvent.sName);
  AddText(sShowAddrEventName);
  AddText(sBreakpointEventName);
  AddText(sThirdEventName);
  return ToolInput::WriteFile(sTempFile, sValues, sError);
}
