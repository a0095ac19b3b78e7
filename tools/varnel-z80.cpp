#include <cerrno>
#include <clocale>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "disass/modDISListing.h"
#include "platform/ListText.h"
#include "platform/StandardStreams.h"
#include "tools/ToolInput.h"
#include "util/modALLUtilityAddress.h"
#include "util/modALLUtilityOptions.h"
#include "z80/modALLDisass.h"
#include "z80/modDISAsm.h"
#include "z80/modDISDebug.h"

namespace {

constexpr int STATUS_OK = 0;
constexpr int STATUS_FOUND = 1;  // the run was sound, what it looked at was not
constexpr int STATUS_ERROR = 2;

constexpr std::string_view HELP =
    R"(Usage: varnel-z80 dis [--org HEX] [--start HEX] [--end HEX] FILE
       varnel-z80 asm [--org HEX] [-o FILE] SOURCE
       varnel-z80 check [--org HEX] FILE
       varnel-z80 -h | --help | --version

The Z80 decoder and assembler of the Varnel Disassembler/Assembler. FILE or
SOURCE may be "-" for standard input. HEX is a number from 0 to FFFF without
prefix or suffix.

dis    Loads FILE at --org (default 0) into an otherwise zero 64 KB memory and
       prints the listing from --start (default: --org) to --end (default: the
       last byte of FILE), as the window saves it: 8-bit text, every line
       followed by CR LF.
asm    Assembles SOURCE, one instruction a line, to --org (default 0) and on;
       the address wraps after FFFF. Blank lines and lines that begin with ";"
       are skipped. Prints the listing line of each instruction. A line that
       is rejected gives a message and no bytes. -o writes the bytes to a
       file, unless a line was rejected.
check  Loads FILE as dis does, decodes all 64 KB from 0000 on, assembles every
       instruction's text, decodes the result and prints how often that agreed.

Exit status: 0 when all went well; 1 when asm rejected a line, or when check
counted a "Mismatch" or an "Opcode mismatch"; 2 for wrong usage and for files
that cannot be read or written.
)";

struct Options {
  std::string sCommand;
  std::int32_t lOrg = 0;
  std::optional<std::int32_t> lStart;
  std::optional<std::int32_t> lEnd;
  std::optional<std::string> sOutput;
  std::string sInput;
};

int Fail(const std::string& sMessage) {
  std::cerr << "varnel-z80: " << modALLUtility::Printable(sMessage) << '\n';
  return STATUS_ERROR;
}

// As Fail, where a Boolean is asked for.
bool Refuse(const std::string& sMessage) {
  Fail(sMessage);
  return false;
}

// What is still in the buffer may be the part that a full disk refuses.
int Finish(int lStatus) {
  std::cout.flush();
  return std::cout ? lStatus : Fail("cannot write to standard output");
}

/// Prints a line of a listing: into a file or a pipe each byte as it is; on a terminal, which would
/// act on control characters, as the window shows it, in ISO 8859-1 with marks, where the locale
/// has the characters for that.
void PrintLine(std::string_view sLine, std::string_view sLineEnd) {
  static const bool bTerminal = platform::IsOutputTerminal();
  if (!bTerminal) {
    std::cout << sLine << sLineEnd;
    return;
  }
  static const std::string sLocale = [] {
    const char* const pName = std::setlocale(LC_CTYPE, "");
    return std::string(pName != nullptr ? pName : "");
  }();
  const bool bUtf8 = sLocale.ends_with("UTF-8") || sLocale.ends_with("utf8");
  for (const char bCharacter : sLine) {
    auto bCode = static_cast<std::uint8_t>(bCharacter);
    if (platform::IsShownAsMark(bCode)) bCode = bUtf8 ? platform::MARK_CHARACTER : '.';
    if (bUtf8 && bCode >= 0x80) {
      std::cout << static_cast<char>(0xC0U | bCode >> 6U);
      bCode = 0x80U | (bCode & 0x3FU);
    }
    std::cout << static_cast<char>(bCode);
  }
  std::cout << sLineEnd;
}

std::string InputName(const Options& tOptions) {
  return tOptions.sInput == "-" ? "standard input" : tOptions.sInput;
}

/// Loads the input to its address of a zero image; bytes read, or none after a message.
std::optional<std::int32_t> LoadInput(const Options& tOptions, modALLDisass::MemoryImage& abImage) {
  std::string sError;
  const auto lLength =
      tOptions.sInput == "-"
          ? ToolInput::LoadStream(std::cin, InputName(tOptions), tOptions.lOrg, abImage, sError)
          : ToolInput::LoadFile(tOptions.sInput, tOptions.lOrg, abImage, sError);
  if (!lLength) Fail(sError);
  return lLength;
}

int Disassemble(const Options& tOptions) {
  modALLDisass::MemoryImage abImage{};
  const auto lLength = LoadInput(tOptions, abImage);
  if (!lLength) return STATUS_ERROR;
  const std::int32_t lEnd = tOptions.lEnd.value_or(tOptions.lOrg + *lLength - 1);
  for (std::int32_t lAddress = tOptions.lStart.value_or(tOptions.lOrg); lAddress <= lEnd;) {
    const auto tBuilt = modDISListing::BuildListingLine(abImage, lAddress);
    PrintLine(tBuilt.sLine, "\r\n");
    lAddress += tBuilt.lLength;
  }
  return Finish(STATUS_OK);
}

/// Blank lines and comments, indented or not.
bool IsSkipped(std::string_view sLine) {
  const std::size_t lFirst = sLine.find_first_not_of(" \t");
  return lFirst == std::string_view::npos || sLine[lFirst] == ';';
}

