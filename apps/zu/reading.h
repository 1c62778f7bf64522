// How the program meets what readers of points and clouds find in a file.
#pragma once

#include <string>

#include "context.h"
#include "zu/foundation/read_findings.h"

namespace cli {

// Warnings of a file that are told one by one, and how to go on where --strict refuses one.
constexpr size_t kWarningsTold = 20;
constexpr char kWithoutStrict[] = "without --strict this is a warning";

// "file:12:5: text", under the name that the caller gave.
std::string Placed(ZuFinding finding, const std::string& strName);

// The mode in which files are read: tolerant with --tolerant, otherwise strict.
eZuReadMode ReadMode(const Context& context);

// The dialect goes to "read_as" of the JSON object. Findings above notes become warnings, the first
// twenty of them one by one. Throws CommandError
// (bad input), naming file, line and column, for a fault; for a cut, unless a part is wanted or the
// reading is tolerant, with a further line that says how to go on; and under --strict for any
// warning.
void TellFindings(const ZuReadFindings& findings, const std::string& strName, bool bPartial,
                  const char* szHowToGoOn, Context& context);

}  // namespace cli
