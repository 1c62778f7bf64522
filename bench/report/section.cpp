#include "bench/report/section.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace report {

void ReplaceSection(const std::string& strPath, const std::string& strName,
                    const std::string& strText) {
  std::ifstream in(strPath, std::ios::binary);
  std::string strPage(std::istreambuf_iterator<char>(in), {});
  const std::size_t uBegin = strPage.find("<!-- " + strName + ":");
  const std::size_t uStart = strPage.find('\n', uBegin);
  const std::size_t uEnd = strPage.find("<!-- end of " + strName + " -->");
  if (!in || uBegin == std::string::npos || uEnd == std::string::npos || uStart > uEnd) {
    throw std::runtime_error(strPath + ": the section '" + strName + "' is not there");
  }
  strPage.replace(uStart + 1, uEnd - uStart - 1, strText);
  std::ofstream out(strPath, std::ios::binary);
  if (!(out << strPage).flush()) throw std::runtime_error(strPath + ": cannot be written");
}

}  // namespace report
