#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>

#include "text_table.h"
#include "zu/foundation/strict_number.h"

namespace cli {
namespace {

// The first name of "-o,--output".
std::string FirstName(const std::string& strName) { return strName.substr(0, strName.find(',')); }

// Before the number is read: 1.5, 12abc, -1 for what cannot be negative.
template <class T>
void LimitWhole(void* pOption, const char* szWanted) {
  static_cast<CLI::Option*>(pOption)->check([szWanted](const std::string& strValue) {
    const char* const pEnd = strValue.data() + strValue.size();
    T value{};
    const auto read = std::from_chars(strValue.data(), pEnd, value);
    const bool bGood = read.ec == std::errc() && read.ptr == pEnd;
    return bGood ? std::string() : strValue + " is not " + szWanted;
  });
}

void Limit(void* pOption, const std::string& strWanted, const std::function<bool(double)>& fnGood) {
  static_cast<CLI::Option*>(pOption)->check([strWanted, fnGood](const std::string& strValue) {
    double dValue = 0.0;
    const bool bGood = ZuParseNumber(strValue, &dValue) && fnGood(dValue);
    return bGood ? std::string() : strValue + " is not " + strWanted;
  });
}

}  // namespace

void Options::Positional(const char* szName, std::string* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->required()->type_name("");
}

void Options::Positionals(const char* szName, std::vector<std::string>* pValues,
                          const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValues, szHelp)->required()->type_name("");
}

void Options::OptionalPositionals(const char* szName, std::vector<std::string>* pValues,
                                  const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValues, szHelp)->type_name("");
}

void Options::Flag(const char* szName, bool* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_flag(szName, *pValue, szHelp);
}

void Options::Tolerant() {
  Flag("--tolerant", m_pbTolerant, "leave out lines that are no points, and take decimal commas");
}

void Options::Option(const char* szName, const char* szType, std::string* pValue,
                     const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType);
}

void Options::Option(const char* szName, const char* szType, int* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType)->capture_default_str();
  LimitWhole<int>(m_pLast, "a whole number such as 12");
}

void Options::Option(const char* szName, const char* szType, unsigned* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType)->capture_default_str();
  LimitWhole<unsigned>(m_pLast, "a whole number from 0 to 4294967295");
}

void Options::Option(const char* szName, const char* szType, double* pValue, const char* szHelp) {
  m_pLast = m_pApp->add_option(szName, *pValue, szHelp)->type_name(szType);
  Limit(m_pLast, "a number such as 12.345", [](double) { return true; });
}

void Options::Output(const char* szName, const char* szType, std::string* pValue,
                     const char* szHelp) {
  Option(szName, szType, pValue, szHelp);
  m_outputs.push_back({FirstName(szName), pValue, m_pLast});
}

void Options::PositionalOutput(const char* szName, std::string* pValue, const char* szHelp) {
  Positional(szName, pValue, szHelp);
  m_outputs.push_back({szName, pValue, m_pLast});
}

std::vector<OutputName> Options::GivenOutputs(const std::vector<OutputOption>& outputs) {
  std::vector<OutputName> names;
  for (const OutputOption& output : outputs) {
    const bool bGiven = static_cast<const CLI::Option*>(output.pOption)->count() > 0;
    if (bGiven) names.push_back({output.strName, *output.pValue});
  }
  return names;
}

void Options::AtLeast(double dLimit) {
  Limit(m_pLast, "at least " + Shortest(dLimit), [dLimit](double d) { return d >= dLimit; });
}

void Options::Above(double dLimit) {
  Limit(m_pLast, "above " + Shortest(dLimit), [dLimit](double d) { return d > dLimit; });
}

void Options::AtMost(double dLimit) {
  Limit(m_pLast, "at most " + Shortest(dLimit), [dLimit](double d) { return d <= dLimit; });
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

bool Options::Given(const char* szName) const { return m_pApp->count(szName) > 0; }

void Options::Required() { static_cast<CLI::Option*>(m_pLast)->required(); }

}  // namespace cli