int Assemble(const Options& tOptions) {
  errno = 0;
  std::ifstream tFile;
  if (tOptions.sInput != "-") {
    tFile.open(tOptions.sInput, std::ios::binary);
    if (!tFile) return Fail(ToolInput::SystemMessage("cannot open " + tOptions.sInput));
  }
  std::istream& tSource = tOptions.sInput == "-" ? std::cin : tFile;

  modALLDisass::MemoryImage abImage{};
  std::string sProgram;
  std::int32_t lAddress = tOptions.lOrg;
  bool bRejected = false;
  std::string sLine;
  for (std::int64_t lLine = 1; std::cout && std::getline(tSource, sLine); ++lLine) {
    if (sLine.ends_with('\r')) sLine.pop_back();
    if (IsSkipped(sLine)) continue;
    modDISAsm::AsmBytes tBytes;
    std::string sError;
    if (!modDISAsm::AsmAssemble(sLine, lAddress, tBytes, sError)) {
      const std::string sMessage = tOptions.sInput + ':' + std::to_string(lLine) + ": " + sError;
      std::cerr << modALLUtility::Printable(sMessage) << '\n';
      bRejected = true;
      continue;
    }
    std::int32_t lNext = lAddress;
    for (const std::uint8_t bByte : tBytes.View()) {
      abImage[static_cast<std::size_t>(lNext)] = bByte;
      lNext = modALLUtility::AddrAdd(lNext, 1);
      if (tOptions.sOutput) sProgram += static_cast<char>(bByte);
    }
    PrintLine(modDISListing::BuildListingLine(abImage, lAddress).sLine, "\n");
    lAddress = lNext;
  }
  if (tSource.bad()) return Fail(ToolInput::SystemMessage("cannot read " + InputName(tOptions)));

  // A listing that could not be printed ended the run early: what was assembled is not all.
  std::string sError;
  if (std::cout && !bRejected && tOptions.sOutput &&
      !ToolInput::WriteFile(*tOptions.sOutput, sProgram, sError)) {
    return Fail(sError);
  }
  return Finish(bRejected ? STATUS_FOUND : STATUS_OK);
}

int Check(const Options& tOptions) {
  modALLDisass::MemoryImage abReference{};
  if (!LoadInput(tOptions, abReference)) return STATUS_ERROR;
  modALLDisass::MemoryImage abWork = abReference;
  const auto tCounters = modDISDebug::CheckImages(abReference, abWork, [] { return true; });
  std::string sSummary = modDISDebug::CheckSummary(tCounters);
  std::erase(sSummary, '\r');
  std::cout << sSummary << '\n';
  return Finish(tCounters.lMismatch == 0 && tCounters.lOpcodeMismatch == 0 ? STATUS_OK
                                                                           : STATUS_FOUND);
}

/// Reads what follows the command; false after a message.
bool ReadOptions(const std::vector<std::string>& asArgument, Options& tOptions) {
  const bool bDis = tOptions.sCommand == "dis";
  const bool bAsm = tOptions.sCommand == "asm";
  bool bInput = false;
  for (std::size_t lIndex = 1; lIndex < asArgument.size(); ++lIndex) {
    const std::string& sArgument = asArgument[lIndex];
    if (sArgument == "-" || !sArgument.starts_with('-')) {
      if (bInput) return Refuse("more than one file: " + sArgument);
      tOptions.sInput = sArgument;
      bInput = true;
      continue;
    }
    const bool bAddress =
        sArgument == "--org" || (bDis && sArgument == "--start") || (bDis && sArgument == "--end");
    if (!bAddress && !(bAsm && sArgument == "-o")) {
      return Refuse(tOptions.sCommand + " has no option " + sArgument);
    }
    if (++lIndex == asArgument.size()) {
      return Refuse(sArgument + " needs a value");
    }
    const std::string& sValue = asArgument[lIndex];
    if (!bAddress) {
      tOptions.sOutput = sValue;
      continue;
    }
    const auto lValue = ToolInput::ParseHex(sValue);
    if (!lValue) {
      return Refuse(sArgument + " takes a hexadecimal number from 0 to FFFF");
    }
    const auto lAddress = static_cast<std::int32_t>(*lValue);
    if (sArgument == "--org") {
      tOptions.lOrg = lAddress;
    } else {
      (sArgument == "--start" ? tOptions.lStart : tOptions.lEnd) = lAddress;
    }
  }
  if (!bInput) return Refuse(tOptions.sCommand + " needs a file (see varnel-z80 --help)");
  return true;
}

}  // namespace

int main(int lArguments, char** apArgument) {
  platform::SecureStandardStreams();
  platform::SetBinaryStandardStreams();
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> asArgument(apArgument + (lArguments > 0 ? 1 : 0),
                                            apArgument + lArguments);
  if (const auto sText = modALLUtility::ProgramInformation(asArgument, "varnel-z80", HELP)) {
    std::cout << *sText;
    return Finish(STATUS_OK);
  }
  Options tOptions;
  if (!asArgument.empty()) tOptions.sCommand = asArgument.front();
  int (*const fnCommand)(const Options&) = tOptions.sCommand == "dis"     ? Disassemble
                                           : tOptions.sCommand == "asm"   ? Assemble
                                           : tOptions.sCommand == "check" ? Check
                                                                          : nullptr;
  if (fnCommand == nullptr) {
    return Fail("say dis, asm or check (see varnel-z80 --help)");
  }
  return ReadOptions(asArgument, tOptions) ? fnCommand(tOptions) : STATUS_ERROR;
}
