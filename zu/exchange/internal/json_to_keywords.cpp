#include "zu/exchange/internal/json_to_keywords.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <set>
#include <tuple>

#include "zu/foundation/numbers.h"
#include "zu/project/keyword_block.h"

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

std::string RawText(const Json& value, const std::string& strWhere) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_object() && value.size() == 1 && value.contains(kJsonLatin1) &&
      value[kJsonLatin1].is_string()) {
    return Utf8ToLatin1(value[kJsonLatin1].get<std::string>(), strWhere);
  }
  FailType(strWhere, "a text");
}

std::string Text(const Json& value, const std::string& strWhere) {
  std::string strText = RawText(value, strWhere);
  if (strText.find_first_of(std::string_view("\"\n\0", 3)) != std::string::npos) {
    Fail(strWhere, "holds a quote or a line end", "one line without quotes");
  }
  return strText;
}

// What stands beside one thing of a block.
struct Beside {
  std::vector<std::string> above, end;
  std::string strOpen, strBehind;
};

// Texts on lines of their own.
void AddLines(const std::vector<std::string>& lines, std::string* pOut) {
  if (!lines.empty() && !pOut->empty() && pOut->back() != '\n') *pOut += '\n';
  for (const std::string& strLine : lines) *pOut += strLine + '\n';
}

// A text behind what was written last.
void AddBehind(const std::string& strText, std::string* pOut) {
  if (strText.empty()) return;
  pOut->resize(pOut->find_last_not_of(" \n") + 1);
  *pOut += ' ' + strText + '\n';
}

// The comments of an object by what they belong to.
class JsonComments {
 public:
  JsonComments(const Json& object, const std::string& strObject) {
    const auto found = object.find(kJsonComments);
    if (found == object.end()) return;
    const std::string strWhere = At(strObject, kJsonComments);
    std::size_t u = 0;
    for (const Json& item : ArrayOf(*found, strWhere)) Add(item, At(strWhere, u++));
  }

  // Each once; empty the second time.
  Beside Take(const std::string& strKeyword, std::size_t uNumber, std::size_t uRow = 0) {
    const auto found = m_beside.find({strKeyword, uNumber, uRow});
    if (found == m_beside.end()) return {};
    Beside beside = std::move(found->second);
    m_beside.erase(found);
    return beside;
  }
  // Of the row at this place, or of that id where rows have come or gone.
  Beside TakeRow(const std::string& strKeyword, std::size_t uRow, const Json& row) {
    if (m_rows.empty()) return {};
    const Json id = row.is_object() ? row.value("id", Json()) : Json();
    const auto found =
        m_rows.find({strKeyword, id.is_number_unsigned() ? id.get<std::size_t>() : 0});
    if (found == m_rows.end()) return {};
    const bool bHere = found->second.count(uRow) != 0;
    const std::size_t uTaken = bHere ? uRow : *found->second.begin();
    found->second.erase(uTaken);
    if (found->second.empty()) m_rows.erase(found);
    return Take(strKeyword, 1, uTaken);
  }
  // Of what the object does not have.
  void AddRest(std::string* pOut) const {
    for (const auto& [whose, beside] : m_beside) {
      AddLines(beside.above, pOut);
      for (const std::string& strLine : {beside.strOpen, beside.strBehind}) {
        if (!strLine.empty()) AddLines({strLine}, pOut);
      }
      AddLines(beside.end, pOut);
    }
  }

