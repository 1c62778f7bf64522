// What the commands that exchange files with other programs share.
#pragma once

#include <string>

#include "context.h"
#include "zu/exchange/photo_exchange.h"

namespace cli {

// Throws CommandError (usage) for a word that is no format.
eZuExchange ExchangeFormat(const std::string& strWord);

// Errors end the command (CommandError, bad input), warnings and notes are told; files of a folder
// stand behind its name.
void TellExchange(const ZuFindingList& findings, const std::string& strName, Context& context);

// What a format's file or folder is, for help texts.
constexpr char kExchangeWords[] = "colmap, opencv, metashape or bal";
constexpr char kExchangeFiles[] =
    "colmap: folder of cameras, images and points3D; opencv: calibration file (.yml, "
    ".xml, .json); metashape: camera file (XML); bal: text file";

// The cameras with their fits, as text and as JSON, and the counts.
void ShowExchange(const ZuExchangeReport& report, Context& context);

}  // namespace cli
