#include "context.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <locale>
#include <utility>

#include "exit_code.h"

namespace cli {

Context::Context(std::string strCommand, bool bJson, bool bQuiet)
    : m_strCommand(std::move(strCommand)), m_bJson(bJson), m_bQuiet(bQuiet) {
  m_text.imbue(std::locale::classic());
}

OutputFile& Context::NewOutput(const std::string& strPath) {
  m_outputs.push_back(std::make_unique<OutputFile>(strPath));
  return *m_outputs.back();
}

void Context::Warn(const std::string& strText) const {
  if (!m_bQuiet) std::cerr << m_strCommand << ": " << strText << std::endl;
}

void Context::Finish() {
  for (const auto& pOutput : m_outputs) pOutput->Seal();
  PrintAndClose(m_bJson ? JsonText(m_root) : m_text.str());
  for (const auto& pOutput : m_outputs) pOutput->Rename();
}

void PrintAndClose(const std::string& strText) {
  if (!WriteAll(STDOUT_FILENO, strText.data(), strText.size()) || close(STDOUT_FILENO) != 0) {
    throw CommandError(kCannotWrite, std::string("standard output cannot be written (") +
                                         std::strerror(errno) + ")");
  }
}

}  // namespace cli
