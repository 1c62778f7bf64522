#include "options.h"

#include <CLI/CLI.hpp>

namespace cli {

void Options::Positional(const char* szName, std::string* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->required()->type_name("");
}

void Options::Positionals(const char* szName, std::vector<std::string>* pValues,
                          const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValues, szHelp)->required()->type_name("");
}

void Options::Flag(const char* szName, bool* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_flag(szName, *pValue, szHelp);
}

void Options::Option(const char* szName, const char* szType, std::string* pValue,
                     const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType);
}

void Options::Option(const char* szName, const char* szType, int* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType)->capture_default_str();
}

void Options::Option(const char* szName, const char* szType, unsigned* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType)->capture_default_str();
}

void Options::Option(const char* szName, const char* szType, double* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType);
}

void Options::Option(const char* szName, const char* szType, std::vector<std::string>* pValues,
                     const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValues, szHelp)
                ->type_name(szType)
                ->take_all()
                ->allow_extra_args(false);
}

void Options::Choice(const char* szName, std::initializer_list<const char*> words,
                     std::string* pValue, const char* szHelp) {
  const std::vector<std::string> allowed(words.begin(), words.end());
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)
                ->check(CLI::IsMember(allowed))
                ->capture_default_str();
}

void Options::Required() { static_cast<CLI::Option*>(m_pLast)->required(); }

bool Options::Given(const char* szName) const { return m_pApp->count(szName) > 0; }

}  // namespace cli
