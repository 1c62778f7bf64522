// Help texts: usage with what must be given, lines as wide as the terminal, 80 columns elsewhere.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace CLI {
class FormatterBase;
}

namespace cli {

std::shared_ptr<CLI::FormatterBase> MakeHelpFormatter();

// The columns of the terminal that standard output is, 80 where it is none.
std::size_t HelpWidth();

// An example of a command: its command lines, which begin with blanks, broken behind a blank with
// " \" where they are too long, so that a shell takes them; the text between them wrapped.
std::string WrapExample(const std::string& strText, std::size_t uWidth);

}  // namespace cli
