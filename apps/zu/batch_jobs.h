// The job file of zu batch: one command line of this program a line.
//
//   # comments, and blank lines
//   transform local.coo --control wgs84.coo -o joined.coo
//   each photos/*.prj: check {} --json
//
// Words are separated by blanks, and quoted as in a shell ("a b", 'a b', a\ b); nothing else of a
// shell is known. A line that begins with each is one job a file that the pattern finds, in the
// order of the names: {} is its path, {name} its name, {stem} that without the ending, {folder} its
// folder.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct BatchJob {
  unsigned uLine = 0;              // of the job file, from 1
  std::string strName;             // "0012", or "0012-left" of a file that a pattern found
  std::vector<std::string> words;  // the command line without the program
};

// Throws CommandError (bad input): file and line, and what would be right.
std::vector<BatchJob> ReadBatchJobs(const std::string& strPath);

// Words as one line that ReadBatchJobs and a shell take apart again.
std::string BatchLine(const std::vector<std::string>& words);

}  // namespace cli
