#include "run_program.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <list>
#include <map>
#include <new>
#include <utility>

#include "commands.h"
#include "help_format.h"
#include "nearest_word.h"
#include "progress_line.h"
#include "report_output.h"
#include "table_decimals.h"
#include "zu/version.h"

namespace cli {
namespace {

struct Selected {
  std::string strName;
  Runner runner;
  std::vector<std::string> arguments;  // the name and what stands behind it
  std::vector<Options::OutputOption> outputs;
  Context::Switches switches;
  const CLI::Option* pUnit = nullptr;  // --unit, where a command has it
  const CLI::Option* pDecimals = nullptr;
  ReportFiles reports;  // --report and --plot, where it computes
  std::string strSummary;
};

ExitCode Complain(ExitCode eCode, const std::string& strText) {
  ClearProgress();
  if (!strText.empty()) std::cerr << strText << std::endl;
  return eCode;
}

// The group "cloud" of "cloud info", made at its first command; the program itself for "plane".
CLI::App* ParentOf(const std::string& strName, CLI::App* pProgram) {
  const size_t uBlank = strName.find(' ');
  if (uBlank == std::string::npos) return pProgram;
  const std::string strGroup = strName.substr(0, uBlank);
  const auto found = pProgram->get_subcommands(
      [&strGroup](const CLI::App* pApp) { return pApp->get_name() == strGroup; });
  if (!found.empty()) return found.front();
  CLI::App* pGroup = pProgram->add_subcommand(strGroup, strGroup + " commands");
  pGroup->require_subcommand(1);
  return pGroup;
}

void AddCommand(const Command& command, CLI::App* pProgram, Selected* pSelected) {
  const std::string strName = command.szName;
  CLI::App* pApp = ParentOf(strName, pProgram)
                       ->add_subcommand(strName.substr(strName.find(' ') + 1), command.szSummary);
  Options options(pApp, &pSelected->switches.bTolerant);
  Runner runner = command.pfnDefine(options);
  if (HasReport(strName)) AddReportOptions(options, &pSelected->reports);
  Context::Switches& switches = pSelected->switches;
  options.Flag("--json", &switches.bJson, "print one JSON object instead of text");
  options.Flag("--quiet", &switches.bQuiet, "leave out everything but the result");
  options.Flag("--strict", &switches.bStrict, options.StrictHelp().c_str());
  std::string strSchema = strName;
  std::replace(strSchema.begin(), strSchema.end(), ' ', '_');
  pApp->footer(std::string("Example:\n") + command.szExample +
               "\n\nKeys of --json: share/zu/schema/" + strSchema + ".json");
  pApp->callback([pSelected, pApp, strName, runner, strSummary = std::string(command.szSummary),
                  outputs = options.Outputs()] {
    pSelected->strSummary = strSummary;
    pSelected->strName = "zu " + strName;
    pSelected->runner = runner;
    pSelected->outputs = outputs;
    pSelected->pUnit = pApp->get_option_no_throw("--unit");
    pSelected->pDecimals = pApp->get_option_no_throw("--decimals");
  });
}

// The deepest command that the arguments name, for messages.
CLI::App* DeepestParsed(CLI::App* pApp) {
  while (!pApp->get_subcommands().empty()) pApp = pApp->get_subcommands().front();
  return pApp;
}

std::string FullName(const CLI::App* pApp) {
  std::string strName = pApp->get_name();
  while ((pApp = pApp->get_parent()) != nullptr) strName = pApp->get_name() + " " + strName;
  return strName;
}

// "; did you mean transform?"
std::string DidYouMean(const std::string& strText, const std::vector<std::string>& words) {
  const std::string strWord = NearestWord(strText, words);
  return strWord.empty() ? "" : "; did you mean " + strWord + "?";
}

std::vector<std::string> CommandNames(const CLI::App* pApp) {
  std::vector<std::string> names;
  for (const CLI::App* p : pApp->get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(p->get_name());
  }
  return names;
}

std::vector<std::string> OptionNames(const CLI::App* pApp) {
  std::vector<std::string> names;
  for (const CLI::Option* p : pApp->get_options()) {
    for (const std::string& strName : p->get_lnames()) names.push_back("--" + strName);
  }
  return names;
}

// Of an option that nobody knows, without its value.
std::string NearestOption(const CLI::App* pApp) {
  for (const std::string& strText : pApp->remaining()) {
    const std::string strName = strText.substr(0, strText.find('='));
    if (strName.size() > 2 && strName[0] == '-') return DidYouMean(strName, OptionNames(pApp));
  }
  return "";
}

ExitCode ComplainOfUsage(const CLI::App* pApp, std::string strText) {
  const std::string strName = FullName(pApp);
  for (char& c : strText) c = c == '\n' ? ' ' : c;
  if (pApp->get_require_subcommand_min() > 0) {
    const std::string strGiven = pApp->remaining_size() == 0 ? "" : pApp->remaining().front();
    strText = strGiven.empty() ? "a command is missing"
                               : "\"" + strGiven + "\" is no command or option" +
                                     DidYouMean(strGiven, CommandNames(pApp));
    if (strText.back() == '?') return Complain(kUsage, strName + ": " + strText);
    return Complain(kUsage, strName + ": " + strText + ", " + strName + " --help lists them");
  }
  strText += NearestOption(pApp);
  return Complain(kUsage, strName + ": " + strText + "\n" + strName +
                              " --help shows the options and an example");
}

ExitCode RunCommand(const Selected& selected) {
  CheckOutputs(Options::GivenOutputs(selected.outputs), selected.switches.bJson);
  CheckReportEndings(selected.reports);
  Context::Switches switches = selected.switches;
  switches.bReport = selected.reports.IsAsked();
  Context context(selected.strName, switches);
  if (selected.pUnit != nullptr && selected.pUnit->count() > 0) {
    context.SetUnit(selected.pUnit->as<std::string>());
  }
  if (selected.pDecimals != nullptr && selected.pDecimals->count() > 0) {
    TellTableDecimals(selected.pDecimals->as<int>());
  }
  const auto iWords = std::count(selected.strName.begin(), selected.strName.end(), ' ');
  context.SetArguments({selected.arguments.begin() + iWords, selected.arguments.end()});
  ExitCode eCode = kGood;
  {
    const WorkLine line(selected.strName, context.IsQuiet());
    const LibraryProgress progress(context.IsQuiet());
    eCode = selected.runner(context);
  }
  if (switches.bReport) {
    WriteReports(selected.reports, context.Result(eCode), selected.strSummary, context);
  }
  context.Finish(eCode);
  return eCode;
}

ExitCode RunProgram(int argc, char** argv) {
  CLI::App program("Close-range photogrammetry on the command line.", "zu");
  program.formatter(MakeHelpFormatter());
  program.require_subcommand(1);
  program.set_version_flag("--version", std::string("zu ") + ZuVersion());
  program.footer(
      "zu help COMMAND shows the options of a command and one worked example; commands that "
      "compute take --report FILE.html and --plot FILE.svg, .pdf or .png. "
      "zu examples COMMAND copies small data to try it on.");
  Selected selected;
  for (const Command& command : Commands()) AddCommand(command, &program, &selected);

  // "zu help cloud info" is "zu cloud info --help".
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && arguments.front() == "help") {
    arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
  }
  selected.arguments = arguments;
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
  try {
    program.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    PrintAndClose(program.help());
    return kGood;
  } catch (const CLI::CallForVersion& version) {
    PrintAndClose(std::string(version.what()) + "\n");
    return kGood;
  } catch (const CLI::ParseError& error) {
    return ComplainOfUsage(DeepestParsed(&program), error.what());
  }
  return RunCommand(selected);
}

}  // namespace

// Unfinished files are removed by the destructors before the exception comes here.
ExitCode RunGuarded(int argc, char** argv) {
  try {
    return RunProgram(argc, argv);
  } catch (const CommandError& error) {
    return Complain(error.Code(), error.what());
  } catch (const std::bad_alloc&) {
    return Complain(kBadInput, "zu: out of memory, the input is too large for this machine");
  } catch (const std::exception& error) {
    return Complain(kBadInput, std::string("zu: ") + error.what());
  }
}

}  // namespace cli
