// zu batch: many command lines, several at a time. What one of them is told stays with it; a run
// that was broken off goes on where it ended.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include "batch_jobs.h"
#include "child_process.h"
#include "commands.h"
#include "progress_line.h"
#include "text_table.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

struct Values {
  std::string strJobs, strResults;
  unsigned uJobs = 0;
  bool bAgain = false;
};

struct JobResult {
  BatchJob job;
  fs::path output, messages, mark;  // the mark holds the command line of a job that is done
  std::string strState = "waiting", strMessage;
  int iCode = 0;
};

std::string ContentOf(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  if (stream) text << stream.rdbuf();
  return text.str();
}

// Why the program ended: from the last line that it begins with its own name. At most three lines.
std::string ReasonIn(const fs::path& path) {
  std::string strReason;
  std::istringstream text(ContentOf(path));
  for (std::string strLine; std::getline(text, strLine);) {
    const bool bStart =
        strLine.compare(0, 3, "zu ") == 0 && strLine.find(": ") != std::string::npos;
    strReason = bStart || strReason.empty() ? strLine : strReason + "; " + strLine;
  }
  return strReason;
}

// Done before by the same command line, and no file that it names has changed since.
bool IsKept(const JobResult& result) {
  std::error_code error;
  if (ContentOf(result.mark) != BatchLine(result.job.words) + "\n") return false;
  if (!fs::exists(result.output, error)) return false;
  const fs::file_time_type done = fs::last_write_time(result.mark, error);
  return std::none_of(
      result.job.words.begin(), result.job.words.end(), [done](const std::string& strWord) {
        std::error_code none;
        return fs::is_regular_file(strWord, none) && fs::last_write_time(strWord, none) > done;
      });
}

void Mark(const JobResult& result) {
  OutputFile mark(result.mark.string());
  mark.Stream() << BatchLine(result.job.words) << '\n';
  mark.Seal();
  mark.Rename();
}

std::vector<JobResult> Prepared(const Values& values) {
  const fs::path folder =
      values.strResults.empty() ? values.strJobs + ".results" : values.strResults;
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw CommandError(kCannotWrite, folder.string() + ": " + error.message() +
                                         "; --results FOLDER names another folder");
  }
  std::vector<JobResult> results;
  for (BatchJob& job : ReadBatchJobs(values.strJobs)) {
    JobResult result;
    const bool bJson = std::find(job.words.begin(), job.words.end(), "--json") != job.words.end();
    result.output = folder / (job.strName + (bJson ? ".json" : ".txt"));
    result.messages = folder / (job.strName + ".messages");
    result.mark = folder / (job.strName + ".done");
    result.job = std::move(job);
    if (!values.bAgain && IsKept(result)) result.strState = "kept";
    results.push_back(std::move(result));
  }
  return results;
}

void Take(const ChildEnd& end, JobResult* pResult) {
  pResult->iCode = end.iCode;
  pResult->strMessage = ReasonIn(pResult->messages);
  if (end.iSignal != 0) {
    pResult->strMessage = std::string("ended by signal ") + std::to_string(end.iSignal) + " (" +
                          strsignal(end.iSignal) + ")";
  }
  pResult->strState = end.iCode == kGood            ? "done"
                      : end.iCode == kNotAcceptable ? "not acceptable"
                                                    : "failed";
  std::error_code error;
  if (fs::file_size(pResult->messages, error) == 0) fs::remove(pResult->messages, error);
  if (end.iCode == kGood) {
    Mark(*pResult);
  } else {
    fs::remove(pResult->mark, error);
  }
}

void RunJobs(unsigned uAtATime, bool bQuiet, std::vector<JobResult>* pResults) {
  ChildProcesses children;
  std::map<pid_t, JobResult*> running;
  ProgressLine progress("jobs", bQuiet);
  std::size_t uNext = 0, uEnded = 0;
  while (uNext < pResults->size() || children.Count() > 0) {
    if (uNext < pResults->size() && (*pResults)[uNext].strState == "kept") {
      ++uNext, ++uEnded;
    } else if (uNext < pResults->size() && children.Count() < uAtATime) {
      JobResult& result = (*pResults)[uNext++];
      const pid_t pid = children.Start(result.job.words, result.output.string(),
                                       result.messages.string(), uAtATime > 1);
      running[pid] = &result;
    } else {
      const ChildEnd end = children.Wait();
      const auto found = running.find(end.pid);
      if (found == running.end()) continue;
      Take(end, found->second);
      running.erase(found);
      progress.Update(static_cast<double>(++uEnded) / static_cast<double>(pResults->size()));
    }
  }
}

ExitCode Tell(const std::vector<JobResult>& results, Context& context) {
  Json jobs = Json::array();
  std::map<std::string, int> counts;
  ExitCode eCode = kGood;
  for (const JobResult& result : results) {
    ++counts[result.strState];
    const bool bGood = result.strState == "done" || result.strState == "kept";
    if (!bGood) {
      eCode = kNotAcceptable;
      context.Text() << "line " << result.job.uLine << ", " << result.strState << ": zu "
                     << BatchLine(result.job.words) << "\n  "
                     << (result.strMessage.empty() ? result.output.string() : result.strMessage)
                     << '\n';
    }
    jobs.push_back({{"line", result.job.uLine},
                    {"arguments", result.job.words},
                    {"state", result.strState},
                    {"exit_code", result.iCode},
                    {"message", result.strMessage},
                    {"output", result.output.string()}});
  }
  context.Text() << Counted(results.size(), "job") << ": " << counts["done"] << " done, "
                 << counts["kept"] << " kept, " << counts["not acceptable"] << " not acceptable, "
                 << counts["failed"] << " failed\n";
  Json& root = context.Root();
  root["done"] = counts["done"];
  root["kept"] = counts["kept"];
  root["not_acceptable"] = counts["not acceptable"];
  root["failed"] = counts["failed"];
  root["jobs"] = std::move(jobs);
  return eCode;
}

ExitCode Run(const Values& values, Context& context) {
  std::vector<JobResult> results = Prepared(values);
  const unsigned uAtATime =
      values.uJobs != 0 ? values.uJobs : std::max(1u, std::thread::hardware_concurrency());
  RunJobs(uAtATime, context.IsQuiet(), &results);
  return Tell(results, context);
}

}  // namespace

Runner DefineBatch(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("JOBFILE", &pValues->strJobs,
                     "command lines of this program, one a line; \"each *.prj: check {}\" is one "
                     "job a file");
  options.Option("--jobs", "N", &pValues->uJobs, "so many at a time (default: one a core)");
  options.AtLeast(1);
  options.Option("--results", "FOLDER", &pValues->strResults,
                 "for what each job prints (default: JOBFILE.results)");
  options.Flag("--again", &pValues->bAgain,
               "run those too that are done and whose files have not changed");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
