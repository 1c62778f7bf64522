#include "zu/exchange/internal/json_to_keywords.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>

#include "zu/foundation/numbers.h"

namespace zu::internal {

namespace {

[[noreturn]] void Fail(const std::string& strWhere, const std::string& strText,
                       const std::string& strRight) {
  throw JsonFault{strWhere, strText, strRight};
}

[[noreturn]] void FailType(const std::string& strWhere, const char* szRight) {
  Fail(strWhere, "has another type", szRight);
}

std::string At(const std::string& strWhere, std::size_t u) {
  return strWhere + '[' + std::to_string(u) + ']';
}

std::string At(const std::string& strWhere, const std::string& strKey) {
  return strWhere + '.' + strKey;
}

const Json& ArrayOf(const Json& value, const std::string& strWhere) {
  if (!value.is_array()) FailType(strWhere, "an array");
  return value;
}

std::string Utf8ToLatin1(const std::string& strText, const std::string& strWhere) {
  std::string strBytes;
  for (std::size_t u = 0; u < strText.size(); ++u) {
    const auto c = static_cast<unsigned char>(strText[u]);
    if (c < 0x80) {
      strBytes += strText[u];
    } else if (c <= 0xC3 && u + 1 < strText.size()) {
      strBytes += static_cast<char>((c << 6) | (static_cast<unsigned char>(strText[++u]) & 0x3F));
    } else {
      Fail(strWhere, "has a character above U+00FF", "one byte a character");
    }
  }
  return strBytes;
}

class Converter {
 public:
  explicit Converter(std::string* pContent) : m_out(*pContent) {}

  void Object(const Json& object, const JsonShape* pTable, const std::string& strWhere) {
    if (!object.is_object()) FailType(strWhere, "an object");
    std::set<std::string> known = {kJsonType, kJsonUnknown};
    Unknown(object, strWhere, [](const std::string& strAfter) { return strAfter.empty(); });
    std::set<std::string> written;
    for (const JsonShape* p = pTable; p->szKeyword != nullptr; ++p) {
      if (Shape(object, *p, strWhere, &known)) written.insert(p->szKeyword);
      Unknown(object, strWhere, [&](const std::string& strAfter) {
        return !strAfter.empty() && strAfter == p->szKeyword && written.count(strAfter) != 0;
      });
    }
    Unknown(object, strWhere, [&](const std::string& strAfter) {
      return !strAfter.empty() && written.count(strAfter) == 0;
    });
    for (const auto& [strKey, value] : object.items()) {
      if (known.count(strKey) == 0) Fail(At(strWhere, strKey), "is no key of this object", "");
    }
  }

 private:
  // False where the object has nothing of the keyword.
  bool Shape(const Json& object, const JsonShape& shape, const std::string& strWhere,
             std::set<std::string>* pKnown) {
    if (shape.eForm == JsonForm::Values) return Values(object, shape, strWhere, pKnown);
    pKnown->insert(shape.szKey);
    const auto found = object.find(shape.szKey);
    if (found == object.end()) return false;
    const std::string strPlace = At(strWhere, shape.szKey);
    if (shape.eForm == JsonForm::Objects || shape.eForm == JsonForm::Blocks) {
      std::size_t u = 0;
      for (const Json& item : ArrayOf(*found, strPlace)) {
        Braces(shape, [&] { Content(item, shape, At(strPlace, u)); });
        ++u;
      }
      return u > 0;
    }
    Braces(shape, [&] { Content(*found, shape, strPlace); });
    return true;
  }

  template <class Write>
  void Braces(const JsonShape& shape, Write&& write) {
    if (shape.szKeyword[0] == '\0') return write();
    m_out += std::string(shape.szKeyword) + " {\n";
    write();
    m_out += "\n}\n";
  }

