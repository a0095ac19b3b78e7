#include <array>
#include <numeric>

#include "config/modALLProcessError.h"
#include "disass/RecordingToolkit.h"
#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"
#include "link/modALLSharedMapConfig.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"

namespace {

using namespace modALLSharedMap;
using modALLProcess::RuntimeError;
using platform::FormDesign;

const std::string sThisRun = test::UniqueName() + " link,";

TEST(SharedMap, IsUsedAtAnySizeAndHasSeveralLives) {
  // Sizes that the emulator gives the blocks; 0: it has made none.
  for (const std::uint32_t lAsked : {0U, 16U, 1000U, 0x10000U, 0x10001U, 0x20000U, 0x30000U}) {
    SCOPED_TRACE(lAsked);
    std::uint32_t lSize = 0;  // some systems round it up
    for (const std::size_t lBlock : {0U, 4U}) {
      sSharedMapName[lBlock] = sThisRun + std::to_string(lAsked) + "," + std::to_string(lBlock);
      auto* const pView =
          platform::MapNamedMemory(platform::CreateNamedMemory(sSharedMapName[lBlock], lAsked));
      lSize = platform::NamedMemorySize(pView);
      std::fill_n(pView, lSize, std::uint8_t{0x11});
    }
    const std::uint8_t bFill = lSize == 0 ? 0 : 0x11;
    const std::size_t lRam = lSize == 0 ? 0x20000 : lSize;
    std::array<std::uint8_t, 65536> abImage = {};
    const auto lSum = [&] { return std::accumulate(abImage.begin(), abImage.end(), 0UL); };
    for (const std::uint8_t bByte : {bFill, std::uint8_t{0}}) {
      ASSERT_TRUE(SharedMapOpen(0, bByte == 0) && SharedMapOpen(4, bByte == 0));
      EXPECT_FALSE(SharedMapOpen(0, true)) << "mapped already";
      EXPECT_GE(platform::NamedMemorySize(lSharedMapBase[4]), lSize == 0 ? 512 : lAsked);
      abImage.fill(0xEE);
      CopyRamImage(abImage);
      EXPECT_EQ(lSum(), std::min<std::size_t>(lRam, 0x10000) * bByte);
      CopyProtectionMap(abImage);
      EXPECT_EQ(lSum(), (std::clamp<std::size_t>(lRam, 0x10000, 0x20000) - 0x10000) * bByte);
      // Writes go on at 0000H, and what the block lacks is dropped.
      WriteRam(0xFFFF, std::array<std::uint8_t, 3>{1, 2, 3});
      CopyRamImage(abImage);
      EXPECT_EQ(abImage[0xFFFF], RamImage().size() == 0x10000 ? 1 : 0);
      EXPECT_TRUE(abImage[0] == 2 && abImage[1] == 3);
      // Fields are little-endian, and nothing beside them is touched.
      WriteControlField(ControlField::ActiveProgram, 12);
      WriteControlField(ControlField::BreakpointAddr, 0x89AB);
      SetRamChanged(0xFF);
      const std::uint8_t abControl[] = {12,    0,     0,     0,     bByte, bByte, 0xFF, bByte,
                                        bByte, bByte, bByte, bByte, 0xAB,  0x89,  0,    0};
      EXPECT_TRUE(std::equal(std::begin(abControl), std::end(abControl), lSharedMapBase[4]));
      EXPECT_EQ(ReadControlField(ControlField::ShowAddr), 0x01010101 * bByte);
      // A closed block is neither read nor written.
      for (const auto iBlock : {RAM_BLOCK, RAM_BLOCK, CONTROL_BLOCK}) SharedMapClose(iBlock);
      WriteControlField(ControlField::ActiveProgram, 12);
      EXPECT_TRUE(RamImage().empty() && ReadControlField(ControlField::ActiveProgram) == 0);
    }
  }
}

TEST(SharedMap, FailuresAreToldAndHandlesGoBack) {
  recording::Toolkit tToolkit;
  tToolkit.apHandling = {std::make_shared<recording::Form>(tToolkit, FormDesign{}, nullptr)};
  tToolkit.Answer(1);
  sSharedMapName[0].clear();
  EXPECT_FALSE(SharedMapOpen(RAM_BLOCK, false)) << "no name";
  const auto [sText, lStyle, sTitle] = tToolkit.TakeBoxes().at(0);
  EXPECT_TRUE(sText.starts_with("CreateFileMapping failed - LastError: ")) << sText;
  EXPECT_TRUE(lStyle == 16 && sTitle == "Varnel - Error");
  EXPECT_THROW(SharedMapOpen(-1, false), RuntimeError);
  EXPECT_THROW(SharedMapClose(7), RuntimeError);
  auto hEvent = modALLProcess::CreateNamedEvent(sThisRun + "event");
  const auto hClosed = hEvent;
  for (const auto hSignalled : {0U, hEvent}) modALLProcess::SignalEvent(hSignalled);
  EXPECT_TRUE(platform::WaitNamedEvent(hEvent));
  for (auto* const phEvent : {&hEvent, &hEvent}) modALLProcess::CloseHandleAndClear(*phEvent);
  EXPECT_TRUE(hEvent == 0 && !platform::SetNamedEvent(hClosed));
  try {
    ADD_FAILURE() << modALLProcess::CreateNamedEvent("");
  } catch (const RuntimeError& tError) {
    EXPECT_EQ(std::to_string(tError.Number()) + tError.what(), "-2147221503CreateEvent failed");
  }
}

// The values "n" and number, each with a separator before it.
std::string Names(const std::string& sSeparator, int iFirst = 2, int iLast = 25) {
  const std::string sName = sSeparator + "n" + std::to_string(iFirst);
  return iFirst > iLast ? "" : sName + Names(sSeparator, iFirst + 1, iLast);
}

// The values that a text gives, each in brackets, or the number of its error.
std::string Parsed(const std::string& sText) {
  try {
    const ConfigValues tValues = ParseConfigText(sText);
    std::string sFound = "(" + std::to_string(tValues.lIconNumber);
    for (const auto& sValue : tValues.asText) sFound += ")(" + sValue;
    return sFound + ")";
  } catch (const RuntimeError& tError) {
    return std::to_string(tError.Number());
  }
}

TEST(ConfigText, IsTwentyFiveValuesHoweverTheyAreSeparated) {
  const std::string sRest = Names(")(", 4) + ")";
  const std::string sMost = "7" + Names(",", 2, 24);
  const std::pair<std::string, std::string> atCase[] = {
      {"7" + Names("\r\n"), "(7)(n2)(n3" + sRest},
      {"7" + Names("\n") + "\n", "(7)(n2)(n3" + sRest},
      {"  7  " + Names(",  ") + ",ignored,\"for ever", "(7)(n2)(n3" + sRest},
      {"\"7\" , \"n2\" \r\n\"n3\"" + Names("\r", 4), "(7)(n2)(n3" + sRest},
      {"-2147483648" + Names(","), "(-2147483648)(n2)(n3" + sRest},
      {"7,\"a, \r\nb \" junk" + Names(",", 3), "(7)(a, \r\nb )(n3" + sRest},
      {"7,,\"\"" + Names(",", 4), "(7)()(" + sRest},
      {"7\r\n\r\n a \"b\" c  " + Names("\r\n", 4), "(7)()(a \"b\" c" + sRest},
      {sMost + ",\r\n", "(7" + Names(")(", 2, 24) + ")()"},
  };
  for (const auto& [sText, sExpected] : atCase) EXPECT_EQ(Parsed(sText), sExpected) << sText;
  for (const auto& sEnd : {"", "\r\n", ",  ", ",\"cut off"}) EXPECT_EQ(Parsed(sMost + sEnd), "62");
  for (const auto& sOdd : {"\r\n7", "7.5", "2147483648"}) EXPECT_EQ(Parsed(sOdd + sMost), "13");
  EXPECT_EQ(Parsed("") + Parsed("7") + Parsed(std::string(1000, '\0')), "626213");
}

TEST(ConfigTempFile, FillsTheTablesOrEndsTheProgram) {
  const test::TestFolder tFolder;
  recording::Toolkit tToolkit;
  tToolkit.apHandling = {std::make_shared<recording::Form>(tToolkit, FormDesign{}, nullptr)};
  const std::string sFile = tFolder.Path("temp/VARNEL/VARNEL.tmp");
  const auto fnFails = [&](const std::string& sError) {
    tToolkit.Answer(1);
    EXPECT_THROW(ReadConfigTempFile(), std::int32_t) << sError;
    const std::string sText = "Unable to read configuration temp file\r\n\r\nError: " + sError;
    EXPECT_EQ(tToolkit.TakeBoxes(), std::vector({recording::Box{sText, 16, "Varnel - Error"}}));
  };
  test::SetEnvironment("TEMP", tFolder.Path("temp"));
  fnFails("75 - Path/File access error");  // the suite's folder is made, not the one above it
  std::filesystem::create_directory(tFolder.Path("temp"));
  fnFails("53 - File not found");
  test::WriteFile(sFile, "1,2");
  fnFails("62 - Input past end of file");
  test::WriteFile(sFile, "one");
  fnFails("13 - Type mismatch");
  test::WriteFile(sFile, "1" + Names(","));
  ReadConfigTempFile();
  using namespace modALLProcess;
  EXPECT_EQ(std::to_string(lIconNumber) + sSharedMapName[0] + sSharedMapName[6], "1n2n8");
  EXPECT_EQ(sSpareText + tProgramEvent[0].sName + tProgramEvent[12].sName, "n9n10n22");
  EXPECT_EQ(sShowAddrEventName + sBreakpointEventName + sThirdEventName, "n23n24n25");
  std::filesystem::remove(sFile);
  std::filesystem::create_directory(sFile);
  fnFails("75 - Path/File access error");
  std::filesystem::remove_all(tFolder.Path("temp/VARNEL"));
  test::WriteFile(tFolder.Path("temp/VARNEL"), "a file in the folder's place");
  fnFails("53 - File not found");
}

}  // namespace
