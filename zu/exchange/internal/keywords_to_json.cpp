#include "zu/exchange/internal/keywords_to_json.h"

#include <cmath>
#include <cstring>
#include <map>
#include <sstream>

#include "zu/foundation/parser.h"

namespace zu::internal {

namespace {

const char* WordOf(double d) {
  return std::isnan(d) ? std::signbit(d) ? "-nan" : "nan" : d > 0 ? "inf" : "-inf";
}

class Converter {
 public:
  explicit Converter(const std::string& strContent) : m_stream(strContent) { Next(); }

  // The keywords of a block up to its }.
  void Items(const JsonShape* pTable, const ZuKeywordBlock* pBlock, Json* pObject) {
    if (pTable->szKeyword[0] == '\0') {
      Values(*pTable, nullptr, pObject);
    } else {
      std::map<std::string, int> count;
      while (!IsEnd()) Item(pTable, pBlock, &count, pObject);
      if (pBlock != nullptr) Unwritten(pTable, *pBlock, count, pObject);
    }
    if (pBlock != nullptr) Kept(*pBlock, pObject);
  }

 private:
  void Next() { m_parser.ReadToken(m_stream); }
  const ZuParserToken& Token() const { return m_parser.GetToken(); }
  bool IsEnd() const {
    return Token().m_eType == eZuTokenBlockClose || Token().m_eType == eZuTokenEof;
  }

  // Unknown keywords are no part of what a record writes.
  void Item(const JsonShape* pTable, const ZuKeywordBlock* pBlock,
            std::map<std::string, int>* pCount, Json* pObject) {
    const std::string strKeyword = Token().m_szText;
    while (pTable->szKeyword != nullptr && strKeyword != pTable->szKeyword) ++pTable;
    Next();
    if (pTable->szKeyword == nullptr) return;
    const bool bBraces = Token().m_eType == eZuTokenBlockOpen;
    if (bBraces) Next();
    Values(*pTable, Inner(pBlock, strKeyword, (*pCount)[strKeyword]++), pObject);
    if (bBraces) Next();
  }

  static const ZuKeywordBlock* Inner(const ZuKeywordBlock* pBlock, const std::string& strKeyword,
                                     int iWanted) {
    if (pBlock == nullptr) return nullptr;
    for (const ZuKeywordBlock& inner : pBlock->m_blocks) {
      if (inner.m_strKeyword == strKeyword && iWanted-- == 0) return &inner;
    }
    return nullptr;
  }

  void Values(const JsonShape& shape, const ZuKeywordBlock* pInner, Json* pObject) {
    if (shape.eForm == JsonForm::Values) return Columns(JsonColumns(shape), pObject);
    Json& value = (*pObject)[shape.szKey];
    switch (shape.eForm) {
      case JsonForm::Object:
        return Columns(JsonColumns(shape), &value);
      case JsonForm::Objects:
        return Columns(JsonColumns(shape), &value.emplace_back());
      case JsonForm::Rows:
        return Rows(JsonColumns(shape), &value);
      case JsonForm::Vector:
        Next();
        [[fallthrough]];
      case JsonForm::Numbers:
        return Numbers(&value);
      case JsonForm::Matrix:
        return Matrix(&value);
      case JsonForm::Trafo:
        value["type"] = Take('i');
        return Numbers(&value["coefficients"]);
      case JsonForm::Name:
        Next();
        value = Take('t');
        return;
      case JsonForm::Block:
        return Items(shape.pBlock, pInner, &value);
      case JsonForm::Blocks:
        return Items(shape.pBlock, pInner, &value.emplace_back());
      case JsonForm::Values:
        return;
    }
  }

  void Columns(const std::vector<JsonColumn>& columns, Json* pObject) {
    for (const JsonColumn& column : columns) (*pObject)[column.strKey] = Take(column.cKind);
  }

  void Rows(const std::vector<JsonColumn>& columns, Json* pArray) {
    *pArray = Json::array();
    while (!IsEnd()) Columns(columns, &pArray->emplace_back());
  }

