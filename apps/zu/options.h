// Declares the options of one command. The values behind the pointers are filled before the command
// runs and must live as long as its runner.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "output_file.h"

namespace CLI {
class App;
}

namespace cli {

class Options {
 public:
  // *pbTolerant is what --tolerant sets, where a command has it.
  Options(CLI::App* pApp, bool* pbTolerant) : m_pApp(pApp), m_pbTolerant(pbTolerant) {}

  // An argument without a name; it must be given.
  void Positional(const char* szName, std::string* pValue, const char* szHelp);
  // One or more arguments without a name, behind all others.
  void Positionals(const char* szName, std::vector<std::string>* pValues, const char* szHelp);

  // The same, or none.
  void OptionalPositionals(const char* szName, std::vector<std::string>* pValues,
                           const char* szHelp);

  // The same for the name of a result file, which is looked at before the command runs.
  void PositionalOutput(const char* szName, std::string* pValue, const char* szHelp);

  void Flag(const char* szName, bool* pValue, const char* szHelp);
  // Declares --tolerant: the command reads points.
  void Tolerant();
  // What --strict, which every command has, does beside refusing input.
  void AlsoStrict(const char* szHelp) { m_strStrict += std::string(", ") + szHelp; }
  const std::string& StrictHelp() const { return m_strStrict; }

  // szName is "--control" or "-o,--output"; szType the word in the help text ("FILE"). Numbers are
  // finite; the option declared last may be limited further by the next three.
  void Option(const char* szName, const char* szType, std::string* pValue, const char* szHelp);
  void Option(const char* szName, const char* szType, int* pValue, const char* szHelp);
  void Option(const char* szName, const char* szType, unsigned* pValue, const char* szHelp);
  void Option(const char* szName, const char* szType, double* pValue, const char* szHelp);
  // A result file: its name is looked at before the command runs (CheckOutputs).
  void Output(const char* szName, const char* szType, std::string* pValue, const char* szHelp);
  // May be given several times, one value each.
  void Option(const char* szName, const char* szType, std::vector<std::string>* pValues,
              const char* szHelp);
  // One of the words given.
  void Choice(const char* szName, std::initializer_list<const char*> words, std::string* pValue,
              const char* szHelp);

  void AtLeast(double dLimit);
  void Above(double dLimit);
  void AtMost(double dLimit);

  // The option declared last must be given.
  void Required();

  // True if the option stands on the command line; valid in the runner.
  bool Given(const char* szName) const;

  // The result files declared.
  struct OutputOption {
    std::string strName;
    const std::string* pValue;
    const void* pOption;
  };
  const std::vector<OutputOption>& Outputs() const { return m_outputs; }
  // The names of those that stand on the command line; valid once it is parsed.
  static std::vector<OutputName> GivenOutputs(const std::vector<OutputOption>& outputs);

 private:
  CLI::App* m_pApp;
  bool* m_pbTolerant;
  std::string m_strStrict = "refuse input that a warning is given of";
  void* m_pLast = nullptr;  // the option declared last
  std::vector<OutputOption> m_outputs;
};

}  // namespace cli
