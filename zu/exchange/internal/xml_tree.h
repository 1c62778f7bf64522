// XML as a tree.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "zu/exchange/photo_exchange.h"

namespace zu::internal {

struct XmlElement {
  std::string strName;
  std::string strText;  // of its own; without what stands about it
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<XmlElement> children;
  std::uint64_t uLine = 0;  // from 1

  // The first child of that name; null without one.
  const XmlElement* Find(const char* szName) const;
  // Null without it.
  const std::string* Attribute(const char* szName) const;
  XmlElement& Add(const char* szName, std::string strContent = "");
};

// The element of the document. Throws ExchangeFault: also for a document type and for entities
// beyond the five of the language and characters by number, none of which is resolved, and for
// elements deeper than 64.
XmlElement ReadXml(const ZuExchangeFile& file);

std::string WriteXml(const XmlElement& root);

}  // namespace zu::internal
