#include "batch_jobs.h"

#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "commands.h"

namespace cli {

namespace {

constexpr char kEach[] = "each";

class JobLine {
 public:
  JobLine(const std::string& strFile, unsigned uLine) : m_strFile(strFile), m_uLine(uLine) {}

  [[noreturn]] void Fail(const std::string& strText) const {
    throw CommandError(kBadInput, m_strFile + ":" + std::to_string(m_uLine) + ": " + strText);
  }

  std::vector<std::string> Words(const std::string& strLine) const {
    std::vector<std::string> words;
    std::string strWord;
    bool bWord = false;
    char cQuote = 0;
    for (std::size_t u = 0; u < strLine.size(); ++u) {
      const char c = strLine[u];
      if (c == '\\' && cQuote != '\'' && u + 1 < strLine.size()) {
        strWord += strLine[++u];
        bWord = true;
      } else if (cQuote != 0) {
        if (c == cQuote) {
          cQuote = 0;
        } else {
          strWord += c;
        }
      } else if (c == '"' || c == '\'') {
        cQuote = c;
        bWord = true;
      } else if (c == ' ' || c == '\t' || c == '\r') {
        if (bWord) words.push_back(strWord);
        strWord.clear();
        bWord = false;
      } else if (c == '#' && !bWord) {
        break;
      } else {
        strWord += c;
        bWord = true;
      }
    }
    if (cQuote != 0)
      Fail(std::string("a quote ") + cQuote + " is not closed; a second one would be right");
    if (bWord) words.push_back(strWord);
    return words;
  }

  // The name of this program in front is one too many, but what people write.
  void CheckCommand(std::vector<std::string>* pWords) const {
    if (!pWords->empty() && pWords->front() == "zu") pWords->erase(pWords->begin());
    if (pWords->empty()) Fail("no command; \"check left.prj\" would be right");
    if (pWords->front() == "batch") Fail("a batch does not start another; put its lines here");
    for (const Command& command : Commands()) {
      const std::string strName = command.szName;
      if (strName.substr(0, strName.find(' ')) == pWords->front()) return;
    }
    Fail("\"" + pWords->front() + "\" is no command; zu --help lists them");
  }

 private:
  std::string m_strFile;
  unsigned m_uLine;
};

std::vector<std::string> FilesOf(const std::string& strPattern) {
  glob_t found = {};
  std::vector<std::string> files;
  if (glob(strPattern.c_str(), 0, nullptr, &found) == 0) {
    files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  std::sort(files.begin(), files.end());
  return files;
}

std::string Filled(std::string strWord, const std::string& strFile) {
  const std::filesystem::path path = strFile;
  const std::string strFolder = path.has_parent_path() ? path.parent_path().string() : ".";
  const std::pair<const char*, std::string> places[] = {{"{}", strFile},
                                                        {"{name}", path.filename().string()},
                                                        {"{stem}", path.stem().string()},
                                                        {"{folder}", strFolder}};
  std::string strResult;
  for (std::size_t u = 0; u < strWord.size();) {
    std::size_t uTaken = 0;
    for (const auto& [szPlace, strText] : places) {
      const std::string strPlace = szPlace;
      if (strWord.compare(u, strPlace.size(), strPlace) != 0) continue;
      strResult += strText;
      uTaken = strPlace.size();
    }
    if (uTaken == 0) strResult += strWord[u];
    u += std::max<std::size_t>(uTaken, 1);
  }
  return strResult;
}

void AddEach(const JobLine& line, const BatchJob& job, std::vector<BatchJob>* pJobs) {
  std::vector<std::string> words = job.words;
  if (words.size() < 2 || words[1].back() != ':') {
    line.Fail("\"each PATTERN: COMMAND ...\" would be right");
  }
  const std::string strPattern = words[1].substr(0, words[1].size() - 1);
  words.erase(words.begin(), words.begin() + 2);
  line.CheckCommand(&words);
  const std::vector<std::string> files = FilesOf(strPattern);
  if (files.empty()) line.Fail("no file is called " + strPattern);
  if (std::none_of(words.begin(), words.end(),
                   [](const std::string& str) { return Filled(str, "/a/b.c") != str; })) {
    line.Fail("no {} among the words: every file would have the same job");
  }
  std::map<std::string, int> stems;
  for (const std::string& strFile : files) ++stems[std::filesystem::path(strFile).stem().string()];
  for (std::size_t u = 0; u < files.size(); ++u) {
    BatchJob each = job;
    const std::string strStem = std::filesystem::path(files[u]).stem().string();
    each.strName += "-" + (stems[strStem] > 1 ? std::to_string(u + 1) + "-" : "") + strStem;
    each.words.clear();
    for (const std::string& strWord : words) each.words.push_back(Filled(strWord, files[u]));
    pJobs->push_back(each);
  }
}

}  // namespace

std::vector<BatchJob> ReadBatchJobs(const std::string& strPath) {
  std::ifstream stream(strPath);
  if (!stream || std::filesystem::is_directory(strPath)) {
    throw CommandError(kBadInput,
                       strPath + ": cannot be read; a file of command lines would be right");
  }
  std::vector<BatchJob> jobs;
  BatchJob job;
  for (std::string strLine; std::getline(stream, strLine);) {
    const JobLine line(strPath, ++job.uLine);
    if (strLine.find('\0') != std::string::npos)
      line.Fail("binary data; a text file would be right");
    job.words = line.Words(strLine);
    if (job.words.empty()) continue;
    const std::string strNumber = std::to_string(job.uLine);
    job.strName = std::string(4 - std::min<std::size_t>(4, strNumber.size()), '0') + strNumber;
    if (job.words.front() == kEach) {
      AddEach(line, job, &jobs);
    } else {
      line.CheckCommand(&job.words);
      jobs.push_back(job);
    }
  }
  if (jobs.empty()) throw CommandError(kBadInput, strPath + ": no command line in it");
  return jobs;
}

std::string BatchLine(const std::vector<std::string>& words) {
  std::string strLine;
  for (const std::string& strWord : words) {
    if (!strLine.empty()) strLine += ' ';
    const bool bPlain = !strWord.empty() &&
                        strWord.find_first_of(" \t\"'\\#$&|;<>()*?[]{}`!~\n") == std::string::npos;
    if (bPlain) {
      strLine += strWord;
      continue;
    }
    strLine += '\'';
    for (const char c : strWord) strLine += c == '\'' ? "'\\''" : std::string(1, c);
    strLine += '\'';
  }
  return strLine;
}

}  // namespace cli
