#include "commands.h"

namespace cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {};
  return commands;
}

}  // namespace cli
