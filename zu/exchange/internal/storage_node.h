// What a file of OpenCV's FileStorage says, in any of its three forms.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "zu/exchange/photo_exchange.h"

namespace zu::internal {

struct StorageNode {
  enum class Kind { None, Number, Text, Sequence, Map };

  std::string strName;  // in a map
  Kind eKind = Kind::None;
  double dNumber = 0.0;
  std::string strText;
  std::vector<double> numbers;        // of a sequence, those of its items that are numbers,
  std::vector<StorageNode> children;  // and the others; the items of a map
  std::uint64_t uLine = 0;            // from 1

  void Add(StorageNode&& item);
  // The item of a map that has one of the names; null without one.
  const StorageNode* Find(std::initializer_list<const char*> names) const;
};

// A number (.Nan, .Inf and -.Inf among them) or a text.
StorageNode StorageScalar(std::string_view text, std::uint64_t uLine);

// Nesting that is read; deeper files are refused.
constexpr int kStorageDepth = 32;

// By the beginning of the file: XML, JSON, else YAML. JSON is read as YAML, of which it is a part,
// since FileStorage writes .Nan and .Inf into it. Throws ExchangeFault.
StorageNode ReadStorage(const ZuExchangeFile& file);
StorageNode ReadStorageText(const ZuExchangeFile& file);

// What is written: a number, a text, texts, a matrix of one column, or a sequence of items.
struct StorageItem {
  enum class Kind { Whole, Number, Text, Texts, Matrix, Sequence };

  std::string strName;
  Kind eKind;
  double dNumber = 0.0;
  std::vector<std::string> texts;
  std::size_t uColumns = 1, uChannels = 1;
  std::vector<double> values;
  std::vector<StorageItem> items;
};

enum class StorageForm { Yaml, Xml, Json };

std::string WriteStorage(const std::vector<StorageItem>& items, StorageForm eForm);

}  // namespace zu::internal
