#include "zu/exchange/internal/xml_tree.h"

#include <algorithm>
#include <cstring>
#include <pugixml.hpp>
#include <sstream>

#include "zu/exchange/internal/photo_block.h"
#include "zu/foundation/number_text.h"

namespace zu::internal {

namespace {

constexpr int kXmlDepth = 64;

// The lines of places of a text that are asked for in their order.
class LineCounter {
 public:
  explicit LineCounter(std::string_view text) : m_text(text) {}

  std::uint64_t At(std::size_t uPlace) {
    if (uPlace < m_u) return m_uLine;
    uPlace = std::min(uPlace, m_text.size());
    m_uLine += static_cast<std::uint64_t>(
        std::count(m_text.begin() + static_cast<std::ptrdiff_t>(m_u),
                   m_text.begin() + static_cast<std::ptrdiff_t>(uPlace), '\n'));
    m_u = uPlace;
    return m_uLine;
  }

 private:
  std::string_view m_text;
  std::size_t m_u = 0;
  std::uint64_t m_uLine = 1;
};

[[noreturn]] void FailXml(const ZuExchangeFile& file, std::size_t uPlace,
                          const std::string& strText, const std::string& strRight) {
  FailExchange(file.strName, LineCounter(file.strText).At(uPlace), strText, strRight);
}

// A document type, entities of one's own and bytes that end a text for the parser.
void RefuseXmlExtras(const ZuExchangeFile& file) {
  const std::string& strText = file.strText;
  const std::size_t uNul = strText.find('\0');
  if (uNul != std::string::npos) FailXml(file, uNul, "has a byte 0", "text");
  for (std::size_t u = 0; (u = strText.find_first_of("<&", u)) != std::string::npos; ++u) {
    const auto Starts = [&](const char* sz) {
      return strText.compare(u, std::strlen(sz), sz) == 0;
    };
    if (Starts("<!--")) {
      u = std::min(strText.find("-->", u), strText.size() - 1);
    } else if (Starts("<![CDATA[")) {
      u = std::min(strText.find("]]>", u), strText.size() - 1);
    } else if (Starts("<!")) {
      FailXml(file, u, "has a document type, which is not read", "a file without <!...>");
    } else if (strText[u] == '&' && !(Starts("&lt;") || Starts("&gt;") || Starts("&amp;") ||
                                      Starts("&quot;") || Starts("&apos;") || Starts("&#"))) {
      FailXml(file, u, "has an entity of its own, " + ZuQuoted(strText.substr(u, 12)),
              "&amp; for an ampersand");
    }
  }
}

void TakeElement(const ZuExchangeFile& file, const pugi::xml_node& node, int iDepth,
                 LineCounter* pLines, XmlElement* pElement) {
  pElement->strName = node.name();
  pElement->uLine =
      pLines->At(static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, node.offset_debug())));
  if (iDepth > kXmlDepth) {
    FailExchange(file.strName, pElement->uLine, "is nested too deep", "64 levels at most");
  }
  for (const pugi::xml_attribute& attribute : node.attributes()) {
    pElement->attributes.emplace_back(attribute.name(), attribute.value());
  }
  for (const pugi::xml_node& child : node.children()) {
    if (child.type() == pugi::node_element) {
      pElement->children.emplace_back();
      TakeElement(file, child, iDepth + 1, pLines, &pElement->children.back());
    } else if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      pElement->strText += child.value();
    }
  }
}

void GiveElement(const XmlElement& element, pugi::xml_node* pNode) {
  pNode->set_name(element.strName.c_str());
  for (const auto& attribute : element.attributes) {
    pNode->append_attribute(attribute.first.c_str()).set_value(attribute.second.c_str());
  }
  if (!element.strText.empty()) {
    pNode->append_child(pugi::node_pcdata).set_value(element.strText.c_str());
  }
  for (const XmlElement& child : element.children) {
    pugi::xml_node node = pNode->append_child(pugi::node_element);
    GiveElement(child, &node);
  }
}

}  // namespace

const XmlElement* XmlElement::Find(const char* szName) const {
  const auto at = std::find_if(children.begin(), children.end(),
                               [&](const XmlElement& child) { return child.strName == szName; });
  return at == children.end() ? nullptr : &*at;
}

const std::string* XmlElement::Attribute(const char* szName) const {
  const auto at = std::find_if(attributes.begin(), attributes.end(),
                               [&](const auto& attribute) { return attribute.first == szName; });
  return at == attributes.end() ? nullptr : &at->second;
}

XmlElement& XmlElement::Add(const char* szName, std::string strContent) {
  children.emplace_back();
  children.back().strName = szName;
  children.back().strText = std::move(strContent);
  return children.back();
}

XmlElement ReadXml(const ZuExchangeFile& file) {
  RefuseXmlExtras(file);
  pugi::xml_document document;
  const pugi::xml_parse_result result =
      document.load_buffer(file.strText.data(), file.strText.size(),
                           pugi::parse_default | pugi::parse_trim_pcdata, pugi::encoding_utf8);
  if (!result) {
    FailXml(file, static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, result.offset)),
            "is no XML: " + std::string(result.description()), "a whole file");
  }
  LineCounter lines(file.strText);
  XmlElement root;
  TakeElement(file, document.document_element(), 0, &lines, &root);
  return root;
}

std::string WriteXml(const XmlElement& root) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version").set_value("1.0");
  declaration.append_attribute("encoding").set_value("UTF-8");
  pugi::xml_node node = document.append_child(pugi::node_element);
  GiveElement(root, &node);
  std::ostringstream stream;
  document.save(stream, "  ", pugi::format_indent, pugi::encoding_utf8);
  return stream.str();
}

}  // namespace zu::internal
