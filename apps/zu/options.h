// Declares the options of one command. The values behind the pointers are filled before the command
// runs and must live as long as its runner.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

class Options {
 public:
  explicit Options(CLI::App* pApp) : m_pApp(pApp) {}

  // An argument without a name; it must be given.
  void Positional(const char* szName, std::string* pValue, const char* szHelp);
  // One or more arguments without a name, behind all others.
  void Positionals(const char* szName, std::vector<std::string>* pValues, const char* szHelp);

  void Flag(const char* szName, bool* pValue, const char* szHelp);

  // szName is "--control" or "-o,--output"; szType the word in the help text ("FILE").
  void Option(const char* szName, const char* szType, std::string* pValue, const char* szHelp);
  void Option(const char* szName, const char* szType, int* pValue, const char* szHelp);
  void Option(const char* szName, const char* szType, unsigned* pValue, const char* szHelp);
  void Option(const char* szName, const char* szType, double* pValue, const char* szHelp);
  // May be given several times, one value each.
  void Option(const char* szName, const char* szType, std::vector<std::string>* pValues,
              const char* szHelp);
  // One of the words given.
  void Choice(const char* szName, std::initializer_list<const char*> words, std::string* pValue,
              const char* szHelp);

  // The option declared last must be given.
  void Required();

  // True if the option stands on the command line; valid in the runner.
  bool Given(const char* szName) const;

 private:
  CLI::App* m_pApp;
  void* m_pLast = nullptr;  // the option declared last
};

}  // namespace cli
