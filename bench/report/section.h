// A part of a page that a program writes, between two lines that stay:
//
//   <!-- NAME: written by ... -->
//   <!-- end of NAME -->
#pragma once

#include <string>

namespace report {

// Puts strText between the lines of the section; everything else of the file stays. Throws
// std::runtime_error, the file untouched, where the section is not there.
void ReplaceSection(const std::string& strPath, const std::string& strName,
                    const std::string& strText);

}  // namespace report
