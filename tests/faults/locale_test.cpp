// A process that writes numbers with a comma and groups of digits reads and writes the same bytes,
// through every reader and every writer, and finds its locale as it left it.
#include <clocale>
#include <filesystem>
#include <locale>
#include <map>

#include "tests/support/file_readers.h"
#include "tests/support/file_writers.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"

namespace {

// Numbers as Germans write them.
class German : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Such a locale of the run-time: one that is installed, or one made for this test.
std::string CommaLocale() {
  const auto hasComma = [](const char* szName) {
    return std::setlocale(LC_ALL, szName) != nullptr && *std::localeconv()->decimal_point == ',';
  };
  for (const char* szName : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8"}) {
    if (hasComma(szName)) return szName;
  }
  static const auto folder = std::filesystem::temp_directory_path() / "zu-test-locale";
  const std::string strMake = "mkdir -p " + folder.string() + " && localedef -i de_DE -f UTF-8 " +
                              folder.string() + "/de_DE.UTF-8 >/dev/null 2>&1";
  if (std::system(strMake.c_str()) != 0) return "";
  setenv("LOCPATH", folder.c_str(), 1);
  const bool bMade = hasComma("de_DE.UTF-8");
  std::filesystem::remove_all(folder);
  return bMade ? "de_DE.UTF-8" : "";
}

// Everything that the readers read and the writers write.
std::map<std::string, Lines> RunAll() {
  std::map<std::string, Lines> all;
  for (const FileReader& reader : FileReaders()) {
    const TempFile file(reader.sample());
    const auto pRead = reader.make();
    pRead->Read(file.Path());
    all[std::string("read ") + reader.szName] = pRead->Tell();
    std::setlocale(LC_ALL, nullptr);
  }
  for (const FileWriter& writer : FileWriters()) {
    const TempFile file;
    writer.write(file.Path());
    all[std::string("write ") + writer.szName] = {file.Read()};
  }
  return all;
}

TEST(Locale, HasNoSayInAnyFile) {
  const auto expected = RunAll();
  const std::locale former = std::locale::global(std::locale(std::locale::classic(), new German));
  const std::string strLocale = CommaLocale();
  const std::string strSet = std::setlocale(LC_ALL, nullptr);
  const auto found = RunAll();
  const std::string strLeft = std::setlocale(LC_ALL, nullptr);
  std::locale::global(former);
  std::setlocale(LC_ALL, "C");
  for (const auto& [strName, lines] : expected) EXPECT_EQ(found.at(strName), lines) << strName;
  EXPECT_EQ(strLeft, strSet);
  if (strLocale.empty()) GTEST_SKIP() << "no locale with a decimal comma, and no localedef";
}

}  // namespace
