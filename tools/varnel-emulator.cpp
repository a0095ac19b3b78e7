#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <iostream>
#include <optional>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"
#include "platform/Environment.h"
#include "platform/NamedEvent.h"
#include "platform/Process.h"
#include "platform/StandardStreams.h"
#include "tools/EmulatorLink.h"
#include "tools/EmulatorOptions.h"
#include "tools/SampleProgram.h"
#include "tools/ToolInput.h"
#include "util/modALLUtilityAddress.h"
#include "util/modALLUtilityOptions.h"

namespace {

using modALLUtility::ADDRESS_SPACE;
using modALLUtility::Hex4;

constexpr int STATUS_OK = 0;
constexpr int STATUS_ERROR = 2;
constexpr std::uint32_t POLL_MILLISECONDS = 20;
constexpr std::uint8_t PROTECTED = 0xFF;
constexpr std::size_t BYTES_PER_LINE = 16;
constexpr std::size_t LONGEST_LINE = 1U << 20U;  // of the input

constexpr std::string_view HELP =
    R"(Usage: varnel-emulator [--show HEX] [--protect HEX-HEX]... [--icon FILE]
                       [--sample HEX] [FILE[@HEX]...]
                       [[--join] -- PROGRAM ARG...]
       varnel-emulator -h | --help | --version

Stands in for the emulator on the other side of the Varnel disassembler's
window: shares a 64 KB memory with it, tells it what to show and reports what
it does. HEX is a number from 0 to FFFF without prefix or suffix.

  FILE[@HEX]         load a file into the memory (default: at 0000)
  --sample HEX       load the built-in sample program; without it and without
                     a FILE it is loaded at 0000
  --protect HEX-HEX  write-protect a range
  --show HEX         the address that a window shows first (default: where the
                     first FILE, or else the sample, was loaded)
  --icon FILE        the icon of the windows
  -- PROGRAM ARG...  start a program, and end with it and with its exit status
  --join             where an emulator or another stand-in runs already, only
                     start PROGRAM, for that one

Commands are read from standard input; "help" lists them. It runs until "quit",
the end of PROGRAM, or SIGINT or SIGTERM; the end of the input ends nothing.
)";

constexpr std::string_view COMMANDS = R"(show HEX            let the window show an address
load FILE HEX       load a file into the memory
poke HEX BYTE...    write bytes into the memory
dump HEX [COUNT]    print memory; COUNT is hexadecimal, 10 when left out
protect HEX-HEX     write-protect a range
unprotect HEX-HEX   make a range writable
status              print where everything stands
help                print this
quit                end
)";

// Whoever reads along, a person or a script, sees each line at once.
void Say(const std::string& sLine) { std::cout << sLine << '\n' << std::flush; }

void Complain(const std::string& sMessage) {
  std::cerr << "varnel-emulator: " << modALLUtility::Printable(sMessage) << '\n';
}

/// "8000: 3E 05", sixteen bytes a line.
void SayBytes(std::span<const std::uint8_t> abImage, std::size_t lFirst, std::size_t lCount) {
  for (std::size_t lDone = 0; lDone < lCount; lDone += BYTES_PER_LINE) {
    std::string sLine = Hex4(static_cast<std::int32_t>(lFirst + lDone)) + ":";
    const auto abLine = abImage.subspan(lFirst + lDone, std::min(BYTES_PER_LINE, lCount - lDone));
    for (const std::uint8_t bByte : abLine) {
      sLine += ' ';
      sLine += modALLUtility::HexDigit(bByte >> 4U);
      sLine += modALLUtility::HexDigit(bByte);
    }
    Say(sLine);
  }
}

/// A part of the memory that is all there; throws when another program has cut the block.
std::span<std::uint8_t, ADDRESS_SPACE> Whole(std::span<std::uint8_t> abPart) {
  if (abPart.size() < ADDRESS_SPACE) {
    throw std::runtime_error("another program has cut the shared memory");
  }
  return abPart.first<ADDRESS_SPACE>();
}

class Emulator {
 public:
  /// Does all that comes before the first poll; false after a message.
  bool Start(const EmulatorOptions& tOptions);

  /// Serves commands and reports until the end; gives the exit status.
  int Run();

 private:
  using Words = std::vector<std::string>;

  using Memory = std::span<std::uint8_t, ADDRESS_SPACE>;
  static Memory Ram() { return Whole(modALLSharedMap::RamImage()); }
  static Memory Protection() { return Whole(modALLSharedMap::ProtectionMap()); }