  bool Values(const Json& object, const JsonShape& shape, const std::string& strWhere,
              std::set<std::string>* pKnown) {
    const std::vector<JsonColumn> columns = JsonColumns(shape);
    bool bAny = shape.szKeyword[0] == '\0';
    for (const JsonColumn& column : columns) {
      pKnown->insert(column.strKey);
      bAny = bAny || object.contains(column.strKey);
    }
    if (!bAny) return false;
    m_out += shape.szKeyword;
    m_out += ' ';
    Columns(object, columns, strWhere);
    m_out += '\n';
    return true;
  }

  void Columns(const Json& object, const std::vector<JsonColumn>& columns,
               const std::string& strWhere) {
    static const Json none = "";
    for (const JsonColumn& column : columns) {
      const auto found = object.find(column.strKey);
      if (found == object.end() && column.cKind != 't') {
        Fail(strWhere, "has no " + column.strKey, "\"" + column.strKey + "\"");
      }
      Value(found != object.end() ? *found : none, column.cKind, At(strWhere, column.strKey));
    }
  }

  // An object of columns, and nothing else.
  void Row(const Json& object, const std::vector<JsonColumn>& columns,
           const std::string& strWhere) {
    if (!object.is_object()) FailType(strWhere, "an object");
    Columns(object, columns, strWhere);
    for (const auto& [strKey, value] : object.items()) {
      const bool bKnown = std::any_of(columns.begin(), columns.end(),
                                      [&key = strKey](const auto& c) { return c.strKey == key; });
      if (!bKnown) Fail(At(strWhere, strKey), "is no key of this object", "");
    }
    m_out += '\n';
  }

  void Content(const Json& value, const JsonShape& shape, const std::string& strWhere) {
    switch (shape.eForm) {
      case JsonForm::Object:
      case JsonForm::Objects:
        return Row(value, JsonColumns(shape), strWhere);
      case JsonForm::Rows:
        return Rows(value, JsonColumns(shape), strWhere);
      case JsonForm::Vector:
        m_out += std::to_string(ArrayOf(value, strWhere).size()) + ' ';
        [[fallthrough]];
      case JsonForm::Numbers:
        return Numbers(value, strWhere);
      case JsonForm::Matrix:
        return Matrix(value, strWhere);
      case JsonForm::Trafo:
        return Trafo(value, strWhere);
      case JsonForm::Name:
        m_out += std::to_string(kNameAlone) + ' ';
        return Value(value, 't', strWhere);
      case JsonForm::Block:
      case JsonForm::Blocks:
        return Object(value, shape.pBlock, strWhere);
      case JsonForm::Values:
        return;
    }
  }

  void Rows(const Json& value, const std::vector<JsonColumn>& columns,
            const std::string& strWhere) {
    std::size_t u = 0;
    for (const Json& row : ArrayOf(value, strWhere)) Row(row, columns, At(strWhere, u++));
  }

  void Numbers(const Json& value, const std::string& strWhere) {
    std::size_t u = 0;
    for (const Json& number : ArrayOf(value, strWhere)) Value(number, 'n', At(strWhere, u++));
  }

  void Matrix(const Json& value, const std::string& strWhere) {
    const std::size_t uColumns =
        ArrayOf(value, strWhere).empty() ? 0 : ArrayOf(value[0], At(strWhere, 0)).size();
    m_out += std::to_string(value.size()) + ' ' + std::to_string(uColumns) + '\n';
    std::size_t u = 0;
    for (const Json& row : value) {
      const std::string strPlace = At(strWhere, u++);
      if (ArrayOf(row, strPlace).size() != uColumns) {
        Fail(strPlace, "has another length than the first row", "rows of one length");
      }
      Numbers(row, strPlace);
      m_out += '\n';
    }
  }

  void Trafo(const Json& value, const std::string& strWhere) {
    if (!value.is_object() || value.size() != 2 || !value.contains("type") ||
        !value.contains("coefficients")) {
      FailType(strWhere, "{ \"type\": 1, \"coefficients\": [...] }");
    }
    Value(value["type"], 'i', At(strWhere, "type"));
    Numbers(value["coefficients"], At(strWhere, "coefficients"));
  }

