#include "config/modAllIni.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <utility>

#include "config/modALLProcessError.h"
#include "config/modALLProcessFolders.h"
#include "config/modAllIniLines.h"
#include "platform/Environment.h"
#include "platform/ExclusiveFile.h"
#include "platform/Toolkit.h"
#include "util/modALLUtilityMessages.h"

namespace modAllIni {

namespace {

constexpr int OPEN_ATTEMPTS = 50;
constexpr std::uint32_t OPEN_RETRY_MILLISECONDS = 50;
constexpr std::uint32_t INVALID_HANDLE = 0xFFFFFFFF;

IniLines asIniLine;
IniLineStates abIniLineState;
bool bIniDirty = false;
bool bIniLoaded = false;
std::uint32_t hIniFile = 0;
std::string sIniObstacle;  // why the file could not be opened, other than that it was held

// When the system ends the program, all windows' saves together have the attempts of one: it does
// not wait for sixteen.
int lLastAttemptsLeft = OPEN_ATTEMPTS;

// Set when the load on first use has failed: reading the 78 values of all window placements must
// not mean 78 times two and a half seconds of attempts, nor 78 messages.
bool bIniLoadFailed = false;

bool IniIsOpen() { return hIniFile != 0 && hIniFile != INVALID_HANDLE; }

void IniClose() {
  if (IniIsOpen()) platform::CloseSystemHandle(hIniFile);
  hIniFile = 0;
}

bool IniOpen() {
  if (IniIsOpen()) return true;
  const std::string sPath =
      modALLProcess::LocalAppFolder() + platform::PATH_SEPARATOR + "VARNEL.ini";
  for (int lAttempt = 0; lAttempt < OPEN_ATTEMPTS; ++lAttempt) {
    hIniFile = platform::OpenExclusiveFile(sPath, &sIniObstacle);
    if (IniIsOpen()) return true;
    hIniFile = 0;
    if (platform::TheToolkit().IsEndingProgram() && lLastAttemptsLeft-- <= 0) break;
    platform::SleepMilliseconds(OPEN_RETRY_MILLISECONDS);
  }
  if (!sIniObstacle.empty()) sIniObstacle = sPath + "\r\n" + sIniObstacle;
  return false;
}

std::optional<IniLines> IniReadLines(std::uint32_t hFile) {
  auto sText = platform::ReadExclusiveFile(hFile);
  if (!sText) return std::nullopt;
  return IniLines(*std::move(sText));
}

bool IniWriteLines(std::uint32_t hFile, const IniLines& asLine) {
  return platform::WriteExclusiveFile(hFile, asLine.Text());
}

// Runs one use of the file, which is closed afterwards whatever happens in it; an error in it, such
// as memory running out over a huge file, is a failure.
template <typename Use>
bool WithIniFile(Use fnDo) {
  bool bDone = false;
  try {
    bDone = IniOpen() && fnDo();
  } catch (const std::exception&) {
    bDone = false;
  }
  IniClose();
  return bDone;
}

// Puts a line that this program sets into the store, at a place or behind the last line.
void InsertStoreLine(std::size_t lAt, std::string_view sLine) {
  const std::size_t lSizeBefore = asIniLine.Text().size();
  const std::size_t lPlace = asIniLine.Insert(lAt, sLine);
  abIniLineState.Move(lPlace, static_cast<std::ptrdiff_t>(asIniLine.Text().size() - lSizeBefore));
  abIniLineState.NoteSet(lPlace);
}

void ReplaceStoreLine(std::size_t lAt, std::string_view sLine) {
  const auto lLengthBefore = static_cast<std::ptrdiff_t>(asIniLine.Line(lAt).size());
  asIniLine.Replace(lAt, sLine);
  abIniLineState.Move(lAt + 1, static_cast<std::ptrdiff_t>(sLine.size()) - lLengthBefore);
  abIniLineState.NoteSet(lAt);
}

void IniLoadOnFirstUse() {
  if (bIniLoaded || bIniLoadFailed || IniLoad()) return;
  bIniLoadFailed = true;
  std::string sMessage = "Unable to load configuration file";
  if (!sIniObstacle.empty()) sMessage += "\r\n\r\n" + sIniObstacle;
  modALLUtility::ShowMessage(sMessage, modALLUtility::MSG_EXCLAMATION + modALLUtility::MSG_OK_ONLY,
                             modALLUtility::TITLE_ERROR);
  // The first window loads before any is active: it opens at its default place, and a later save
  // still merges into whatever the file then holds.
  if (platform::Form* const frmActive = platform::TheToolkit().ActiveForm()) {
    frmActive->Unload();
    platform::TheToolkit().EndProgram(1);
  }
}

std::optional<std::string> IniStoredValue(std::string_view sSection, std::string_view sKey) {
  const auto tSection = IniFindSection(asIniLine, sSection);
  if (!tSection) return std::nullopt;
  const auto lLine = IniFindKey(asIniLine, *tSection, sKey);
  if (!lLine) return std::nullopt;
  return std::string(IniParseKey(asIniLine.Line(*lLine))->sValue);
}

}  // namespace

std::string IniGetValue(std::string_view sSection, std::string_view sKey,
                        std::string_view sDefault) {
  try {
    IniLoadOnFirstUse();
    if (auto sValue = IniStoredValue(sSection, IniTrim(sKey))) return *std::move(sValue);
  } catch (const std::exception&) {
    // Nothing to do about it here; the default serves.
  }
  return std::string(IniTrim(sDefault));
}

bool IniSetValue(std::string_view sSection, std::string_view sKey, std::string_view sValue) {
  sSection = IniTrim(sSection);
  sKey = IniTrim(sKey);
  if (sKey.empty() || sSection.empty()) return true;
  const std::string sLine = std::string(sKey) + "=" + std::string(IniTrim(sValue));
  const auto tSection = IniFindSection(asIniLine, sSection);
  if (!tSection) {
    IniAddSection(asIniLine, sSection);
    InsertStoreLine(std::string::npos, sLine);
  } else if (const auto lLine = IniFindKey(asIniLine, *tSection, sKey)) {
    if (abIniLineState.IsSetHere(*lLine) && asIniLine.Line(*lLine) == sLine) return true;
    ReplaceStoreLine(*lLine, sLine);
  } else {
    InsertStoreLine(tSection->lEnd, sLine);
  }
  bIniDirty = true;
  return true;
}

bool IniFlush() {
  if (!bIniDirty) return true;
  return WithIniFile([] {
           auto asFileLine = IniReadLines(hIniFile);
           if (!asFileLine) return false;
           IniApplyChanges(asIniLine, abIniLineState, *asFileLine);
           IniDropEmptySections(*asFileLine);
           return IniWriteLines(hIniFile, *asFileLine);
         }) &&
         IniLoad();
}

bool IniLoad() {
  return WithIniFile([] {
    auto asFileLine = IniReadLines(hIniFile);
    if (!asFileLine) return false;
    asIniLine = *std::move(asFileLine);
    abIniLineState = {};
    bIniDirty = false;
    bIniLoaded = true;
    return true;
  });
}

}  // namespace modAllIni
