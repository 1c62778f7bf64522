// zu batch: jobs that fail or are killed, what is kept, and what a job file may hold.
#include <fstream>

#include "tests/cli/program.h"

namespace {

TEST(Batch, TellsWhatFailsAndGoesOnWithTheRest) {
  const ScratchFolder folder;
  ExpectLines(
      {
          {"mkdir in && for k in 1 2 3 4; do cp $S/chessboard/left.prj in/p$k.prj; done", 0, "",
           ""},
          {"cp $S/chessboard/left.prj 'in/a b.prj' && echo PHOTO >> in/p2.prj", 0, "", ""},
          {"printf '%s\\n' '# all' 'each in/*.prj: check {} --json' "
           "'zu convert \"in/a b.prj\" -o \"out of {}.json\" # copy' > jobs.txt",
           0, "", ""},
          {"zu batch jobs.txt --jobs 3", 1, "6 jobs: 5 done, 0 kept, 0 not acceptable, 1 failed",
           ""},
          {"zu convert in/p1.prj -o p1.json && cmp 'out of {}.json' p1.json && ls jobs.txt.results "
           "| tr '\\n' ' "
           "'",
           0, "0002-a b.done 0002-a b.json 0002-p1.done", ""},
          {"cmp jobs.txt.results/0002-p3.json <(zu check in/p3.prj --json | sed s/x/x/)", 0, "",
           ""},
          // One is put right, one changed, one's command line is another.
          {"cp in/p1.prj in/p2.prj && sleep 0.02 && touch in/p4.prj && sed -i s/copy/c/ jobs.txt "
           "&& "
           "zu batch jobs.txt",
           0, "2 done, 4 kept", ""},
          {"sed -i 's/of {}/of it/' jobs.txt && zu batch jobs.txt", 0, "1 done, 5 kept", ""},
          {"zu batch jobs.txt --again --jobs 1 --json | grep -c '\"state\": \"done\"'", 0, "6", ""},
      },
      folder);
}

TEST(Batch, EndsItsJobsWithItself) {
  const ScratchFolder folder;
  // The first job waits for somebody to write. below PID: the first process that it has started.
  folder.Write(
      "f",
      "below() { read -r pid rest < /proc/$1/task/$1/children; echo $pid; }\n"
      "job() { until [ -n \"$(below $1)\" ] && [ -n \"$(below $(below $1))\" ]; do sleep 0.1; "
      "done; batch=$(below $1); job=$(below $batch); }\n"
      // Nobody may have asked yet how it ended.
      "gone() { ! grep -qs '^State:.[^Z]' /proc/$1/status; }\n");
  ExpectLines(
      {
          {"mkfifo never && printf 'check never\ncheck $S/chessboard/left.prj\n' > jobs.txt", 0, "",
           ""},
          {". ./f; zu batch jobs.txt --jobs 1 > told & job $!; kill -KILL $job; wait; cat told", 0,
           "ended by signal 9", ""},
          {". ./f; zu batch jobs.txt --jobs 2 & job $!; kill -TERM $batch; wait; "
           "for k in 1 2 3 4 5 6 7 8 9; do gone $job || sleep 0.2; done; "
           "gone $job && echo none left",
           0, "none left", ""},
      },
      folder);
}

TEST(Batch, NamesTheLineThatIsWrong) {
  const ScratchFolder folder;
  const std::pair<const char*, const char*> cases[] = {
      {"\nchek a.prj\n", "jobs.txt:2: \"chek\" is no command; zu --help lists them"},
      {"check \"a.prj\n", "jobs.txt:1: a quote \" is not closed"},
      {"each *.none: check {}\n", "jobs.txt:1: no file is called *.none"},
      {"each *.txt: check a.prj\n", "jobs.txt:1: no {} among the words"},
      {"each *.txt check {}\n", "\"each PATTERN: COMMAND ...\" would be right"},
      {"zu\n", "jobs.txt:1: no command"},
      {"batch jobs.txt\n", "does not start another"},
      {"# nothing\n", "no command line in it"},
  };
  for (const auto& [szText, szMessage] : cases) {
    folder.Write("jobs.txt", szText);
    const Outcome outcome = RunLine("zu batch jobs.txt", folder);
    ExpectFailure(outcome, 3, szMessage);
  }
  ExpectFailure(RunLine("zu batch none.txt", folder), 3, "cannot be read");
  ExpectFailure(RunLine("zu batch jobs.txt --jobs 0", folder), 2, "--jobs");
}

}  // namespace