 private:
  void Add(const Json& item, const std::string& strWhere) {
    if (!item.is_object() || !item.contains(kJsonText))
      FailType(strWhere, "{ \"text\": \"; ...\" }");
    const std::string strText = RawText(item[kJsonText], At(strWhere, kJsonText));
    if (strText.find_first_of(";!") != 0 || strText.find('\n') != strText.npos) {
      Fail(At(strWhere, kJsonText), "is no comment", "\"; one line\"");
    }
    const Json place = item.value("place", Json(kJsonPlaces[eZuCommentAbove]));
    const auto* const pPlace = std::find_if(std::begin(kJsonPlaces), std::end(kJsonPlaces),
                                            [&place](const char* sz) { return place == sz; });
    if (pPlace == std::end(kJsonPlaces)) {
      Fail(At(strWhere, "place"), "is no place", "above, behind, open or end");
    }
    const Json keyword = item.value("keyword", Json(""));
    if (!keyword.is_string()) FailType(At(strWhere, "keyword"), "a text");
    const std::size_t uRow = Count(item, "row", 0, strWhere), uId = Count(item, "id", 0, strWhere);
    if (uRow > 0) m_rows[{keyword.get<std::string>(), uId}].insert(uRow);
    Beside& beside =
        m_beside[{keyword.get<std::string>(), Count(item, "number", 1, strWhere), uRow}];
    const bool bOpen = pPlace - kJsonPlaces == eZuCommentOpen;
    std::string& strLine = bOpen ? beside.strOpen : beside.strBehind;
    if ((bOpen || pPlace - kJsonPlaces == eZuCommentBehind) && strLine.empty()) {
      strLine = strText;
    } else {
      (pPlace - kJsonPlaces == eZuCommentEnd ? beside.end : beside.above).push_back(strText);
    }
  }

  static std::size_t Count(const Json& item, const char* szKey, std::size_t uAbsent,
                           const std::string& strWhere) {
    const auto found = item.find(szKey);
    if (found == item.end()) return uAbsent;
    if (!found->is_number_unsigned()) FailType(At(strWhere, szKey), "a whole number");
    return found->get<std::size_t>();
  }

  std::map<std::tuple<std::string, std::size_t, std::size_t>, Beside> m_beside;
  std::map<std::pair<std::string, std::size_t>, std::set<std::size_t>> m_rows;  // by id
};

class Converter {
 public:
  explicit Converter(std::string* pContent) : m_out(*pContent) {}

  // KEYWORD { what the object holds }
  void Block(const Json& object, const char* szKeyword, const JsonShape* pTable,
             const std::string& strWhere) {
    if (!object.is_object()) FailType(strWhere, "an object");
    JsonComments comments(object, strWhere);
    const Beside own = comments.Take("", 1), rows = comments.Take(szKeyword, 1);
    AddLines(own.above, &m_out);
    m_out += std::string(szKeyword) + " {\n";
    AddBehind(own.strOpen.empty() ? rows.strOpen : own.strOpen, &m_out);
    Items(object, szKeyword, pTable, strWhere, &comments);
    AddLines(rows.end, &m_out);
    comments.AddRest(&m_out);
    AddLines(own.end, &m_out);
    m_out += "\n}\n";
    AddBehind(own.strBehind, &m_out);
  }

  // A keyword that no block knows.
  void Unknown(const Json& item, const std::string& strWhere) {
    const Beside beside = JsonComments(item, strWhere).Take("", 1);
    AddLines(beside.above, &m_out);
    m_out += RawText(item.value(kJsonText, Json()), At(strWhere, kJsonText)) + '\n';
    AddBehind(beside.strBehind, &m_out);
  }