  bool Prepare(const EmulatorOptions& tOptions, std::string& sError);
  void Show(std::int32_t lAddress);
  static void SetProtection(EmulatorOptions::Range tRange, std::uint8_t bValue);
  void Remember(std::int32_t lFirst, std::int32_t lCount);

  void Poll();
  void SayChanges();

  bool Serve(std::string_view sInput);
  bool Execute(const std::string& sLine);
  bool ExecuteWords(const Words& asWord);
  bool Load(const Words& asWord);
  bool Poke(const Words& asWord);
  bool Dump(const Words& asWord);
  void SayStatus() const;

  EmulatorLink tLink;
  std::array<std::uint8_t, ADDRESS_SPACE> abLastLook{};
  std::int32_t lActiveProgram = 0;
  std::uint32_t hProcess = 0;
  std::string sPending;  // input behind the last line end, as much as a line may have
};

bool Emulator::Start(const EmulatorOptions& tOptions) {
  std::string sError;
  if (Prepare(tOptions, sError)) {
    Say("ready");
  } else if (!tOptions.bJoin || !tLink.IsTaken()) {
    Complain(sError);
    return false;
  }
  if (!tOptions.asProgram.empty()) {
    hProcess = platform::StartProcess(tOptions.asProgram, sError);
    if (hProcess == 0) Complain("cannot start " + tOptions.asProgram.front() + ": " + sError);
  }
  return tOptions.asProgram.empty() || hProcess != 0;
}

bool Emulator::Prepare(const EmulatorOptions& tOptions, std::string& sError) {
  if (!tLink.Open(sError)) return false;
  auto lSample = tOptions.lSample;
  if (tOptions.atFile.empty() && !lSample) lSample = 0;
  if (lSample && !SampleProgram::LoadSample(*lSample, Ram(), sError)) return false;
  for (const auto& tFile : tOptions.atFile) {
    if (!ToolInput::LoadFile(tFile.sPath, tFile.lAddress, Ram(), sError)) return false;
  }
  for (const auto& tRange : tOptions.atProtect) SetProtection(tRange, PROTECTED);
  Remember(0, ADDRESS_SPACE);
  const std::int32_t lFirst =
      tOptions.atFile.empty() ? lSample.value_or(0) : tOptions.atFile.front().lAddress;
  // A window that outlived the stand-in before follows at once.
  Show(tOptions.lShow.value_or(lFirst));
  return tLink.Publish(tOptions.sIcon, sError);
}

void Emulator::Show(std::int32_t lAddress) {
  modALLSharedMap::WriteControlField(modALLSharedMap::ControlField::ShowAddr, lAddress);
  modALLProcess::SignalEvent(modALLProcess::hShowAddrEvent);
}

void Emulator::SetProtection(EmulatorOptions::Range tRange, std::uint8_t bValue) {
  const Memory abMap = Protection();
  std::fill(abMap.begin() + tRange.lFirst, abMap.begin() + tRange.lLast + 1, bValue);
}

void Emulator::Remember(std::int32_t lFirst, std::int32_t lCount) {
  std::copy_n(Ram().begin() + lFirst, lCount, abLastLook.begin() + lFirst);
}

int Emulator::Run() {
  bool bInput = !tLink.IsTaken();  // commands are for a memory of one's own
  for (;;) {
    // What was done last is still to be reported when the end has come.
    const auto lRequested = platform::EndRequested();
    const auto lEnded = hProcess != 0 ? platform::ProcessStatus(hProcess) : std::nullopt;
    Poll();
    if (lRequested) return *lRequested;
    if (lEnded) return *lEnded;
    if (!std::cout) {
      Complain("cannot write to standard output");
      return STATUS_ERROR;
    }
    if (!bInput) {
      platform::SleepMilliseconds(POLL_MILLISECONDS);
      continue;
    }
    const auto sInput = platform::ReadStandardInput(POLL_MILLISECONDS);
    bInput = sInput.has_value();
    if (!Serve(bInput ? *sInput : "\n")) {
      Poll();
      return STATUS_OK;
    }
  }
}

