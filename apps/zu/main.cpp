// zu: the library's command line.
#include "interrupt.h"
#include "run_program.h"

int main(int argc, char** argv) {
  cli::InstallSignalHandlers();
  return cli::RunGuarded(argc, argv);
}
