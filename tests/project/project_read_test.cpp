// Whole project files: those at hand, and files that are none.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/project_file.h"
#include "tests/support/test.h"
#include "zu/project/project.h"

namespace {

const std::filesystem::path kSamples = ZU_SOURCE_DIR "/samples";

// The same records as the readers of the single blocks give, and nothing to find fault with.
TEST(ProjectRead, ReadsEverySampleWithoutAnError) {
  int iFiles = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSamples)) {
    if (entry.path().extension() != ".prj") continue;
    SCOPED_TRACE(entry.path());
    ++iFiles;
    ZuProject project;
    EXPECT_TRUE(project.Read(entry.path().c_str()));
    ProjectFile reference(entry.path());
    EXPECT_EQ(project.PhotoList().Count(), reference.Photos().Count());
    for (const ZuPhoto* p = reference.Photos().First(); p != nullptr; p = p->Next()) {
      const ZuPointList& expected = reference.Pixels(p->GetId());
      const ZuPointList* const pFound = project.FindMeasurements(p->GetId());
      ASSERT_TRUE(pFound != nullptr && pFound->Count() == expected.Count());
      EXPECT_EQ(pFound->Last()->m_dX, expected.Last()->m_dX);
      EXPECT_STREQ(project.PhotoList().Find(p->GetId())->GetName(), p->GetName());
    }
  }
  EXPECT_GE(iFiles, 5);
}

TEST(ProjectRead, TellsWhatIsNoProject) {
  ZuProject project;
  EXPECT_FALSE(project.Read("no such file"));
  EXPECT_FALSE(project.IsForeign());
  EXPECT_EQ(project.GetFindings().GetErrorCount(), 1u);
  EXPECT_FALSE(project.Read((kSamples / "chessboard/board.coo").c_str()));
  EXPECT_TRUE(project.IsForeign());
  std::istringstream empty("");
  EXPECT_FALSE(project.Read(empty));
  EXPECT_TRUE(project.IsForeign());
  // What was read before is gone, and another reading starts anew.
  EXPECT_TRUE(project.Read((kSamples / "chessboard/left.prj").c_str()));
  EXPECT_TRUE(project.Read((kSamples / "older/facade.prj").c_str()));
  EXPECT_EQ(project.PhotoList().Count(), 1);
}

}  // namespace