void Emulator::Poll() {
  using namespace modALLSharedMap;
  const std::int32_t lActive = ReadControlField(ControlField::ActiveProgram);
  if (lActive != lActiveProgram && lActive != 0) Say("active program " + std::to_string(lActive));
  lActiveProgram = lActive;
  if (RamChanged() != 0) {
    Say("ram changed");
    SetRamChanged(0);
    // A write that this look misses must find the flag cleared already, and set it again.
    std::atomic_thread_fence(std::memory_order_seq_cst);
    SayChanges();
  }
  if (platform::WaitNamedEvent(modALLProcess::hBreakpointEvent)) {
    Say("breakpoint " + Hex4(ReadControlField(ControlField::BreakpointAddr)));
  }
  for (std::size_t lProgram = 0; lProgram < modALLProcess::PROGRAM_COUNT; ++lProgram) {
    if (platform::WaitNamedEvent(modALLProcess::tProgramEvent[lProgram].hEvent)) {
      Say("program " + std::to_string(lProgram) + " closed");
    }
  }
}

void Emulator::SayChanges() {
  std::array<std::uint8_t, ADDRESS_SPACE> abLook{};
  modALLSharedMap::CopyRamImage(abLook);
  for (std::size_t lFirst = 0; lFirst < abLook.size(); ++lFirst) {
    std::size_t lEnd = lFirst;
    while (lEnd < abLook.size() && abLook[lEnd] != abLastLook[lEnd]) ++lEnd;
    SayBytes(abLook, lFirst, lEnd - lFirst);
    lFirst = lEnd;
  }
  abLastLook = abLook;
}

/// Executes the lines that are complete; false on "quit".
bool Emulator::Serve(std::string_view sInput) {
  for (;;) {
    const std::size_t lEnd = sInput.find('\n');
    const std::string_view sPart = sInput.substr(0, lEnd);
    const bool bWasTooLong = sPending.size() > LONGEST_LINE;
    sPending += sPart.substr(0, LONGEST_LINE + 1 - sPending.size());
    const bool bTooLong = sPending.size() > LONGEST_LINE;
    if (bTooLong && !bWasTooLong) Complain("not understood: a line of more than 1 MB (try help)");
    if (lEnd == std::string_view::npos) return true;
    if (!bTooLong && !Execute(sPending)) return false;
    sPending.clear();
    sInput.remove_prefix(lEnd + 1);
  }
}

/// Executes a line; false on "quit".
bool Emulator::Execute(const std::string& sLine) {
  std::istringstream tLine(sLine);
  Words asWord;
  for (std::string sWord; tLine >> sWord;) asWord.push_back(sWord);
  if (asWord.empty()) return true;
  if (asWord.front() == "quit" && asWord.size() == 1) return false;
  if (asWord.front() == "load") {
    // A file's name may hold blanks: all between the command and the address.
    const std::size_t lName = sLine.find("load") + 4;
    const std::size_t lLast = sLine.rfind(asWord.back());
    std::string sName = lLast > lName ? sLine.substr(lName, lLast - lName) : "";
    sName.erase(0, sName.find_first_not_of(" \t"));
    sName.erase(sName.find_last_not_of(" \t") + 1);
    asWord = {"load", sName, asWord.back()};
  }
  if (!ExecuteWords(asWord)) Complain("not understood: " + sLine + " (try help)");
  return true;
}

/// False when the words are no command.
bool Emulator::ExecuteWords(const Words& asWord) {
  const std::string& sCommand = asWord.front();
  if (sCommand == "load") return Load(asWord);
  if (sCommand == "poke") return Poke(asWord);
  if (sCommand == "dump") return Dump(asWord);
  if (asWord.size() == 1) {
    if (sCommand == "help") std::cout << COMMANDS << std::flush;
    if (sCommand == "status") SayStatus();
    return sCommand == "help" || sCommand == "status";
  }
  if (asWord.size() != 2) return false;
  if (sCommand == "show") {
    const auto lAddress = ParseShowAddress(asWord[1]);
    if (lAddress) {
      Show(*lAddress);
      Say("showing " + Hex4(*lAddress));
    }
    return lAddress.has_value();
  }
  const auto tRange = ParseRange(asWord[1]);
  if (!tRange || (sCommand != "protect" && sCommand != "unprotect")) return false;
  SetProtection(*tRange, sCommand == "protect" ? PROTECTED : 0);
  Say(sCommand + "ed " + Hex4(tRange->lFirst) + "-" + Hex4(tRange->lLast));
  return true;
}

