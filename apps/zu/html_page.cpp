#include "html_page.h"

#include <fstream>

#include "html_table.h"
#include "svg.h"
#include "zu/version.h"

namespace cli {
namespace {

constexpr char kStyle[] = R"(
:root{color-scheme:light dark;--ink:#1b1b1b;--paper:#fff;--soft:#59636e;--line:#d5d9de;--head:#f2f4f6;--mark:#eef3f9;--bar:#1f5fa8}
*{box-sizing:border-box}
body{font:15px/1.45 'DejaVu Sans',Verdana,sans-serif;color:var(--ink);background:var(--paper);max-width:1080px;margin:1.5em auto;padding:0 1em}
h1{font-size:1.5em;margin:.2em 0}h2{font-size:1.15em;margin:1.6em 0 .5em;border-bottom:1px solid var(--line)}
.verdict{background:var(--mark);border-left:6px solid var(--bar);padding:.8em 1em;font-size:1.1em}
.row{display:flex;flex-wrap:wrap;gap:10px;align-items:flex-start}svg{max-width:100%;height:auto}figure{margin:0;max-width:100%}
figcaption,.note{color:var(--soft);font-size:.9em;margin:.4em 0}figcaption{max-width:480px}
code{font:13px 'DejaVu Sans Mono',monospace;overflow-wrap:anywhere}li{overflow-wrap:anywhere}
@media(max-width:640px){body{margin:.5em auto;padding:0 .7em}.verdict{font-size:1em;padding:.6em .7em}svg{width:100%}figure{width:100%}}
@media print{:root{color-scheme:light}body{max-width:none;margin:0;padding:0;font-size:11px}.row{display:block}figure{display:inline-block;width:49%}.photos svg{display:inline-block;width:32%}svg,figure,.verdict,.keep{break-inside:avoid}h2,.note.above{break-after:avoid}.note{break-inside:avoid}}
)";

// Colours of drawings on a dark screen; a rule outweighs the attribute of the shape.
struct DarkColor {
  const char *szLight, *szDark;
};
constexpr DarkColor kDarkColors[] = {
    {"#ffffff", "#15191e"}, {"#fcfcfc", "#1b2027"}, {"#111111", "#f0f3f6"}, {"#222222", "#dfe4ea"},
    {"#333333", "#c9d1d9"}, {"#555555", "#8b949e"}, {"#777777", "#9aa4ae"}, {"#999999", "#626b75"},
    {"#dddddd", "#30363d"}, {"#c1272d", "#ff7b72"}, {"#8aa4c4", "#5f86b5"}, {"#5b84b1", "#6ea8e6"},
    {"#1f5fa8", "#6cb0ff"}, {"#2b8a3e", "#56d364"}, {"#b8860b", "#e3b341"}, {"#8a5a2b", "#d9a066"}};

std::string DarkStyle() {
  std::string strStyle =
      "@media screen and (prefers-color-scheme:dark){:root{--ink:#e6edf3;--paper:#15191e;"
      "--soft:#9aa4ae;--line:#30363d;--head:#21262d;--mark:#1c2733;--bar:#6cb0ff}\n";
  for (const DarkColor& color : kDarkColors) {
    for (const char* szWhat : {"fill", "stroke"}) {
      strStyle += std::string("svg [") + szWhat + "='" + color.szLight + "']{" + szWhat + ":" +
                  color.szDark + "}";
    }
  }
  return strStyle + "}\n";
}

}  // namespace

std::string Section(const std::string& strTitle, const std::string& strContent) {
  return "<section class='keep'><h2>" + XmlText(strTitle) + "</h2>\n" + strContent + "</section>\n";
}

std::string LongSection(const std::string& strTitle, const std::string& strNote,
                        const std::string& strContent) {
  return "<section><h2>" + XmlText(strTitle) + "</h2>\n" +
         (strNote.empty() ? "" : "<p class='note above'>" + XmlText(strNote) + "</p>\n") +
         strContent + "</section>\n";
}

std::string CommandLine() {
  std::ifstream stream("/proc/self/cmdline", std::ios::binary);
  std::string strLine, strArgument;
  while (std::getline(stream, strArgument, '\0')) {
    const bool bQuote = strArgument.find_first_of(" \t\"'$&|;<>()*?") != std::string::npos;
    strLine += (strLine.empty() ? "" : " ") + (bQuote ? "'" + strArgument + "'" : strArgument);
  }
  return strLine;
}

std::string HtmlPage(const std::string& strTitle, const std::string& strHeading,
                     const std::string& strVerdict, const std::string& strBody) {
  return "<!DOCTYPE html>\n<html lang='en'><head><meta charset='utf-8'>\n"
         "<meta name='viewport' content='width=device-width, initial-scale=1'>\n<title>" +
         XmlText(strTitle) + "</title>\n<style>" + std::string(kStyle) + HtmlTableStyle() +
         DarkStyle() + "</style></head>\n<body>\n<h1>" + XmlText(strHeading) +
         "</h1>\n<p class='verdict'>" + XmlText(strVerdict) + "</p>\n" + strBody +
         "<p class='note'>Made by zu " + ZuVersion() + ".</p>\n</body></html>\n";
}

}  // namespace cli
