// FileStorage's XML as nodes, and its three forms written.
#include <charconv>
#include <cmath>

#include "zu/exchange/internal/photo_block.h"
#include "zu/exchange/internal/storage_node.h"
#include "zu/exchange/internal/text_scan.h"
#include "zu/exchange/internal/xml_tree.h"

namespace zu::internal {

namespace {

constexpr int kNumbersInLine = 6;

// Numbers, and texts in quotes or without blanks.
StorageNode NodeOfText(const XmlElement& element) {
  StorageNode sequence;
  sequence.eKind = StorageNode::Kind::Sequence;
  sequence.uLine = element.uLine;
  const std::string& strText = element.strText;
  constexpr const char* kSpaces = " \t\r\n";
  for (std::size_t u = 0; (u = strText.find_first_not_of(kSpaces, u)) != std::string::npos;) {
    const bool bQuoted = strText[u] == '"';
    const std::size_t uStart = bQuoted ? u + 1 : u;
    const std::size_t uEnd =
        std::min(bQuoted ? strText.find('"', uStart) : strText.find_first_of(kSpaces, uStart),
                 strText.size());
    const std::string strWord = strText.substr(uStart, uEnd - uStart);
    StorageNode item = StorageScalar(strWord, element.uLine);
    if (bQuoted) item.eKind = StorageNode::Kind::Text;
    sequence.Add(std::move(item));
    u = uEnd + (bQuoted ? 1 : 0);
    if (u >= strText.size()) break;
  }
  if (sequence.numbers.size() + sequence.children.size() > 1) return sequence;
  StorageNode only;
  if (!sequence.children.empty()) only = std::move(sequence.children[0]);
  if (!sequence.numbers.empty()) {
    only.eKind = StorageNode::Kind::Number;
    only.dNumber = sequence.numbers[0];
  }
  only.uLine = element.uLine;
  return only;
}

StorageNode NodeOf(const XmlElement& element, const std::string& strFile, int iDepth) {
  if (iDepth > kStorageDepth) {
    FailExchange(strFile, element.uLine, "is nested too deep", "32 levels at most");
  }
  if (element.children.empty()) return NodeOfText(element);
  StorageNode node;
  node.uLine = element.uLine;
  node.eKind =
      element.children[0].strName == "_" ? StorageNode::Kind::Sequence : StorageNode::Kind::Map;
  for (const XmlElement& child : element.children) {
    StorageNode item = NodeOf(child, strFile, iDepth + 1);
    item.strName = child.strName;
    node.Add(std::move(item));
  }
  return node;
}

// Always with a point or an exponent: FileStorage takes other numbers for whole ones of 32 bits.
std::string RealText(double d) {
  char acText[32];
  std::string strText{acText, std::to_chars(acText, acText + sizeof acText, d).ptr};
  if (strText.find_first_of(".en") == std::string::npos) strText += ".0";
  return strText;
}

std::string WholeText(double d) {
  return std::fabs(d) <= 2147483647.0 ? std::to_string(static_cast<long>(d)) : RealText(d);
}

std::string QuotedText(const std::string& strText) {
  std::string strQuoted = "\"";
  for (const char c : strText) strQuoted += c == '\\' ? std::string("\\\\") : std::string(1, c);
  return strQuoted + '"';
}

std::string ElementType(const StorageItem& item) {
  return (item.uChannels > 1 ? std::to_string(item.uChannels) : "") + 'd';
}

// In quotes where FileStorage would take it for a number.
std::string SafeElementType(const StorageItem& item) {
  return item.uChannels > 1 ? QuotedText(ElementType(item)) : ElementType(item);
}

std::size_t RowsOf(const StorageItem& item) {
  return item.values.size() / (item.uColumns * item.uChannels);
}

std::string NumberList(const std::vector<double>& values, const std::string& strLineStart,
                       const char* szBetween) {
  std::string strList;
  int i = 0;
  for (const double d : values) {
    const bool bWrap = i > 0 && i % kNumbersInLine == 0;
    if (i > 0) strList += szBetween;
    if (i > 0) strList += bWrap ? '\n' + strLineStart : " ";
    strList += RealText(d);
    ++i;
  }
  return strList;
}

void WriteYaml(const StorageItem& item, const std::string& strIndent, std::string* pText) {
  const bool bUnnamed = item.strName.empty();
  *pText += strIndent + (bUnnamed ? "-" : item.strName + ":");
  const std::string strInner = strIndent + "   ";
  switch (item.eKind) {
    case StorageItem::Kind::Whole:
      *pText += ' ' + WholeText(item.dNumber) + '\n';
      break;
    case StorageItem::Kind::Number:
      *pText += ' ' + RealText(item.dNumber) + '\n';
      break;
    case StorageItem::Kind::Text:
      *pText += ' ' + QuotedText(item.texts.at(0)) + '\n';
      break;
    case StorageItem::Kind::Texts:
      *pText += '\n';
      for (const std::string& strText : item.texts) {
        *pText += strInner + "- " + QuotedText(strText) + '\n';
      }
      break;
    case StorageItem::Kind::Matrix:
      *pText += " !!opencv-matrix\n" + strInner + "rows: " + std::to_string(RowsOf(item)) + '\n' +
                strInner + "cols: " + std::to_string(item.uColumns) + '\n' + strInner +
                "dt: " + SafeElementType(item) + '\n' + strInner + "data: [ " +
                NumberList(item.values, strInner + "    ", ",") + " ]\n";
      break;
    case StorageItem::Kind::Sequence:
      *pText += '\n';
      for (const StorageItem& inner : item.items) WriteYaml(inner, strInner, pText);
      break;
  }
}

void WriteJson(const StorageItem& item, const std::string& strIndent, std::string* pText) {
  *pText += strIndent + (item.strName.empty() ? "" : QuotedText(item.strName) + ": ");
  const std::string strInner = strIndent + "  ";
  switch (item.eKind) {
    case StorageItem::Kind::Whole:
      *pText += WholeText(item.dNumber);
      break;
    case StorageItem::Kind::Number:
      *pText += RealText(item.dNumber);
      break;
    case StorageItem::Kind::Text:
      *pText += QuotedText(item.texts.at(0));
      break;
    case StorageItem::Kind::Texts: {
      const char* szBefore = "[ ";
      for (const std::string& strText : item.texts) {
        *pText += szBefore + QuotedText(strText);
        szBefore = ", ";
      }
      *pText += " ]";
      break;
    }
    case StorageItem::Kind::Matrix:
      *pText += "{\n" + strInner + "\"type_id\": \"opencv-matrix\",\n" + strInner +
                "\"rows\": " + std::to_string(RowsOf(item)) + ",\n" + strInner +
                "\"cols\": " + std::to_string(item.uColumns) + ",\n" + strInner + "\"dt\": \"" +
                ElementType(item) + "\",\n" + strInner + "\"data\": [ " +
                NumberList(item.values, strInner + "  ", ",") + " ]\n" + strIndent + "}";
      break;
    case StorageItem::Kind::Sequence: {
      const char* szBefore = "[\n";
      for (const StorageItem& inner : item.items) {
        *pText += szBefore;
        WriteJson(inner, strInner, pText);
        szBefore = ",\n";
      }
      *pText += "\n" + strIndent + "]";
      break;
    }
  }
}

XmlElement ElementOf(const StorageItem& item) {
  XmlElement element;
  element.strName = item.strName.empty() ? "_" : item.strName;
  switch (item.eKind) {
    case StorageItem::Kind::Whole:
      element.strText = WholeText(item.dNumber);
      break;
    case StorageItem::Kind::Number:
      element.strText = RealText(item.dNumber);
      break;
    case StorageItem::Kind::Text:
    case StorageItem::Kind::Texts:
      for (const std::string& strText : item.texts) {
        element.strText += (element.strText.empty() ? "\"" : " \"") + strText + '"';
      }
      break;
    case StorageItem::Kind::Matrix:
      element.attributes = {{"type_id", "opencv-matrix"}};
      element.Add("rows", std::to_string(RowsOf(item)));
      element.Add("cols", std::to_string(item.uColumns));
      element.Add("dt", SafeElementType(item));
      element.Add("data", NumberList(item.values, "", ""));
      break;
    case StorageItem::Kind::Sequence:
      for (const StorageItem& inner : item.items) element.children.push_back(ElementOf(inner));
      break;
  }
  return element;
}

}  // namespace

StorageNode ReadStorage(const ZuExchangeFile& file) {
  const std::size_t uFirst = file.strText.find_first_not_of("\xef\xbb\xbf \t\r\n");
  if (uFirst == std::string::npos || file.strText[uFirst] != '<') return ReadStorageText(file);
  const XmlElement root = ReadXml(file);
  if (root.strName != "opencv_storage") {
    FailExchange(file.strName, root.uLine, "is XML, but no file of FileStorage",
                 "<opencv_storage>");
  }
  StorageNode node = NodeOf(root, file.strName, 0);
  node.eKind = StorageNode::Kind::Map;
  return node;
}

std::string WriteStorage(const std::vector<StorageItem>& items, StorageForm eForm) {
  if (eForm == StorageForm::Xml) {
    XmlElement root;
    root.strName = "opencv_storage";
    for (const StorageItem& item : items) root.children.push_back(ElementOf(item));
    return WriteXml(root);
  }
  std::string strText = eForm == StorageForm::Json ? "{\n" : "%YAML:1.0\n---\n";
  const StorageItem* pLast = items.empty() ? nullptr : &items.back();
  for (const StorageItem& item : items) {
    if (eForm == StorageForm::Yaml) {
      WriteYaml(item, "", &strText);
      continue;
    }
    WriteJson(item, "  ", &strText);
    strText += &item == pLast ? "\n}\n" : ",\n";
  }
  return strText;
}

}  // namespace zu::internal