 private:
  void Items(const Json& object, const char* szKeyword, const JsonShape* pTable,
             const std::string& strWhere, JsonComments* pComments) {
    std::set<std::string> known = {kJsonType, kJsonUnknown, kJsonComments};
    Unknown(object, strWhere, [](const std::string& strAfter) { return strAfter.empty(); });
    std::set<std::string> written;
    for (const JsonShape* p = pTable; p->szKeyword != nullptr; ++p) {
      const char* const szOwn = p->szKeyword[0] != '\0' ? p->szKeyword : szKeyword;
      if (Shape(object, *p, szOwn, strWhere, pComments, &known)) written.insert(p->szKeyword);
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

  // False where the object has nothing of the keyword. szOwn: the keyword, or that of the block.
  bool Shape(const Json& object, const JsonShape& shape, const char* szOwn,
             const std::string& strWhere, JsonComments* pComments, std::set<std::string>* pKnown) {
    if (shape.eForm == JsonForm::Values) return Values(object, shape, strWhere, pComments, pKnown);
    pKnown->insert(shape.szKey);
    const auto found = object.find(shape.szKey);
    if (found == object.end()) return false;
    const std::string strPlace = At(strWhere, shape.szKey);
    if (shape.eForm == JsonForm::Block) {
      Block(*found, shape.szKeyword, shape.pBlock, strPlace);
    } else if (shape.eForm == JsonForm::Blocks || shape.eForm == JsonForm::Objects) {
      std::size_t u = 0;
      for (const Json& item : ArrayOf(*found, strPlace)) {
        const std::string strItem = At(strPlace, u++);
        if (shape.eForm == JsonForm::Blocks) {
          Block(item, shape.szKeyword, shape.pBlock, strItem);
        } else {
          Braces(shape, pComments->Take(szOwn, u), [&] { Row(item, JsonColumns(shape), strItem); });
        }
      }
      return u > 0;
    } else if (shape.eForm == JsonForm::Rows) {
      Braces(shape, pComments->Take(szOwn, 1),
             [&] { Rows(*found, JsonColumns(shape), szOwn, strPlace, pComments); });
    } else {
      Braces(shape, pComments->Take(szOwn, 1), [&] { Content(*found, shape, strPlace); });
    }
    return true;
  }

  template <class Write>
  void Braces(const JsonShape& shape, const Beside& beside, Write&& write) {
    if (shape.szKeyword[0] == '\0') return write();
    AddLines(beside.above, &m_out);
    m_out += std::string(shape.szKeyword) + " {\n";
    AddBehind(beside.strOpen, &m_out);
    write();
    AddLines(beside.end, &m_out);
    m_out += "\n}\n";
    AddBehind(beside.strBehind, &m_out);
  }

  bool Values(const Json& object, const JsonShape& shape, const std::string& strWhere,
              JsonComments* pComments, std::set<std::string>* pKnown) {
    const std::vector<JsonColumn> columns = JsonColumns(shape);
    bool bAny = shape.szKeyword[0] == '\0';
    for (const JsonColumn& column : columns) {
      pKnown->insert(column.strKey);
      bAny = bAny || object.contains(column.strKey);
    }
    if (!bAny) return false;
    const Beside beside = pComments->Take(shape.szKeyword, 1);
    AddLines(beside.above, &m_out);
    m_out += shape.szKeyword;
    m_out += ' ';
    Columns(object, columns, strWhere);
    m_out += '\n';
    AddBehind(beside.strBehind, &m_out);
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
        return Row(value, JsonColumns(shape), strWhere);
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
      default:
        return;
    }
  }

  void Rows(const Json& value, const std::vector<JsonColumn>& columns, const char* szOwn,
            const std::string& strWhere, JsonComments* pComments) {
    std::size_t u = 0;
    for (const Json& row : ArrayOf(value, strWhere)) {
      const std::string strRow = At(strWhere, u++);
      const Beside beside = pComments->TakeRow(szOwn, u, row);
      AddLines(beside.above, &m_out);
      Row(row, columns, strRow);
      AddBehind(beside.strBehind, &m_out);
    }
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
        m_out += "\n\"" + Text(value, strWhere) + "\"\n";
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
      if (isWanted(after.get<std::string>())) Unknown(item, strItem);
    }
  }

  static constexpr int kNameAlone = 4;  // a code without coefficients

  std::string& m_out;
};

}  // namespace

void JsonToKeywords(const Json& object, const char* szKeyword, const JsonShape* pTable,
                    const std::string& strWhere, std::string* pText) {
  Converter(pText).Block(object, szKeyword, pTable, strWhere);
}

void JsonToUnknown(const Json& item, const std::string& strWhere, std::string* pText) {
  Converter(pText).Unknown(item, strWhere);
}

void JsonToLastComments(const Json& root, std::string* pText) {
  const Beside beside = JsonComments(root, "").Take("", 1);
  AddLines(beside.above, pText);
  AddLines(beside.end, pText);
}

}  // namespace zu::internal
