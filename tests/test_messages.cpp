// Message level file, message form and the stage-to-chain result mappings.
#include <gtest/gtest.h>

#include "debug_msglevel.h"
#include "test_support.h"

namespace {

int LevelFromFile(const std::string& content) {
  zebtest::TempFile f(content);
  zebtest::ScopedEnv env("DML_PATH", f.path().c_str());
  return DynamicMessageLevel();
}

TEST(MessageLevel, AllowedLevelsAreTaken) {
  EXPECT_EQ(LevelFromFile("{\"debug_level\": 1}"), 1);
  EXPECT_EQ(LevelFromFile("{\"debug_level\": 3}"), 3);
  EXPECT_EQ(LevelFromFile("{\"debug_level\": 15}"), 15);
  EXPECT_EQ(LevelFromFile("{\"other\": 1, \"debug_level\": 7}"), 7);
}

TEST(MessageLevel, AnythingElseIsSeven) {
  EXPECT_EQ(LevelFromFile("{\"debug_level\": 2}"), 7);
  EXPECT_EQ(LevelFromFile("{\"debug_level\": 8}"), 7);
  EXPECT_EQ(LevelFromFile("{\"debug_level\": -1}"), 7);
  EXPECT_EQ(LevelFromFile("{\"debug_level\": \"1\"}"), 7);
  EXPECT_EQ(LevelFromFile("{\"level\": 1}"), 7);
  EXPECT_EQ(LevelFromFile("not json"), 7);
  EXPECT_EQ(LevelFromFile(""), 7);
}

TEST(MessageLevel, MissingFileIsSilentSeven) {
  zebtest::ScopedEnv env("DML_PATH", "/nonexistent/zebaudio/level.json");
  std::string out = zebtest::CaptureStdout([] { EXPECT_EQ(DynamicMessageLevel(), 7); });
  EXPECT_EQ(out, "");
}

TEST(MessageLevel, DirectoryIsNoLevelFile) {
  zebtest::ScopedEnv env("DML_PATH", "/");
  std::string out = zebtest::CaptureStdout([] { EXPECT_EQ(DynamicMessageLevel(), 7); });
  EXPECT_EQ(out, "");
}

TEST(MessageLevel, OverlongPathIsCutNotOverrun) {
  std::string longPath(400, 'x');
  zebtest::ScopedEnv env("DML_PATH", longPath.c_str());
  EXPECT_EQ(DynamicMessageLevel(), 7);
}

TEST(MessageForm, TagsPrefixAndGating) {
  auto all = [](int lv) {
    return zebtest::CaptureStdout([lv] {
      ALGO_ERR(lv, "[%s]Fail! e.\t\n", "f");
      ALGO_WRN(lv, "[%s]Warning! w.\t\n", "f");
      ALGO_MSG(lv, "[KOL]Channel: %d\t\n", 2);
    });
  };
  const std::string e = "[ALGO_MSG_ERR] [f]Fail! e.\t\n";
  const std::string w = "[ALGO_MSG_WRN] [f]Warning! w.\t\n";
  const std::string m = "[ALGO_MSG_MSG] [KOL]Channel: 2\t\n";
  EXPECT_EQ(all(7), e + w + m);
  EXPECT_EQ(all(15), e + w + m);
  EXPECT_EQ(all(3), e + w);
  EXPECT_EQ(all(1), e);
  EXPECT_EQ(all(0), "");
  EXPECT_EQ(zebtest::CaptureStdout([] { ALGO_ERR_ALWAYS("[%s]Fail! x.\t\n", "g"); }),
            "[ALGO_MSG_ERR] [g]Fail! x.\t\n");
}

TEST(Counter16, WrapsAndReports) {
  unsigned short c = 65535;
  EXPECT_EQ(Counter16Add(&c, 1), 1);
  EXPECT_EQ(c, 0);
  c = 65400;
  EXPECT_EQ(Counter16Add(&c, 128), 0);
  EXPECT_EQ(c, 65528);
  EXPECT_EQ(Counter16Add(&c, 128), 1);
  EXPECT_EQ(c, 120);
}

}  // namespace