bool Emulator::Load(const Words& asWord) {
  const auto lParsed = ToolInput::ParseHex(asWord[2]);
  if (!lParsed || asWord[1].empty()) return false;
  const auto lAddress = static_cast<std::int32_t>(*lParsed);
  std::string sError;
  if (const auto lLength = ToolInput::LoadFile(asWord[1], lAddress, Ram(), sError)) {
    Remember(lAddress, *lLength);
    Say("loaded " + std::to_string(*lLength) + " bytes at " + Hex4(lAddress));
  } else {
    Complain(sError);
  }
  return true;
}

bool Emulator::Poke(const Words& asWord) {
  if (asWord.size() < 3) return false;
  const auto lParsed = ToolInput::ParseHex(asWord[1]);
  std::vector<std::uint8_t> abByte;
  for (std::size_t lIndex = 2; lIndex < asWord.size(); ++lIndex) {
    const auto lByte = ToolInput::ParseHex(asWord[lIndex], 0xFF);
    if (!lByte) return false;
    abByte.push_back(static_cast<std::uint8_t>(*lByte));
  }
  if (!lParsed || *lParsed + abByte.size() > ADDRESS_SPACE) return false;
  const auto lAddress = static_cast<std::int32_t>(*lParsed);
  const auto lCount = static_cast<std::int32_t>(abByte.size());
  modALLSharedMap::WriteRam(lAddress, abByte);
  Remember(lAddress, lCount);
  Say("poked " + std::to_string(lCount) + " bytes at " + Hex4(lAddress));
  return true;
}

bool Emulator::Dump(const Words& asWord) {
  if (asWord.size() < 2 || asWord.size() > 3) return false;
  const auto lFirst = ToolInput::ParseHex(asWord[1]);
  const auto lCount = asWord.size() == 3 ? ToolInput::ParseHex(asWord[2], ADDRESS_SPACE)
                                         : std::optional<std::uint32_t>(BYTES_PER_LINE);
  if (!lFirst || !lCount) return false;
  // The end of the memory ends the dump.
  SayBytes(Ram(), *lFirst, std::min(*lCount, ADDRESS_SPACE - *lFirst));
  return true;
}

void Emulator::SayStatus() const {
  using namespace modALLSharedMap;
  Say("temp file: " + modALLUtility::Printable(tLink.TempFile()));
  Say("active program: " + std::to_string(ReadControlField(ControlField::ActiveProgram)));
  Say("show address: " + Hex4(ReadControlField(ControlField::ShowAddr)));
  Say("breakpoint address: " + Hex4(ReadControlField(ControlField::BreakpointAddr)));
  std::string sProtected = "protected:";
  const Memory abMap = Protection();
  for (std::size_t lFirst = 0; lFirst < abMap.size(); ++lFirst) {
    if (abMap[lFirst] == 0) continue;
    std::size_t lEnd = lFirst;
    while (lEnd < abMap.size() && abMap[lEnd] != 0) ++lEnd;
    sProtected += ' ' + Hex4(static_cast<std::int32_t>(lFirst)) + '-' +
                  Hex4(static_cast<std::int32_t>(lEnd - 1));
    lFirst = lEnd;
  }
  Say(sProtected);
  Say(hProcess != 0 ? "program: running" : "program: none");
}

}  // namespace

int main(int lArguments, char** apArgument) {
  platform::SecureStandardStreams();
  const std::vector<std::string> asArgument(apArgument + (lArguments > 0 ? 1 : 0),
                                            apArgument + lArguments);
  // Behind "--" the arguments are another program's.
  const auto itOwnEnd = std::ranges::find(asArgument, "--");
  const std::string sHelp = std::string(HELP) + "\nCommands:\n" + std::string(COMMANDS);
  if (const auto sText = modALLUtility::ProgramInformation({asArgument.begin(), itOwnEnd},
                                                           "varnel-emulator", sHelp)) {
    std::cout << *sText << std::flush;
    return std::cout ? STATUS_OK : STATUS_ERROR;
  }
  EmulatorOptions tOptions;
  std::string sError;
  if (!ParseEmulatorOptions(asArgument, tOptions, sError)) {
    Complain(sError + " (see varnel-emulator --help)");
    return STATUS_ERROR;
  }
  // Before anything exists that would be left behind.
  platform::CatchEndRequests();
  Emulator tEmulator;
  try {
    return tEmulator.Start(tOptions) ? tEmulator.Run() : STATUS_ERROR;
  } catch (const std::exception& tError) {
    Complain(tError.what());
    return STATUS_ERROR;
  }
}
