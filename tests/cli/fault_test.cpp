// A command whose system fails it: each system call that changes files fails in turn, and the
// program is killed before each. The old result file stays byte for byte until the new one is
// whole, and the exit code tells.
#include <errno.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "tests/cli/program.h"
#include "tests/support/system_call_fault.h"
#include "tests/support/trials.h"

namespace {

struct WritingCommand {
  std::vector<std::string> arguments;
  std::vector<std::string> outputs;  // options and names of the result files
  std::string strInput;
};

std::ostream& operator<<(std::ostream& os, const WritingCommand& command) {
  for (const std::string& str : command.arguments) {
    os << std::filesystem::path(str).filename().string() << ' ';
  }
  return os;
}

std::vector<WritingCommand> WritingCommands() {
  const auto sample = [](const char* sz) { return Source(std::string("samples/") + sz); };
  const std::string strLocal = sample("datum/local.coo"), strControl = sample("datum/wgs84.coo");
  const std::string strBoard = sample("chessboard/board.coo");
  const std::string strProject = sample("chessboard/left.prj");
  const std::string strCameras = sample("chessboard/cameras.cam");
  const std::string strCloud = sample("clouds/site_56_8.pts");
  return {
      {{"transform", strLocal, "--control", strControl}, {"-o", "out.coo"}, ""},
      {{"plane", strBoard}, {"-o", "feet.coo", "--log", "plane.log"}, ""},
      {{"local", strLocal, "--axis", "X:2,1", "--plane", "XY:3", "--origin", "2"},
       {"-o", "out.coo"},
       ""},
      {{"merge", sample("merge/first.coo"), sample("merge/second.coo"), "--tolerance", "1"},
       {"-o", "out.coo", "--rejected", "rejected.coo"},
       ""},
      {{"trafo2d", strBoard, "--control", strBoard, "--type", "affin"}, {"-o", "out.coo"}, ""},
      {{"cloud", "convert", strCloud}, {"", "out.zpc"}, ""},
      {{"cloud", "convert", strCloud}, {"", "out.pts"}, ""},
      {{"cloud", "convert", strCloud}, {"", "out.ply"}, ""},
      {{"cloud", "convert", strCloud}, {"", "out.coo"}, ""},
      {{"camera", "adjust", strCameras, "--id", "1"}, {"-o", "out.coo"}, "1 -0.74 1.43\n"},
      {{"camera", "plot", strCameras, "--id", "1"}, {"-o", "curve.svg"}, ""},
      {{"camera", "gentri", strCameras}, {"-o", "out.txt"}, ""},
      {{"photo", "convert", strProject, "--photo", "1", "--mode", "digi-adjusted"},
       {"-o", "out.coo"},
       "1 244.4 94.2\n"},
      {{"rectify", sample("older/facade.prj"), "--photo", "1", "--zusp", "1"},
       {"-o", "out.coo"},
       "1 -1.0 0.5\n"},
      {{"measure", strProject, "--plane", strBoard, "--unit", "mm"},
       {"-o", "out.coo", "--report", "report.html"},
       ""},
  };
}

// One command in a folder of its own, with an old file in the place of each result.
class Scene {
 public:
  explicit Scene(const WritingCommand& command) : m_command(command) {
    m_arguments = {ZU_PROGRAM};
    m_arguments.insert(m_arguments.end(), command.arguments.begin(), command.arguments.end());
    for (std::size_t i = 0; i < command.outputs.size(); i += 2) {
      if (!command.outputs[i].empty()) m_arguments.push_back(command.outputs[i]);
      m_arguments.push_back(m_folder.Path(command.outputs[i + 1]));
      m_names.push_back(command.outputs[i + 1]);
    }
    std::sort(m_names.begin(), m_names.end());
    m_streams.Write("in", command.strInput);
  }

  TracedRun Run(SystemCallFault fault) {
    for (const std::string& strName : m_folder.Names()) unlink(m_folder.Path(strName).c_str());
    for (const std::string& strName : m_names) m_folder.Write(strName, "old\n");
    return RunTraced(m_arguments, m_streams.Path("in"), m_streams.Path("out"),
                     m_streams.Path("err"), fault);
  }

