#include "help_format.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace cli {
namespace {

constexpr std::size_t kPlainWidth = 80, kLeastWidth = 40;
constexpr std::size_t kNames = 28;     // columns of the names of options
constexpr std::size_t kContinued = 5;  // indent of a command line that goes on
constexpr std::size_t kExample = 2;    // indent of one that begins

// Words between blanks, lines after the first indented; a word that is too long stands alone.
std::string WrapWords(const std::string& strText, std::size_t uStart, std::size_t uIndent,
                      std::size_t uWidth) {
  std::istringstream words(strText);
  std::string strWrapped;
  std::size_t uColumn = uStart;
  for (std::string strWord; words >> strWord;) {
    const bool bFirst = strWrapped.empty();
    if (!bFirst && uColumn + 1 + strWord.size() > uWidth) {
      strWrapped += '\n' + std::string(uIndent, ' ');
      uColumn = uIndent;
    } else if (!bFirst) {
      strWrapped += ' ';
      ++uColumn;
    }
    strWrapped += strWord;
    uColumn += strWord.size();
  }
  return strWrapped;
}

// "--type helmert|affin|...": broken behind a bar where it is too long.
std::string WrapName(const std::string& strName, std::size_t uWidth) {
  std::string strWrapped = "  ";
  std::size_t uColumn = 2;
  for (std::size_t u = 0; u < strName.size();) {
    const std::size_t uEnd = std::min(strName.find('|', u), strName.size() - 1) + 1;
    if (uColumn + uEnd - u > uWidth) {
      strWrapped += "\n      ";
      uColumn = 6;
    }
    strWrapped += strName.substr(u, uEnd - u);
    uColumn += uEnd - u;
    u = uEnd;
  }
  return strWrapped;
}

std::string TwoColumns(const std::string& strName, const std::string& strText, std::size_t uWidth) {
  std::string strLine = WrapName(strName, uWidth);
  const std::size_t uLast = strLine.size() - (strLine.rfind('\n') + 1);
  if (uLast + 1 > kNames) {
    strLine += '\n' + std::string(kNames, ' ');
  } else {
    strLine += std::string(kNames - uLast, ' ');
  }
  return strLine + WrapWords(strText, kNames, kNames, uWidth) + '\n';
}

// A line of a shell, broken at blanks outside quotes.
std::string WrapCommand(const std::string& strLine, std::size_t uWidth) {
  std::string strWrapped, strPiece(kExample, ' ');
  std::string strWord;
  char cQuote = '\0';
  const auto take = [&] {
    if (strWord.empty()) return;
    const bool bBlank = strPiece.back() != ' ';
    if (strPiece.size() + (bBlank ? 1 : 0) + strWord.size() + 2 > uWidth && bBlank) {
      strWrapped += strPiece + " \\\n";
      strPiece = std::string(kContinued, ' ') + strWord;
    } else {
      strPiece += (bBlank ? " " : "") + strWord;
    }
    if (strWord == "|") {  // ends a line by itself
      strWrapped += strPiece + '\n';
      strPiece = std::string(kContinued, ' ');
    }
    strWord.clear();
  };
  for (const char c : strLine) {
    if (c == ' ' && cQuote == '\0') {
      take();
      continue;
    }
    if (c == '"' || c == '\'') cQuote = cQuote == '\0' ? c : cQuote == c ? '\0' : cQuote;
    strWord += c;
  }
  take();
  return strWrapped + strPiece;
}

// The name of a value: MODE of --mode.
std::string Upper(std::string strText) {
  for (char& c : strText) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return strText;
}

class HelpFormatter : public CLI::Formatter {
 public:
  explicit HelpFormatter(std::size_t uWidth) : m_uWidth(uWidth) {}

  std::string make_description(const CLI::App* pApp) const override {
    return WrapWords(pApp->get_description(), 0, 0, m_uWidth) + '\n';
  }

  // "Usage: zu merge [OPTIONS] A B --tolerance T"
  std::string make_usage(const CLI::App* pApp, std::string strName) const override {
    std::string strUsage = CLI::Formatter::make_usage(pApp, strName);
    while (!strUsage.empty() && strUsage.back() == '\n') strUsage.pop_back();
    for (const CLI::Option* p : pApp->get_options()) {
      if (p->get_positional() || !p->get_required()) continue;
      const std::string strType = TypeOf(*p);
      const bool bLong = strType.size() > kNames;
      strUsage += " --" + p->get_lnames().front() + ' ' +
                  (bLong ? Upper(p->get_lnames().front()) : strType);
    }
    return WrapWords(strUsage, 0, 7, m_uWidth) + '\n';
  }

  std::string make_option(const CLI::Option* p, bool bPositional) const override {
    std::string strName = make_option_name(p, bPositional);
    if (p->get_type_size() != 0) {
      const std::string strType = TypeOf(*p), strDefault = p->get_default_str();
      if (!strType.empty()) strName += ' ' + strType;
      if (!strDefault.empty() && strDefault != "-1") strName += '=' + strDefault;
    }
    const bool bMust = p->get_required() && !bPositional;
    return TwoColumns(strName, make_option_desc(p) + (bMust ? " (must be given)" : ""), m_uWidth);
  }

  std::string make_subcommand(const CLI::App* pApp) const override {
    return TwoColumns(pApp->get_display_name(true), pApp->get_description(), m_uWidth);
  }

  std::string make_footer(const CLI::App* pApp) const override {
    const std::string strFooter = pApp->get_footer();
    return strFooter.empty() ? "" : WrapExample(strFooter, m_uWidth) + '\n';
  }

 private:
  // "T", or the words of a choice: "helmert|affin".
  static std::string TypeOf(const CLI::Option& option) {
    std::string strType = option.get_type_name();
    const std::size_t uBrace = strType.find(":{");
    if (uBrace == std::string::npos) return strType;
    strType = strType.substr(uBrace + 2, strType.size() - uBrace - 3);
    std::replace(strType.begin(), strType.end(), ',', '|');
    return strType;
  }

  std::size_t m_uWidth;
};

}  // namespace

std::string WrapExample(const std::string& strText, std::size_t uWidth) {
  std::istringstream lines(strText);
  std::string strResult, strCommand, strParagraph;
  const auto flush = [&] {
    if (!strParagraph.empty()) strResult += WrapWords(strParagraph, 0, 0, uWidth) + '\n';
    strParagraph.clear();
  };
  for (std::string strLine; std::getline(lines, strLine);) {
    if (strLine.empty() || strLine == "Example:") {
      flush();
      strResult += strLine + '\n';
    } else if (strLine[0] == ' ' || !strCommand.empty()) {
      flush();
      const bool bGoesOn = strLine.back() == '\\' || strLine.back() == '|';
      if (strLine.back() == '\\') strLine.pop_back();
      strCommand += ' ' + strLine;
      if (bGoesOn) continue;
      strResult += WrapCommand(strCommand, uWidth) + '\n';
      strCommand.clear();
    } else {
      strParagraph += ' ' + strLine;
    }
  }
  flush();
  if (!strResult.empty()) strResult.pop_back();
  return strResult;
}

std::size_t HelpWidth() {
  winsize size = {};
  if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) {
    return kPlainWidth;
  }
  return size.ws_col == 0 ? kPlainWidth : std::max<std::size_t>(size.ws_col, kLeastWidth);
}

std::shared_ptr<CLI::FormatterBase> MakeHelpFormatter() {
  return std::make_shared<HelpFormatter>(HelpWidth());
}

}  // namespace cli
