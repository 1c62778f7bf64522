// The page that the reports of the program share: one file that needs neither network nor script,
// for screens of any width, light or dark, and for print.
#pragma once

#include <string>

namespace cli {

// The whole page: heading, verdict, then what strBody holds as HTML. The other texts are plain.
std::string HtmlPage(const std::string& strTitle, const std::string& strHeading,
                     const std::string& strVerdict, const std::string& strBody);

// A heading and what belongs to it on one page.
std::string Section(const std::string& strTitle, const std::string& strContent);

// A heading before something long, which may be broken between its rows, but not behind the
// heading.
std::string LongSection(const std::string& strTitle, const std::string& strNote,
                        const std::string& strContent);

// The command line of this run, as it would be typed.
std::string CommandLine();

}  // namespace cli