  void Numbers(Json* pArray) {
    *pArray = Json::array();
    while (!IsEnd()) pArray->push_back(Take('n'));
  }

  void Matrix(Json* pArray) {
    *pArray = Json::array();
    Next();
    const int iColumns = Token().m_iValue;
    Next();
    while (!IsEnd()) {
      Json& row = pArray->emplace_back(Json::array());
      for (int j = 0; j < iColumns && !IsEnd(); ++j) row.push_back(Take('n'));
    }
  }

  // A whole number stays one.
  Json Take(char cKind) {
    const ZuParserToken token = Token();
    Json value;
    if (cKind == 't') {
      value = TextToJson(token.m_szText);
    } else if (cKind == 'u') {
      value = token.GetId();
    } else if (cKind == 'b') {
      value = token.m_iValue != 0;
    } else if (token.m_eType == eZuTokenInt) {
      value = token.m_iValue;
    } else if (std::isfinite(token.GetNumber())) {
      value = token.GetNumber();
    } else {
      value = WordOf(token.GetNumber());
    }
    Next();
    return value;
  }

  static void Kept(const ZuKeywordBlock& block, Json* pObject) {
    for (const ZuUnknownKeyword& word : block.m_unknown) {
      Json& item = (*pObject)[kJsonUnknown].emplace_back();
      item[kJsonText] = TextToJson(word.m_strText);
      item[kJsonAfter] = word.m_strAfter;
      CommentsToJson(word.m_comments, &item);
    }
    CommentsToJson(block.m_comments, pObject);
  }

  // Blocks of which the record has nothing to write.
  static void Unwritten(const JsonShape* pTable, const ZuKeywordBlock& block,
                        const std::map<std::string, int>& count, Json* pObject) {
    for (; pTable->szKeyword != nullptr; ++pTable) {
      const ZuKeywordBlock* const pInner = Inner(&block, pTable->szKeyword, 0);
      if (pTable->eForm != JsonForm::Block || pInner == nullptr) continue;
      if (count.find(pTable->szKeyword) == count.end()) Kept(*pInner, &(*pObject)[pTable->szKey]);
    }
  }

  std::istringstream m_stream;
  ZuParser m_parser;
};

// Well-formed UTF-8: what the JSON library writes as it stands.
bool IsUtf8(std::string_view text) {
  const std::string strText(text);
  const std::string strKept = Json(strText).dump(-1, ' ', false, Json::error_handler_t::ignore);
  return Json::parse(strKept).get_ref<const std::string&>() == strText;
}

std::string Latin1ToUtf8(std::string_view text) {
  std::string strUtf8;
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    if (u < 0x80) {
      strUtf8 += c;
    } else {
      strUtf8 += static_cast<char>(0xC0 | (u >> 6));
      strUtf8 += static_cast<char>(0x80 | (u & 0x3F));
    }
  }
  return strUtf8;
}

}  // namespace

Json TextToJson(std::string_view text) {
  if (IsUtf8(text)) return std::string(text);
  return {{kJsonLatin1, Latin1ToUtf8(text)}};
}

void CommentsToJson(const std::vector<ZuFileComment>& comments, Json* pObject) {
  for (const ZuFileComment& comment : comments) {
    Json& item = (*pObject)[kJsonComments].emplace_back();
    item[kJsonText] = TextToJson(comment.m_strText);
    if (comment.m_ePlace != eZuCommentAbove) item["place"] = kJsonPlaces[comment.m_ePlace];
    if (!comment.m_strKeyword.empty()) item["keyword"] = comment.m_strKeyword;
    if (comment.m_uNumber != 1) item["number"] = comment.m_uNumber;
    if (comment.m_uRow != 0) item["row"] = comment.m_uRow;
    if (comment.m_uRow != 0) item["id"] = comment.m_uId;
  }
}

Json KeywordsToJson(const std::string& strContent, const JsonShape* pTable,
                    const ZuKeywordBlock& block) {
  Json object = Json::object();
  Converter(strContent).Items(pTable, &block, &object);
  return object;
}

}  // namespace zu::internal
