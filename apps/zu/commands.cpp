#include "commands.h"

namespace cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"transform", "carry a point list into the system of control points",
       "  zu transform samples/datum/local.coo --control samples/datum/wgs84.coo -o joined.coo\n"
       "finds scale, rotation and shift from the stations that both files hold, prints the\n"
       "residual of each, and writes all stations in the control system to joined.coo.",
       DefineTransform},
  };
  return commands;
}

}  // namespace cli
