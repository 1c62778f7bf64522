// The examples on the pages of docs/files are what the readers take.
#include <fstream>

#include "tests/support/file_readers.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"

namespace {

// The fenced blocks of a page.
std::vector<std::string> Examples(const std::string& strPage) {
  std::ifstream stream(ZU_SOURCE_DIR "/docs/files/" + strPage);
  std::vector<std::string> blocks;
  bool bInside = false;
  for (std::string strLine; std::getline(stream, strLine);) {
    if (strLine.compare(0, 3, "```") == 0) {
      bInside = !bInside;
      if (bInside) blocks.emplace_back();
    } else if (bInside) {
      blocks.back() += strLine + "\n";
    }
  }
  return blocks;
}

TEST(FilePages, ExamplesAreRead) {
  for (const auto& [szPage, uExample, strReader, szBefore, szBehind, szTold] :
       Cases<const char*, std::size_t, std::string, const char*, const char*, const char*>{
           {"camera.md", 0, "camera file", "", "", "-0.000285451769"},
           {"camera.md", 1, "simple camera file", "", "", " 5.25 "},
           {"reseau.md", 0, "reseau file", "", "", ""},
           {"reseau.md", 1, "digital camera file", "", "", ""},
           {"project.md", 0, "project file", "", "", "374.336515"},
           {"project.md", 1, "project file", "PHOTO { PHOTOID 1 \"a\"\n", "}", "4 "},
           {"local_system.md", 0, "project file", "", "", "5.25"},
           {"trafo2d.md", 0, "project file", "TRAFO {", "}", "2 "},
           {"gsi.md", 0, "GSI file", "", "", "2000"}}) {
    SCOPED_TRACE(szPage);
    const auto examples = Examples(szPage);
    ASSERT_LT(uExample, examples.size());
    const TempFile file(szBefore + examples[uExample] + szBehind);
    for (const FileReader& reader : FileReaders()) {
      if (reader.szName != strReader) continue;
      const auto pRead = reader.make();
      pRead->Read(file.Path());
      ASSERT_FALSE(pRead->Tell().empty());
      EXPECT_NE(pRead->Tell()[0].find(szTold), std::string::npos) << pRead->Tell()[0];
    }
  }
}

}  // namespace
