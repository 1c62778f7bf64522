// Reads the command line, runs one command, and turns whatever ends it into an exit code and one
// message on standard error.
#pragma once

#include "exit_code.h"

namespace cli {

ExitCode RunGuarded(int argc, char** argv);

}  // namespace cli
