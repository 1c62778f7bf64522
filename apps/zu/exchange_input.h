// What the commands that exchange files with other programs share.
#pragma once

#include <string>

#include "context.h"
#include "zu/exchange/photo_exchange.h"

namespace cli {

// Throws CommandError (usage) for a word that is no format.
eZuExchange ExchangeFormat(const std::string& strWord);

// Errors end the command (CommandError, bad input), warnings are told; files of a folder stand
// behind its name.
void TellExchange(const ZuFindingList& findings, const std::string& strName, Context& context);

// The cameras with their fits, as text and as JSON, and the counts.
void ShowExchange(const ZuExchangeReport& report, Context& context);

}  // namespace cli
