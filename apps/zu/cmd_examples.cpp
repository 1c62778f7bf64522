// zu examples: small real data to try a command on, and the command lines to type.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>

#include "commands.h"
#include "help_format.h"
#include "nearest_word.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr char kSamples[] = "samples/";

struct Values {
  std::vector<std::string> words;
  std::string strFolder = "zu-examples";
};

// Beside the program as it is installed, or above it in a build tree. Throws CommandError.
fs::path SamplesFolder() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  std::vector<fs::path> places = {program.parent_path().parent_path() / "share/zu/samples"};
  for (fs::path above = program.parent_path(); above.has_relative_path();
       above = above.parent_path()) {
    places.push_back(above / "samples");
  }
  for (const fs::path& place : places) {
    if (fs::exists(place / "datum/local.coo", error)) return place;
  }
  throw CommandError(kBadInput, "the sample files are not there: " + places.front().string() +
                                    " would be their place\nan installation brings them along");
}

// The command lines of an example, those that go on in one.
std::vector<std::string> LinesOf(const Command& command) {
  std::vector<std::string> lines;
  std::istringstream text(command.szExample);
  bool bGoesOn = false;
  for (std::string strLine; std::getline(text, strLine);) {
    if (!bGoesOn && strLine.compare(0, 2, "  ") != 0) continue;
    strLine.erase(0, strLine.find_first_not_of(' '));
    const bool bMore = strLine.back() == '\\' || strLine.back() == '|';
    if (strLine.back() == '\\') strLine.pop_back();
    if (bGoesOn) {
      lines.back() += strLine;
    } else {
      lines.push_back(strLine);
    }
    bGoesOn = bMore;
  }
  return lines;
}

// The folders of samples that command lines name: "datum".
void AddFolders(const std::string& strLine, std::set<std::string>* pFolders) {
  for (std::size_t u = strLine.find(kSamples); u != std::string::npos;
       u = strLine.find(kSamples, u + 1)) {
    const std::size_t uName = u + sizeof(kSamples) - 1;
    pFolders->insert(strLine.substr(uName, strLine.find_first_of("/ ", uName) - uName));
  }
}

std::vector<const Command*> ChosenOf(const Values& values) {
  std::string strName;
  for (const std::string& strWord : values.words) {
    strName += (strName.empty() ? "" : " ") + strWord;
  }
  std::vector<const Command*> chosen;
  std::vector<std::string> names;
  for (const Command& command : Commands()) {
    const std::string strCommand = command.szName;
    names.push_back(strCommand);
    const bool bGroup = strCommand.compare(0, strName.size() + 1, strName + ' ') == 0;
    if (strName.empty() || strCommand == strName || bGroup) chosen.push_back(&command);
  }
  if (!chosen.empty()) return chosen;
  const std::string strNearest = NearestWord(strName, names);
  throw CommandError(kUsage, "zu examples: \"" + strName + "\" is no command" +
                                 (strNearest.empty() ? ", zu --help lists them"
                                                     : "; did you mean " + strNearest + "?"));
}

// Files that are there stay as they are. Throws CommandError.
void CopyFolder(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::create_directories(to, error);
  if (!error) {
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::skip_existing, error);
  }
  if (!error) return;
  throw CommandError(kCannotWrite, to.string() + ": " + error.message() +
                                       "; -o FOLDER names a folder that can be written");
}

ExitCode Run(const Values& values, Context& context) {
  const std::vector<const Command*> chosen = ChosenOf(values);
  const fs::path samples = SamplesFolder(), folder = values.strFolder;
  std::set<std::string> folders;
  Json commands = Json::array();
  context.Text() << "cd " << values.strFolder << '\n';
  for (const Command* pCommand : chosen) {
    context.Text() << "\n# zu " << pCommand->szName << ": " << pCommand->szSummary << '\n';
    for (const std::string& strLine : LinesOf(*pCommand)) {
      AddFolders(strLine, &folders);
      context.Text() << strLine << '\n';
      commands.push_back(strLine);
    }
  }
  for (const std::string& strFolder : folders) {
    CopyFolder(samples / strFolder, folder / "samples" / strFolder);
  }
  context.Root()["folder"] = values.strFolder;
  context.Root()["commands"] = std::move(commands);
  return kGood;
}

}  // namespace

Runner DefineExamples(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.OptionalPositionals("COMMAND", &pValues->words,
                              "a command, also of two words, or a group; all without");
  options.Option("-o,--output", "FOLDER", &pValues->strFolder,
                 "folder that gets the files, zu-examples without; made where it is missing");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
