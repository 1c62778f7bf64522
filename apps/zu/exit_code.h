// Exit codes of the program and the error that ends a command with one of them.
#pragma once

#include <stdexcept>
#include <string>

namespace cli {

// Scripts branch on these numbers: append, never renumber.
enum ExitCode {
  kGood = 0,
  kNotAcceptable = 1,  // computed, but a tolerance was missed or points were rejected
  kUsage = 2,          // wrong command line
  kBadInput = 3,       // an input file is missing or at fault
  kUndetermined = 4,   // too few points, degenerate geometry
  kCannotWrite = 5,    // result file or standard output
  kInterrupted = 130
};

// Ends a command: nothing goes to standard output, no result file changes. The text has at most
// three lines, in the form "file:line: what is wrong, and what would be right" where a line is
// known, without a line end.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode eCode, const std::string& strText)
      : std::runtime_error(strText), m_eCode(eCode) {}

  ExitCode Code() const { return m_eCode; }

 private:
  ExitCode m_eCode;
};

}  // namespace cli
