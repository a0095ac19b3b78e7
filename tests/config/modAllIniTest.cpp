#include <array>
#include <chrono>
#include <deque>
#include <sstream>

#include "config/modAllIni.h"
#include "config/modAllIniLines.h"
#include "disass/RecordingToolkit.h"
#include "platform/Environment.h"
#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using modAllIni::IniFlush;
using modAllIni::IniGetValue;
using modAllIni::IniSetValue;
using platform::FormDesign;

// Each use of the store runs in a process of its own, whose store is fresh.
class Ini : public testing::Test {
 protected:
  Ini() {
    test::SetEnvironment("LOCALAPPDATA", tFolder.Path());
    std::filesystem::create_directory(tFolder.Path("VARNEL"));
  }
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("VARNEL/VARNEL.ini");
};

// Text of a table: "|" stands for CR LF, "/" for LF, "~" for character 0.
std::string Text(std::string_view sTable) {
  std::string sText;
  for (const char bAt : sTable) {
    sText += bAt == '|' ? "\r\n" : std::string(1, bAt == '/' ? '\n' : bAt == '~' ? '\0' : bAt);
  }
  return sText;
}

// The settings in a text of the form "section,key,value;section,key,value;".
std::vector<std::array<std::string, 3>> Settings(const std::string& sText) {
  std::vector<std::array<std::string, 3>> asSetting;
  std::istringstream tText(sText);
  for (std::array<std::string, 3> asNext; std::getline(tText, asNext[0], ',');) {
    std::getline(std::getline(tText, asNext[1], ','), asNext[2], ';');
    asSetting.push_back(asNext);
  }
  return asSetting;
}

TEST_F(Ini, ValuesAreThoseOfTheFirstKeyInTheFirstSection) {
  test::WriteFile(sPath, Text("early=1/[A]| key =  v v /k=a=b/;c=1/#d=1/=e/KEY=upper/key=second/"
                              " [ B ] /k=b/[]/[x/n=~\xFF/  [C]  /empty=/[A]/late=1/[[D]]/k=d"));
  ASSERT_TRUE(modAllIni::IniLoad());
  for (const auto& [sSection, sKey, sValue] :
       Settings("A,key,v v; [A] , key ,v v;A,k,a=b;A,KEY,upper;A,Key,-;a,key,-;A,;c,-;A,c,-;A,#d,-;"
                "A,,-;A,late,-;,early,-;B,k,-;[ B ],k,b;C,empty,;[[D]],k,d;")) {
    EXPECT_EQ(IniGetValue(sSection, sKey, " - "), sValue) << sSection << " " << sKey;
  }
}

// The file as loaded ("-": not loaded), what is set, the file as another program has made it
// meanwhile ("-": the same), and as saved.
const struct {
  const char *sLoaded, *sSet, *sMeanwhile, *sSaved;
} atCase[] = {
    {"-", "A,k,1;", "-", "[A]|k=1"},                    // there was no file
    {"-", "A,k,2;", "[A]/q=1/k=1", "[A]|q=1|k=2"},      // set before the first load
    {"", "A,k,1;B,k,2;", "-", "[A]|k=1|[B]|k=2"},       // new sections at the end
    {"[A]|k=1|q=1", "A,k,2;", "", "[A]|k=2"},           // another emptied the file
    {"[A]|k=1", "A,k,1;A,k,1;", "[A]|k=2", "[A]|k=1"},  // unchanged is set all the same
    {"[A]|k=1", "A,k,2;A,k,3;", "-", "[A]|k=3"},        // the last value counts
    {"k=1|[A]|k=1", "A,k,2;", "-", "k=1|[A]|k=2"},      // a key above all sections
    {"[E]/", ",k,1;A,  ,1;", "-", "[E]/"},              // nothing was set
    {"x|/[A]/q = 1 /", " A , k , 1 ;", "-", "x||[A]|q = 1 ||k=1"},
    {"[A]|k = 0|k=5|[B]|b=1", "A,k,1;A,new,2;", "-", "[A]|k=1|k=5|new=2|[B]|b=1"},
    {"[A]|k=1|q=1", "A,k,2;", "; hi|[A]|q=9|[C]|c=1", "; hi|[A]|q=9|k=2|[C]|c=1"},
    {"[E]|;c|[A]|k=1|[F]|[G]|", "A,k,2;", "-", ";c|[A]|k=2|"},
    {"[B]|;b|b=1|;c", "A,k,2;", "-", "[B]|;b|b=1|;c|[A]|k=2"},
    {"[\xC4]|~\xFF=1", "\xC4,\xE4,\xF6;", "-", "[\xC4]|~\xFF=1|\xE4=\xF6"},
};

const test::ChildCode MERGE([](const test::Arguments& asArgument) {
  const auto& tCase = atCase[std::stoul(asArgument[0])];
  const std::string& sPath = asArgument[1];
  if (*tCase.sLoaded != '-') test::WriteFile(sPath, Text(tCase.sLoaded));
  EXPECT_TRUE(*tCase.sLoaded == '-' || modAllIni::IniLoad());
  for (const auto& [sSection, sKey, sValue] : Settings(tCase.sSet)) {
    EXPECT_TRUE(IniSetValue(sSection, sKey, sValue));
  }
  if (*tCase.sMeanwhile != '-') test::WriteFile(sPath, Text(tCase.sMeanwhile));
  EXPECT_TRUE(IniFlush());
  EXPECT_EQ(test::ReadFile(sPath), Text(tCase.sSaved));
  test::WriteFile(sPath, "other");
  EXPECT_TRUE(IniFlush() && test::ReadFile(sPath) == "other") << "something left to save";
});

