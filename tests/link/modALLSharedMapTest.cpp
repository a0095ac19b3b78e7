#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "config/modALLProcessError.h"
#include "disass/RecordingToolkit.h"
#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"

namespace {

using namespace modALLSharedMap;
using modALLProcess::RuntimeError;
using test::RunInChild;

const std::string sThisRun = "test" + std::to_string(::getpid()) + " link\\";
using Image = std::array<std::uint8_t, 65536>;

// What the program sees of blocks that the emulator made with lRamSize and lControlSize bytes of
// 11H, none where a size is 0.
void WithBlocks(std::uint32_t lRamSize, std::uint32_t lControlSize,
                const std::function<void(recording::Toolkit&)>& fnTest) {
  EXPECT_TRUE(RunInChild([&] {
    recording::Toolkit tToolkit;
    sSharedMapName[0] = sThisRun + "ram";
    sSharedMapName[4] = sThisRun + "control";
    for (const auto& [sName, lSize] :
         {std::pair(sSharedMapName[0], lRamSize), std::pair(sSharedMapName[4], lControlSize)}) {
      if (lSize == 0) continue;
      auto* const pView = platform::MapNamedMemory(platform::CreateNamedMemory(sName, lSize));
      ASSERT_NE(pView, nullptr);
      std::fill_n(pView, lSize, std::uint8_t{0x11});
    }
    fnTest(tToolkit);
    EXPECT_TRUE(tToolkit.TakeBoxes().empty());
  })) << lRamSize;
}

TEST(SharedMap, IsOpenedAtTheEmulatorsSizeOrCreatedAtItsOwn) {
  for (const std::uint32_t lSize : {0U, 1000U, 0x10000U, 0x10001U, 0x20000U, 0x30000U}) {
    WithBlocks(lSize, lSize, [&](auto&) {
      ASSERT_TRUE(SharedMapOpen(RAM_BLOCK, false));
      ASSERT_TRUE(SharedMapOpen(CONTROL_BLOCK, false));
      EXPECT_FALSE(SharedMapOpen(RAM_BLOCK, true)) << "mapped already";
      const std::size_t lThere = lSize == 0 ? SHARED_MAP_SIZE[0] : lSize;
      EXPECT_EQ(platform::NamedMemorySize(lSharedMapBase[0]), lThere);
      EXPECT_EQ(platform::NamedMemorySize(lSharedMapBase[4]), lSize == 0 ? 512 : lSize);
      EXPECT_EQ(RamImage().size(), std::min<std::size_t>(lThere, 0x10000));
      EXPECT_EQ(ProtectionMap().size(),
                std::clamp<std::size_t>(lThere, 0x10000, 0x20000) - 0x10000);
      Image abImage;
      abImage.fill(0xEE);
      CopyRamImage(abImage);
      EXPECT_EQ(std::ranges::count(abImage, lSize == 0 ? 0 : 0x11),
                lSize == 0 ? 65536 : RamImage().size());
      EXPECT_EQ(std::ranges::count(abImage, 0xEE), 0);
      CopyProtectionMap(abImage);
      EXPECT_EQ(std::ranges::count(abImage, 0x11), lSize == 0 ? 0 : ProtectionMap().size());
      // Writes go on at 0000H, and what the block lacks is dropped.
      WriteRam(0xFFFF, std::array<std::uint8_t, 3>{1, 2, 3});
      CopyRamImage(abImage);
      EXPECT_EQ(abImage[0xFFFF], RamImage().size() == 0x10000 ? 1 : 0);
      EXPECT_EQ(abImage[0], 2);
      EXPECT_EQ(abImage[1], 3);
      EXPECT_EQ(ReadControlField(ControlField::ShowAddr), lSize == 0 ? 0 : 0x11111111);
    });
  }
}

TEST(SharedMap, HasSeveralLivesAndFillsWithZerosOnDemand) {
  WithBlocks(0x30000, 16, [](auto&) {
    SharedMapClose(RAM_BLOCK);
    for (const bool bZeroFill : {false, true, false}) {
      ASSERT_TRUE(SharedMapOpen(RAM_BLOCK, bZeroFill));
      ASSERT_TRUE(SharedMapOpen(CONTROL_BLOCK, bZeroFill));
      if (bZeroFill) {
        EXPECT_EQ(std::count(lSharedMapBase[0], lSharedMapBase[0] + 0x30000, 0), 0x20000);
        EXPECT_EQ(ReadControlField(ControlField::BreakpointAddr), 0);
      }
      SharedMapClose(RAM_BLOCK);
      SharedMapClose(RAM_BLOCK);
      SharedMapClose(CONTROL_BLOCK);
      // A closed block is neither read nor written.
      EXPECT_TRUE(RamImage().empty());
      WriteControlField(ControlField::ActiveProgram, 12);
      EXPECT_EQ(ReadControlField(ControlField::ActiveProgram), 0);
    }
    for (const auto iIndex : {std::int16_t{-1}, std::int16_t{7}}) {
      EXPECT_THROW(SharedMapOpen(iIndex, false), RuntimeError);
      EXPECT_THROW(SharedMapClose(iIndex), RuntimeError);
    }
  });
}

TEST(SharedMap, ControlFieldsAreLittleEndianAndNothingElseIsTouched) {
  WithBlocks(0, 512, [](auto&) {
    ASSERT_TRUE(SharedMapOpen(CONTROL_BLOCK, false));
    WriteControlField(ControlField::ActiveProgram, 12);
    WriteControlField(ControlField::BreakpointAddr, 0x89AB);
    SetRamChanged(0xFF);
    std::vector<std::uint8_t> abExpected(512, 0x11);
    const std::array<std::uint8_t, 16> abStart = {12,   0,    0,    0,    0x11, 0x11, 0xFF, 0x11,
                                                  0x11, 0x11, 0x11, 0x11, 0xAB, 0x89, 0,    0};
    std::ranges::copy(abStart, abExpected.begin());
    EXPECT_TRUE(std::equal(abExpected.begin(), abExpected.end(), lSharedMapBase[4]));
    EXPECT_EQ(RamChanged(), 0xFF);
    WriteControlField(ControlField::ShowAddr, -2);
    EXPECT_EQ(lSharedMapBase[4][8], 0xFE);
    EXPECT_EQ(ReadControlField(ControlField::ShowAddr), -2);
  });
}

TEST(SharedMap, ThatCannotBeOpenedIsToldWithTheSystemsCode) {
  WithBlocks(0, 0, [](recording::Toolkit& tToolkit) {
    sSharedMapName[0].clear();
    tToolkit.Answer(1);
    EXPECT_FALSE(SharedMapOpen(RAM_BLOCK, false));
    const std::vector<recording::Box> atExpected = {
        {"CreateFileMapping failed - LastError: 16", 16, "Varnel - Error"}};
    EXPECT_EQ(tToolkit.TakeBoxes(), atExpected);
    // A handle without a view, as a failed mapping leaves it, is no hindrance the next time.
    sSharedMapName[0] = sThisRun + "retry";
    hSharedMap[0] = platform::CreateNamedMemory(sThisRun + "other", 16);
    EXPECT_TRUE(SharedMapOpen(RAM_BLOCK, false));
    EXPECT_EQ(platform::OpenNamedMemory(sThisRun + "other"), 0U);
  });
}

TEST(Events, AreCreatedSignalledAndClosedByHandle) {
  EXPECT_TRUE(RunInChild([] {
    auto hEvent = modALLProcess::CreateNamedEvent(sThisRun + "event");
    modALLProcess::SignalEvent(hEvent);
    modALLProcess::SignalEvent(0);
    EXPECT_TRUE(platform::WaitNamedEvent(hEvent));
    const auto hClosed = hEvent;
    modALLProcess::CloseHandleAndClear(hEvent);
    modALLProcess::CloseHandleAndClear(hEvent);
    EXPECT_EQ(hEvent, 0U);
    EXPECT_FALSE(platform::SetNamedEvent(hClosed));
    try {
      modALLProcess::CreateNamedEvent("");
      ADD_FAILURE();
    } catch (const RuntimeError& tError) {
      EXPECT_EQ(tError.Number(), -2147221503);
      EXPECT_STREQ(tError.what(), "CreateEvent failed");
    }
  }));
}

TEST(ConfigTempFile, FillsTheTablesOrEndsTheProgram) {
  const test::TestFolder tFolder;
  ::setenv("TEMP", tFolder.Path().c_str(), 1);
  const std::string sPath = tFolder.Path("VARNEL/VARNEL.tmp");
  recording::Toolkit tToolkit;
  const auto fnFails = [&](const std::string& sError) {
    tToolkit.Answer(1);
    EXPECT_THROW(ReadConfigTempFile(), recording::ProgramEnded);
    const std::vector<recording::Box> atExpected = {
        {"Unable to read configuration temp file\r\n\r\nError: " + sError, 16, "Varnel - Error"}};
    EXPECT_EQ(tToolkit.TakeBoxes(), atExpected);
  };
  fnFails("53 - File not found");
  test::WriteFile(sPath, "1,2,3");
  fnFails("62 - Input past end of file");
  test::WriteFile(sPath, "one");
  fnFails("13 - Type mismatch");
  std::filesystem::remove(sPath);
  std::filesystem::create_directory(sPath);
  fnFails("75 - Path/File access error");
  std::filesystem::remove_all(tFolder.Path("VARNEL"));
  test::WriteFile(tFolder.Path("VARNEL"), "");
  fnFails("53 - File not found");
  std::filesystem::remove(tFolder.Path("VARNEL"));
  ::setenv("TEMP", tFolder.Path("none").c_str(), 1);
  fnFails("75 - Path/File access error");
  ::setenv("TEMP", tFolder.Path().c_str(), 1);

  std::filesystem::create_directory(tFolder.Path("VARNEL"));
  std::string sText = "1";
  for (int iValue = 2; iValue <= 26; ++iValue) sText += "," + std::to_string(iValue);
  test::WriteFile(sPath, sText);
  ReadConfigTempFile();
  EXPECT_EQ(lIconNumber, 1);
  EXPECT_EQ(sSharedMapName[0] + " " + sSharedMapName[6] + " " + sSpareText, "2 8 9");
  EXPECT_EQ(modALLProcess::tProgramEvent[0].sName + modALLProcess::tProgramEvent[12].sName, "1022");
  EXPECT_EQ(modALLProcess::sShowAddrEventName, "23");
  EXPECT_EQ(modALLProcess::sBreakpointEventName, "24");
  EXPECT_EQ(modALLProcess::sThirdEventName, "25");
}

}  // namespace