  void Value(const Json& value, char cKind, const std::string& strWhere) {
    switch (cKind) {
      case 't':  // on a line of its own: lines are limited
        m_out += "\n\"" + JsonToText(value, strWhere) + "\"\n";
        return;
      case 'b':
        if (!value.is_boolean()) FailType(strWhere, "true or false");
        m_out += value.get<bool>() ? "1 " : "0 ";
        return;
      case 'u':
        return Integer(value, 0, std::numeric_limits<std::uint32_t>::max(), strWhere);
      case 'i':
        return Integer(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                       strWhere);
      default:
        return Number(value, strWhere);
    }
  }

  void Integer(const Json& value, std::int64_t iMin, std::int64_t iMax,
               const std::string& strWhere) {
    const bool bUnsigned = value.is_number_unsigned();
    const bool bFits =
        value.is_number_integer() &&
        (bUnsigned ? value.get<std::uint64_t>() <= static_cast<std::uint64_t>(iMax)
                   : value.get<std::int64_t>() >= iMin && value.get<std::int64_t>() <= iMax);
    if (!bFits) {
      Fail(strWhere, "is no whole number of this range",
           std::to_string(iMin) + " to " + std::to_string(iMax));
    }
    m_out += std::to_string(value.get<std::int64_t>()) + ' ';
  }

  void Number(const Json& value, const std::string& strWhere) {
    if (value.is_string()) {
      const std::string& strWord = value.get_ref<const std::string&>();
      for (const char* szWord : {"inf", "-inf", "nan", "-nan"}) {
        if (strWord != szWord) continue;
        m_out += strWord + ' ';
        return;
      }
    }
    if (!value.is_number()) FailType(strWhere, "a number");
    char szNumber[kZuShortestSize];
    m_out.append(szNumber, ZuFormatShortest(szNumber, value.get<double>()));
    m_out += ' ';
  }

  template <class Wanted>
  void Unknown(const Json& object, const std::string& strWhere, Wanted&& isWanted) {
    const auto found = object.find(kJsonUnknown);
    if (found == object.end()) return;
    const std::string strPlace = At(strWhere, kJsonUnknown);
    std::size_t u = 0;
    for (const Json& item : ArrayOf(*found, strPlace)) {
      const std::string strItem = At(strPlace, u++);
      if (!item.is_object() || !item.contains(kJsonText)) {
        FailType(strItem, "{ \"text\": ..., \"after\": ... }");
      }
      const Json after = item.value(kJsonAfter, Json(""));
      if (!after.is_string()) FailType(At(strItem, kJsonAfter), "a text");
      if (!isWanted(after.get<std::string>())) continue;
      m_out += JsonToRawText(item[kJsonText], At(strItem, kJsonText)) + '\n';
    }
  }

  static constexpr int kNameAlone = 4;  // a code without coefficients

  std::string& m_out;
};

}  // namespace

std::string JsonToRawText(const Json& value, const std::string& strWhere) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_object() && value.size() == 1 && value.contains(kJsonLatin1) &&
      value[kJsonLatin1].is_string()) {
    return Utf8ToLatin1(value[kJsonLatin1].get<std::string>(), strWhere);
  }
  FailType(strWhere, "a text");
}

std::string JsonToText(const Json& value, const std::string& strWhere) {
  std::string strText = JsonToRawText(value, strWhere);
  if (strText.find_first_of(std::string_view("\"\n\0", 3)) != std::string::npos) {
    Fail(strWhere, "holds a quote or a line end", "one line without quotes");
  }
  return strText;
}

void JsonToKeywords(const Json& object, const JsonShape* pTable, const std::string& strWhere,
                    std::string* pContent) {
  Converter(pContent).Object(object, pTable, strWhere);
}

}  // namespace zu::internal