  const std::vector<std::string>& Arguments() const { return m_arguments; }
  const ScratchFolder& Folder() const { return m_folder; }
  const std::vector<std::string>& Names() const { return m_names; }
  std::string Error() const { return ReadFile(m_streams.Path("err")); }
  std::string Output() const { return ReadFile(m_streams.Path("out")); }
  // Contents of the results, in the order of Names().
  std::vector<std::string> Results() const {
    std::vector<std::string> results;
    for (const std::string& strName : m_names) results.push_back(ReadFile(m_folder.Path(strName)));
    return results;
  }

 private:
  WritingCommand m_command;
  ScratchFolder m_folder, m_streams;
  std::vector<std::string> m_arguments, m_names;
};

bool IsOldOrWhole(const std::string& str, const std::string& strWhole) {
  // The log of a fit has the time of the run in it.
  return str == "old\n" || str.size() == strWhole.size();
}

void ExpectOldOrWhole(const Scene& scene, const std::vector<std::string>& whole) {
  const std::vector<std::string> results = scene.Results();
  for (std::size_t i = 0; i < whole.size(); ++i) {
    EXPECT_TRUE(IsOldOrWhole(results[i], whole[i])) << scene.Names()[i] << ":\n" << results[i];
  }
}

// What is left behind beside the results is named as unfinished.
void ExpectNothingButUnfinished(const Scene& scene) {
  for (const std::string& strName : scene.Folder().Names()) {
    const bool bResult = std::count(scene.Names().begin(), scene.Names().end(), strName) > 0;
    EXPECT_TRUE(bResult || strName.compare(0, 4, ".zu-") == 0) << strName;
  }
}

class SystemFault : public ::testing::TestWithParam<WritingCommand> {
 protected:
  void SetUp() override {
    const TracedRun good = m_scene.Run({});
    if (!good.bTraced) GTEST_SKIP() << "no process may be traced here";
    ASSERT_EQ(good.iExit, 0) << m_scene.Error();
    m_calls = good.calls;
    m_whole = m_scene.Results();
    ASSERT_EQ(m_scene.Folder().Names(), m_scene.Names());
    ASSERT_GE(std::count(m_calls.begin(), m_calls.end(), "rename"), 1);
  }

  Scene m_scene{GetParam()};
  std::vector<std::string> m_calls, m_whole;
};

TEST_P(SystemFault, AtEachCall) {
  const std::string strOutput = m_scene.Output();
  for (std::size_t i = 0; i < m_calls.size(); ++i) {
    SCOPED_TRACE(::testing::Message() << m_calls[i] << ", call " << i);
    const TracedRun run = m_scene.Run({static_cast<int>(i), ENOSPC});
    ExpectOldOrWhole(m_scene, m_whole);
    EXPECT_EQ(m_scene.Folder().Names(), m_scene.Names());
    if (run.iExit == 0) {
      for (const std::string& strResult : m_scene.Results()) EXPECT_NE(strResult, "old\n");
      EXPECT_EQ(m_scene.Output().size(), strOutput.size());
      continue;
    }
    EXPECT_EQ(run.iExit, 5) << m_scene.Error();
    EXPECT_NE(m_scene.Error(), "");
  }
}

TEST_P(SystemFault, KilledBeforeEachCall) {
  for (std::size_t i = 0; i < m_calls.size(); ++i) {
    SCOPED_TRACE(::testing::Message() << m_calls[i] << ", call " << i);
    EXPECT_EQ(m_scene.Run({static_cast<int>(i), 0}).iExit, 128 + SIGKILL);
    ExpectOldOrWhole(m_scene, m_whole);
    ExpectNothingButUnfinished(m_scene);
  }
}

std::string NameOf(const ::testing::TestParamInfo<WritingCommand>& info) {
  std::string strName = info.param.arguments[0] + std::to_string(info.index);
  return strName;
}

// Under a sanitizer, where each of the many starts takes long, one command for each way of writing:
// points, an appended log, a cloud, a drawing.
std::vector<WritingCommand> CommandsToFail() {
  std::vector<WritingCommand> commands = WritingCommands();
  if (ZU_SANITIZED != 0) commands = {commands[0], commands[1], commands[5], commands[10]};
  return commands;
}

INSTANTIATE_TEST_SUITE_P(Commands, SystemFault, ::testing::ValuesIn(CommandsToFail()), NameOf);

}  // namespace
