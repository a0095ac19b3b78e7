#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using namespace platform;

const test::ChildCode CANNOT_OPEN([](const test::Arguments& asPath) {
  EXPECT_EQ(OpenExclusiveFile(asPath[0]), 0U);
});

const test::ChildCode HOLD([](const test::Arguments& asPath) {
  EXPECT_NE(OpenExclusiveFile(asPath[0]), 0U);
  test::WriteFile(asPath[0] + ".held", "");
  test::WaitUntil([] { return false; });
});

TEST(ExclusiveFile, IsHeldByOneOpeningAmongAllProcesses) {
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("a file");
  const auto hFile = OpenExclusiveFile(sPath);
  // Other contents let nobody in.
  for (const std::string& sText : {std::string("text"), std::string("\0\r\n\xFF", 4), {}}) {
    EXPECT_EQ(OpenExclusiveFile(sPath), 0U);
    EXPECT_TRUE(test::RunInChild(CANNOT_OPEN, {sPath}));
    EXPECT_TRUE(WriteExclusiveFile(hFile, sText));
    EXPECT_EQ(ReadExclusiveFile(hFile), sText);
  }
  CloseSystemHandle(hFile);
  EXPECT_TRUE(!ReadExclusiveFile(hFile) && !WriteExclusiveFile(hFile, "x"));
  test::ChildProcess tHolder(HOLD, {sPath});
  ASSERT_TRUE(test::WaitUntil([&] { return std::filesystem::exists(sPath + ".held"); }));
  EXPECT_EQ(OpenExclusiveFile(sPath), 0U);
  tHolder.Kill();
  const auto hAgain = OpenExclusiveFile(sPath);
  EXPECT_NE(hAgain, 0U);
  CloseSystemHandle(hAgain);
}

}  // namespace
