// Folders with files of every kind, links in circles, and what cannot be read.
#include "zu/project/detect_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

class Folder {
 public:
  Folder() {
    std::string strName = (fs::temp_directory_path() / "zu_detect_XXXXXX").string();
    m_path = mkdtemp(strName.data());
  }
  ~Folder() { fs::remove_all(m_path); }
  void Write(const std::string& strName, const std::string& strText) const {
    fs::create_directories((m_path / strName).parent_path());
    std::ofstream(m_path / strName, std::ios::binary) << strText;
  }
  const fs::path& Path() const { return m_path; }

 private:
  fs::path m_path;
};

}  // namespace

TEST(DetectFolder, TellsWhatBelongsTogether) {
  const Folder folder;
  folder.Write("house.prj",
               "PHOTO { PHOTOID 1 \"c:\\pictures\\A.JPG\" ORIENTED 1 RESEAUFILE \"frame.txt\" }\n"
               "PHOTO { PHOTOID 2 \"b.jpg\" RESEAUFILE \"TYPE\" }\n"
               "PHOTO { PHOTOID 3 \"b.jpg\" }\n");
  folder.Write("house.coo", "1 2.5 3.5 4.5\n2 3 4 5\n");
  folder.Write("frame.txt", "\"f\" { -3 -2 3 2 } { 1 -2 3 -1 } { 1 0 0 0 }\n");
  folder.Write("far/a.jpg", "\xFF\xD8\xFF\xE0 far");
  folder.Write("far/further/a.jpg", "\xFF\xD8\xFF\xE0 further");
  folder.Write("notes.md", "Words of no kind.\n");
  fs::create_directory_symlink(folder.Path(), folder.Path() / "far" / "circle");
  fs::create_symlink("nowhere", folder.Path() / "broken");
  ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);

  ZuFolder found;
  ASSERT_TRUE(ZuDetectFolder(folder.Path().c_str(), &found));
  EXPECT_TRUE(found.m_bComplete);
  EXPECT_EQ(found.m_iLoops, 1);
  const char* const names[] = {"far/a.jpg", "far/further/a.jpg", "frame.txt",
                               "house.coo", "house.prj",         "notes.md"};
  const eZuvoFile kinds[] = {eZuvoFileUnknown,    eZuvoFileUnknown, eZuvoFileReseau,
                             eZuvoFileCoordinate, eZuvoFileProject, eZuvoFileUnknown};
  ASSERT_EQ(found.m_files.size(), 6U);
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(found.m_files[i].m_strPath, names[i]);
    EXPECT_EQ(found.m_files[i].m_eKind, kinds[i]) << names[i];
  }
  ASSERT_EQ(found.m_projects.size(), 1U);
  const ZuFolderProject& project = found.m_projects[0];
  EXPECT_EQ(project.m_uFile, 4U);
  EXPECT_EQ(project.m_iPhotos, 3);
  EXPECT_EQ(project.m_iOriented, 1);
  ASSERT_EQ(project.m_needs.size(), 3U);
  EXPECT_EQ(project.m_needs[0].m_iFile, 0);  // the nearer of both
  EXPECT_EQ(project.m_needs[1].m_iFile, 2);
  EXPECT_TRUE(project.m_needs[1].m_bReseau);
  EXPECT_EQ(project.m_needs[2].m_strName, "b.jpg");
  EXPECT_EQ(project.m_needs[2].m_iFile, -1);
  EXPECT_EQ(project.m_sameName, std::vector<size_t>{3});
  EXPECT_EQ(found.Strangers(), std::vector<size_t>{5});
}

TEST(DetectFolder, IsBounded) {
  const Folder folder;
  for (int i = 0; i < 20; ++i) folder.Write("d/e/" + std::to_string(i), "x");
  ZuFolder found;
  ZuFolderLimits limits;
  limits.m_uFiles = 10;
  ASSERT_TRUE(ZuDetectFolder(folder.Path().c_str(), &found, limits));
  EXPECT_FALSE(found.m_bComplete);
  EXPECT_LE(found.m_files.size(), 10U);
  limits = ZuFolderLimits();
  limits.m_iDepth = 1;
  ASSERT_TRUE(ZuDetectFolder(folder.Path().c_str(), &found, limits));
  EXPECT_FALSE(found.m_bComplete);
  EXPECT_TRUE(found.m_files.empty());
  folder.Write("broken.prj", "PHOTO { PHOTOID 1 \"a");
  ASSERT_TRUE(ZuDetectFolder(folder.Path().c_str(), &found));
  ASSERT_EQ(found.m_projects.size(), 1U);
  EXPECT_FALSE(ZuDetectFolder("no such folder", &found));
  EXPECT_FALSE(ZuDetectFolder((folder.Path() / "broken.prj").c_str(), &found));
  EXPECT_FALSE(ZuDetectFolder(nullptr, &found));
  EXPECT_FALSE(ZuDetectFolder("", &found));
}