TEST_F(Ini, ASaveMergesWhatWasSetHereIntoWhatTheFileHolds) {
  for (std::size_t lCase = 0; lCase < std::size(atCase); ++lCase) {
    std::filesystem::remove(sPath);
    EXPECT_TRUE(test::RunInChild(MERGE, {std::to_string(lCase), sPath})) << atCase[lCase].sSaved;
  }
  modAllIni::IniLines asLine("[A]\n[B]");
  modAllIni::IniDropEmptySections(asLine);
  EXPECT_TRUE(asLine.IsEmptyStore());
}

// The file of a test that fails to be had: in the folder of that name, or held by another opening.
const std::string sTheirs = Text("[A]|k=1|[GENERAL]|theirs=1");

const test::ChildCode HAVE_NO_FILE([](const test::Arguments& asArgument) {
  const auto& sWhere = asArgument[0];
  test::SetEnvironment("LOCALAPPDATA", asArgument[1]);
  const std::string sSlash(1, platform::PATH_SEPARATOR);
  const std::string sPath = asArgument[1] + sSlash + "VARNEL" + sSlash + "VARNEL.ini";
  const auto hHeld = sWhere == "held" ? platform::OpenExclusiveFile(sPath) : 0;
  ASSERT_TRUE(hHeld != 0 || test::GiveUpRights()) << "root may write anything";
  recording::Toolkit tToolkit;
  tToolkit.apHandling = {std::make_shared<recording::Form>(tToolkit, FormDesign{}, nullptr)};
  tToolkit.Answer(1, [] { EXPECT_EQ(IniGetValue("A", "k", "nested"), "nested"); });
  EXPECT_EQ(IniGetValue("A", "k", " d ") + IniGetValue("A", "k", "e"), "de") << sWhere;
  std::string sMessage = "Unable to load configuration file";
  if (sWhere == "read-only") sMessage += "\r\n\r\n" + sPath + "\r\nIt is read-only";
  if (sWhere == "folder") {
    sMessage += "\r\n\r\n" + sPath + "\r\n";
    sMessage += platform::PATH_SEPARATOR == '/' ? "Is a directory" : "Access denied";
  }
  const recording::Box tBox = {sMessage, 48, "Varnel - Error"};
  EXPECT_EQ(tToolkit.TakeBoxes(), std::vector{tBox}) << sWhere;
  IniSetValue("GENERAL", "ours", "2");
  EXPECT_EQ(IniGetValue("GENERAL", "ours", "d"), "2");
  tToolkit.bEndingProgram = true;  // which sixteen windows must not hold up each for itself
  const auto tStart = std::chrono::steady_clock::now();
  for (int iWindow = 0; iWindow < 16; ++iWindow) EXPECT_FALSE(IniFlush());
  EXPECT_LT(std::chrono::steady_clock::now() - tStart, std::chrono::seconds(4));
  if (hHeld == 0) return;
  EXPECT_EQ(platform::ReadExclusiveFile(hHeld), sTheirs);
  platform::CloseSystemHandle(hHeld);
  EXPECT_TRUE(IniFlush());
  EXPECT_EQ(test::ReadFile(sPath), sTheirs + "\r\nours=2");
  EXPECT_EQ(IniGetValue("A", "k", "d"), "1");
});

TEST_F(Ini, AFileThatCannotBeHadCostsOneMessageAndNoSetting) {
  using std::filesystem::perms;
  std::filesystem::create_directories(tFolder.Path("folder/VARNEL/VARNEL.ini"));
  std::filesystem::permissions(tFolder.Path(), perms{0755});
  std::deque<test::ChildProcess> atChild;
  for (const auto& sWhere : {"folder", "missing", "held", "read-only"}) {
    if (*sWhere == 'r' && platform::PATH_SEPARATOR != '/') break;  // under Wine root may write it
    const std::string sFile = tFolder.Path(sWhere) + "/VARNEL/VARNEL.ini";
    if (*sWhere == 'r' || *sWhere == 'h') {
      std::filesystem::create_directories(tFolder.Path(sWhere) + "/VARNEL");
      test::WriteFile(sFile, sTheirs);
      std::filesystem::permissions(sFile, *sWhere == 'r' ? perms{0444} : perms{0644});
    }
    atChild.emplace_back(HAVE_NO_FILE, test::Arguments{sWhere, tFolder.Path(sWhere)});
  }
  for (auto& tChild : atChild) EXPECT_TRUE(tChild.Succeeded());
}

const test::ChildCode SAVE_HUGE([](const test::Arguments&) {
  EXPECT_EQ(IniGetValue("A", "k", "d"), "d");
  EXPECT_TRUE(IniSetValue("A", "k", "1") && IniFlush());
});

TEST_F(Ini, HugeFilesAreSavedWhole) {
  std::string sSections, sKept, sLines = "k=";
  sLines.append(40'000'000, ' ').append("[\r\n");
  for (int iLine = 0; iLine < 200000; ++iLine) {
    sSections += "[]\r\n[s]\r\n;", sKept += "[]\r\n;";
    sLines.append(298, 'x') += "\r\n";
  }
  for (const auto& [psText, psKept] : {std::pair(&sSections, &sKept), {&sLines, &sLines}}) {
    test::WriteFile(sPath, *psText);
    EXPECT_TRUE(test::RunInChild(SAVE_HUGE));
    EXPECT_TRUE(test::ReadFile(sPath) == *psKept + "\r\n[A]\r\nk=1");
  }
}

}  // namespace
