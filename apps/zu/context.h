// What a running command writes to. Nothing leaves the program before the command has succeeded:
// then the result goes to standard output as text or JSON, and only when all of it arrived do the
// result files get their names.
#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "exit_code.h"
#include "json_text.h"
#include "output_file.h"

namespace cli {

struct CommandReport;

class Context {
 public:
  // The options that every command has; tolerant those alone that read points.
  struct Switches {
    bool bJson = false;
    bool bQuiet = false;
    bool bStrict = false;
    bool bTolerant = false;
    bool bReport = false;  // --report or --plot
  };

  // `strCommand` is the name in messages ("zu plane").
  Context(std::string strCommand, const Switches& switches);

  ~Context();

  // The name in messages, and the arguments behind it as they were given.
  const std::string& Command() const { return m_strCommand; }
  const std::vector<std::string>& Arguments() const { return m_arguments; }
  void SetArguments(std::vector<std::string> arguments) { m_arguments = std::move(arguments); }
  // The command line to type next: the same with a further value of a list option, quoted for a
  // shell.
  std::string CommandWith(const std::string& strOption, const std::string& strValue) const;

  bool IsJson() const { return m_switches.bJson; }
  // The result object is needed: printed, or shown in a report.
  bool WantsRoot() const { return m_switches.bJson || m_switches.bReport; }
  bool WantsReport() const { return m_switches.bReport; }
  bool IsQuiet() const { return m_switches.bQuiet; }
  // Input with a warning is refused.
  bool IsStrict() const { return m_switches.bStrict; }
  // Lines that are no points are left out.
  bool IsTolerant() const { return m_switches.bTolerant; }

  // The result as text; not printed under --json.
  std::ostream& Text() { return m_text; }
  // The result as JSON object; printed under --json only. Keys keep their order. Finish puts the
  // keys of every command around them: zu_version, command, status, status_text and unit in front,
  // warnings behind. No command writes these itself.
  Json& Root() { return m_root; }
  // What the report shows beside the object (report_output.h); used where WantsReport.
  CommandReport& Report();
  // The printed text so far.
  std::string PrintedText() const { return m_text.str(); }

  // A result that is worse than its exit code tells: `iStatus` is the estimate's own number, not 0.
  // Without it, status is the exit code.
  void SetStatus(int iStatus, const std::string& strText);
  // Unit of the coordinates and lengths of the result, where it is known. The first one told
  // counts.
  void SetUnit(const std::string& strUnit);

  // A result file, to be filled before the command returns. Throws CommandError if it cannot be
  // made. The reference holds until the end of the run.
  OutputFile& NewOutput(const std::string& strPath);

  // One line on standard error, with the command's name in front, not under --quiet; and an entry
  // of "warnings" of the JSON object.
  void Warn(const std::string& strText) const;
  // One line on standard error of what was found in an input; not under --quiet.
  void Note(const std::string& strText) const;
  // The same as Warn for what changes the result: under --quiet, too.
  void WarnAlways(const std::string& strText) const;

  // Prints the result and renames the result files. A result file that goes to standard output
  // takes the place of the text. Throws CommandError.
  void Finish(ExitCode eCode);
  // The whole object; after the command has run.
  const Json& Result(ExitCode eCode);

 private:
  std::string m_strCommand;
  Switches m_switches;
  std::vector<std::string> m_arguments;
  std::ostringstream m_text;

  Json m_root = Json::object();
  Json m_result;  // empty before Result
  std::unique_ptr<CommandReport> m_pReport;
  int m_iStatus = 0;
  std::string m_strStatus, m_strUnit;
  mutable Json m_warnings = Json::array();  // what was told, beside the result
  std::vector<std::unique_ptr<OutputFile>> m_outputs;
};

// Writes to standard output and closes it, so that a full disk or a closed pipe is seen. Once, at
// the end. Throws CommandError; without a text where the reader has closed the pipe ("| head").
void PrintAndClose(const std::string& strText);

}  // namespace cli
