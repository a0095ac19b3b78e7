#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config/modALLProcessError.h"
#include "link/modALLSharedMapConfig.h"

namespace {

using modALLSharedMap::ConfigValues;
using modALLSharedMap::ParseConfigText;

// The values "n2" to "n25", each with a separator before it.
std::string Names(const std::string& sSeparator, int iFirst = 2, int iLast = 25) {
  std::string sText;
  for (int iName = iFirst; iName <= iLast; ++iName)
    sText += sSeparator + "n" + std::to_string(iName);
  return sText;
}

std::string Quoted() {
  std::string sText = "7";
  for (int iName = 2; iName <= 25; ++iName) sText += " , \"n" + std::to_string(iName) + "\" ";
  return sText;
}

TEST(ConfigText, IsTwentyFiveValuesHoweverTheyAreSeparated) {
  struct Case {
    std::string sText;
    std::int32_t lIconNumber = 7;
    std::vector<std::pair<std::size_t, std::string>> asOther =
        {};  // values that are not "n" and number
  };
  const std::vector<Case> atCase = {
      {"7" + Names("\r\n")},
      {"7" + Names("\n") + "\n"},
      {"7" + Names("\r")},
      {"  7  " + Names(",  ") + ",ignored,\"for ever"},
      {Quoted() + "\r\n"},
      {"-2147483648" + Names(","), -2147483648},
      {"\"2147483647\"" + Names(","), 2147483647},
      {"7,\"a, \r\nb \" junk" + Names(",", 3), 7, {{2, "a, \r\nb "}}},
      {"7,,\"\"" + Names(",", 4), 7, {{2, ""}, {3, ""}}},
      {"7\r\n\r\n a \"b\" c  " + Names("\r\n", 4), 7, {{2, ""}, {3, "a \"b\" c"}}},
      {"7" + Names(",", 2, 24) + "," + std::string("x\0\xFF", 3), 7, {{25, {"x\0\xFF", 3}}}},
      {"7" + Names(",", 2, 24) + ",\r\n", 7, {{25, ""}}},
  };
  for (const Case& tCase : atCase) {
    ConfigValues tExpected;
    tExpected.lIconNumber = tCase.lIconNumber;
    for (std::size_t lName = 2; lName <= 25; ++lName) {
      tExpected.asText[lName - 2] = "n" + std::to_string(lName);
    }
    for (const auto& [lName, sOther] : tCase.asOther) tExpected.asText[lName - 2] = sOther;
    const ConfigValues tFound = ParseConfigText(tCase.sText);
    EXPECT_EQ(tFound.lIconNumber, tExpected.lIconNumber) << tCase.sText;
    EXPECT_EQ(tFound.asText, tExpected.asText) << tCase.sText;
  }
}

TEST(ConfigText, ThatIsNotWholeIsAnError) {
  const std::vector<std::pair<std::string, std::int32_t>> atCase = {
      {"", 62},
      {"  ", 62},
      {"7", 62},
      {"7" + Names("\r\n", 2, 24), 62},
      {"7" + Names("\r\n", 2, 24) + "\r\n", 62},
      {"7" + Names(",", 2, 24) + ",  ", 62},
      {"7" + Names(",", 2, 24) + ",\"cut off", 62},
      {"\r\n7" + Names(","), 13},
      {"7.5" + Names(","), 13},
      {"2147483648" + Names(","), 13},
      {"0x7" + Names(","), 13},
      {"\x7F"
       "ELF\x02\x01\x01",
       13},
      {std::string(1000, '\0'), 13},
  };
  for (const auto& [sText, lNumber] : atCase) {
    try {
      ParseConfigText(sText);
      ADD_FAILURE() << sText;
    } catch (const modALLProcess::RuntimeError& tError) {
      EXPECT_EQ(tError.Number(), lNumber) << sText;
    }
  }
}

}  // namespace
