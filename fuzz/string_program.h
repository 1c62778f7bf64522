// A program of bytes over four Strings, run beside the same four texts as std::string. After every
// step the two must agree.
//
// A step is an operation byte and its operands: bytes that choose a register, a position or a
// length, and texts, which are a length byte and so many bytes. A program that ends in a step gets
// zeros.
#pragma once

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/input.h"
#include "zu/foundation/string.h"

class StringProgram {
 public:
  explicit StringProgram(std::string_view code) : m_code(code) {}

  void Run() {
    using Step = void (StringProgram::*)();
    static constexpr Step kSteps[] = {
        &StringProgram::Assign,   &StringProgram::Append,      &StringProgram::Prepend,
        &StringProgram::Replace,  &StringProgram::Delete,      &StringProgram::DeletePattern,
        &StringProgram::Gsub,     &StringProgram::ChangeCase,  &StringProgram::Search,
        &StringProgram::Cut,      &StringProgram::StaleView,   &StringProgram::SplitAndJoin,
        &StringProgram::Tokens,   &StringProgram::Replicate,   &StringProgram::Common,
        &StringProgram::Compare,  &StringProgram::Move,        &StringProgram::Placeholders,
        &StringProgram::Elements, &StringProgram::BeyondLimit, &StringProgram::CutAt};
    for (int n = 0; !m_code.empty() && n < 200; ++n) {
      m_iTarget = static_cast<int>(Byte() % 4);
      (this->*kSteps[Byte() % std::size(kSteps)])();
      for (int i = 0; i < 4; ++i) Check(i);
    }
  }

 private:
  static constexpr std::size_t kLongest = 40000;  // lengths wrap above 65535

  unsigned Byte() {
    if (m_code.empty()) return 0;
    const auto uByte = static_cast<unsigned char>(m_code.front());
    m_code.remove_prefix(1);
    return uByte;
  }
  std::string Text() {
    const unsigned uLength = Byte() % 40;
    const std::string text(m_code.substr(0, uLength));
    m_code.remove_prefix(text.size());
    return text;
  }
  // A literal, or a register, the target included.
  std::string Operand(String* pOut) {
    const unsigned u = Byte();
    const std::string text = u % 2 == 0 ? Text() : m_models[u / 2 % 4];
    *pOut = String(text.data(), static_cast<int>(text.size()));
    return text;
  }
  // From one before the text to one behind it.
  int Position() {
    return static_cast<int>(Byte() % (std::min<std::size_t>(Model().size(), 250) + 3)) - 1;
  }

  String& Target() { return m_strings[m_iTarget]; }
  std::string& Model() { return m_models[m_iTarget]; }
  static std::string Get(const String& s) {
    return std::string(s.chars(), static_cast<std::size_t>(s.length()));
  }
  static std::string Get(const SubString& s) {
    return std::string(s.chars(), static_cast<std::size_t>(s.Rest()));
  }
  static std::string Terminated(const std::string& text) { return text.c_str(); }

  void Check(int i) const {
    Require(m_strings[i].OK() && Get(m_strings[i]) == m_models[i]);
    Require(m_strings[i].chars()[m_strings[i].length()] == '\0');
  }
  bool HasRoom(std::size_t uMore) { return Model().size() + uMore <= kLongest; }

  void Assign() {
    const unsigned uForm = Byte();
    const String& source = m_strings[uForm / 4 % 4];
    const std::string& model = m_models[uForm / 4 % 4];
    switch (uForm % 4) {
      case 0:
        Target() = source;
        Model() = std::string(model);
        break;
      case 1:
        Target() = source.chars();
        Model() = Terminated(model);
        break;
      case 2:
        Target() = m_strings[uForm / 4 % 4].from(1);
        Model() = model.empty() ? std::string() : model.substr(1);
        break;
      default:
        Model() = Text();
        Target() = String(Model().data(), static_cast<int>(Model().size()));
    }
  }

  void Append() {
    const unsigned uForm = Byte(), uSource = uForm / 4 % 4;
    String& source = m_strings[uSource];
    const std::string model = m_models[uSource];
    if (!HasRoom(model.size() + 1)) return;
    switch (uForm % 4) {
      case 0:
        Target() += source;
        Model() += model;
        break;
      case 1:
        Target() += source.chars();
        Model() += Terminated(model);
        break;
      case 2:
        Target() += source.before(static_cast<int>(model.size() / 2));
        Model() += model.substr(0, model.size() / 2);
        break;
      default:
        Target() += static_cast<char>(uForm);
        Model() += static_cast<char>(uForm);
    }
  }

  void Prepend() {
    const unsigned uForm = Byte(), uSource = uForm / 4 % 4;
    String& source = m_strings[uSource];
    const std::string model = m_models[uSource];
    if (!HasRoom(model.size() + 1)) return;
    switch (uForm % 4) {
      case 0:
        Target().prepend(source);
        Model().insert(0, model);
        break;
      case 1:
        Target().prepend(source.chars());
        Model().insert(0, Terminated(model));
        break;
      case 2:
        Target().prepend(source.from(static_cast<int>(model.size() / 2)));
        Model().insert(0, model.substr(model.size() / 2));
        break;
      default:
        Target().prepend(static_cast<char>(uForm));
        Model().insert(0, 1, static_cast<char>(uForm));
    }
  }

  // A stretch becomes another text, which may be a stretch of the same string.
  void Replace() {
    const int iFirst = Position(), nCount = static_cast<int>(Byte()) - 1;
    const bool bValid =
        iFirst >= 0 && nCount >= 0 &&
        static_cast<std::size_t>(iFirst) + static_cast<std::size_t>(nCount) <= Model().size();
    const unsigned uForm = Byte();
    std::string text;
    if (uForm % 2 == 0) {
      const auto uHalf = Model().size() / 2;
      text = Model().substr(uHalf);
      if (!HasRoom(text.size())) return;
      Target().at(iFirst, nCount) = Target().from(static_cast<int>(uHalf));
    } else {
      String source;
      text = Operand(&source);
      if (!HasRoom(text.size())) return;
      Target().at(iFirst, nCount) = source;
    }
    if (bValid) {
      Model().replace(static_cast<std::size_t>(iFirst), static_cast<std::size_t>(nCount), text);
    }
  }

  void Delete() {
    const int iFirst = Position(), nCount = static_cast<int>(Byte()) - 1;
    const bool bValid =
        iFirst >= 0 && nCount > 0 &&
        static_cast<std::size_t>(iFirst) + static_cast<std::size_t>(nCount) <= Model().size();
    Require(Target().del(iFirst, nCount) == bValid);
    if (bValid) Model().erase(static_cast<std::size_t>(iFirst), static_cast<std::size_t>(nCount));
  }

  // The search by its description: forward from a start of 0 or more, else backward to a match
  // that ends at or before the start, -1 being the last character.
  static int Find(const std::string& text, const std::string& pattern, int iStart) {
    const int n = static_cast<int>(text.size()), l = static_cast<int>(pattern.size());
    if (l < 1 || l > n) return -1;
    const int iLast = iStart >= 0 ? n - l : std::min(n - l, n + iStart + 1 - l);
    int iFound = -1;
    for (int i = std::max(iStart, 0); i <= iLast; ++i) {
      if (text.compare(static_cast<std::size_t>(i), pattern.size(), pattern) != 0) continue;
      iFound = i;
      if (iStart >= 0) break;
    }
    return iFound;
  }

  void DeletePattern() {
    String pattern;
    const std::string text = Operand(&pattern);
    const int iStart = Position(), iFound = Find(Model(), text, iStart);
    Require(Target().del(pattern, iStart) == (iFound >= 0));
    if (iFound >= 0) Model().erase(static_cast<std::size_t>(iFound), text.size());
  }

  void Gsub() {
    String pattern, other;
    const std::string text = Operand(&pattern), with = Operand(&other);
    std::string result;
    int nFound = 0;
    for (std::size_t i = 0;; ++nFound) {
      const int iFound = Find(Model(), text, static_cast<int>(i));
      if (iFound < 0) {
        result += Model().substr(std::min(i, Model().size()));
        break;
      }
      result += Model().substr(i, static_cast<std::size_t>(iFound) - i) + with;
      i = static_cast<std::size_t>(iFound) + text.size();
      if (result.size() > kLongest) return;
    }
    if (result.size() > kLongest) return;
    Require(Target().gsub(pattern, other) == nFound);
    Model() = result;
  }

  // Only ASCII letters change in the "C" locale.
  void ChangeCase() {
    switch (Byte() % 4) {
      case 0:
        Target().upcase();
        for (char& c : Model()) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        break;
      case 1:
        Target().downcase();
        for (char& c : Model()) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        break;
      case 2:
        Target().reverse();
        std::reverse(Model().begin(), Model().end());
        break;
      default:
        Target().capitalize();
        Require(static_cast<std::size_t>(Target().length()) == Model().size());
        Model() = Get(Target());
    }
  }

  void Search() {
    String pattern;
    const std::string text = Operand(&pattern);
    const int iStart = Position() - static_cast<int>(Byte() % 3);
    const int iFound = Find(Model(), text, iStart);
    Require(Target().index(pattern, iStart) == iFound);
    Require(Target().contains(pattern) == (Find(Model(), text, 0) >= 0));
    int nFound = 0;
    for (int i = 0; (i = Find(Model(), text, i)) >= 0; ++i) ++nFound;
    Require(Target().freq(pattern) == nFound);
    const bool bWhole = !text.empty() && iStart >= 0 &&
                        Model().size() == static_cast<std::size_t>(iStart) + text.size() &&
                        Model().compare(static_cast<std::size_t>(iStart), text.size(), text) == 0;
    if (iStart >= 0) Require(Target().matches(pattern, iStart) == bWhole);
    Target().contains(pattern, iStart);
    const char c = text.empty() ? 'a' : text[0];
    Require(Target().index(c, iStart) == Find(Model(), std::string(1, c), iStart));
    Require(Target().index(text.c_str(), iStart) == Find(Model(), text.c_str(), iStart));
  }

  // What stands before, through, from and after a position, of which one behind the end is good
  // for nothing but `after`.
  void CutAt() {
    const int i = Position(), n = static_cast<int>(Model().size());
    const std::string model = Model();
    const auto u = static_cast<std::size_t>(std::max(i, 0));
    const bool bInside = i >= 0 && i <= n;
    Require(Get(Target().before(i)) == (bInside ? model.substr(0, u) : std::string()));
    Require(Get(Target().from(i)) == (bInside ? model.substr(u) : std::string()));
    Require(Get(Target().through(i)) == (i < n ? model.substr(0, i + 1U) : std::string()));
    Require(Get(Target().after(i)) == (i < n ? model.substr(i + 1U) : std::string()));
    const SubString half = Target().from(n / 2);
    const std::string strHalf = model.substr(model.size() / 2);
    Require(half.contains(Target().at(0, 1)) ==
            (n > 0 && strHalf.find(model[0]) != std::string::npos));
    Require(half.OK() && compare(half, half) == 0);
    Target().del(static_cast<char>(Byte()), -1);
    Model() = Get(Target());
  }

  // What stands before, through, from, after and at a match, into another register.
  void Cut() {
    String pattern;
    const std::string text = Operand(&pattern);
    const int iStart = Position(), iFound = Find(Model(), text, iStart);
    const unsigned uForm = Byte();
    const std::size_t uAt = iFound < 0 ? 0 : static_cast<std::size_t>(iFound);
    const std::string model = Model();
    std::string strOwn, strModel;
    switch (uForm % 5) {
      case 0:
        strOwn = Get(Target().before(pattern, iStart));
        strModel = model.substr(0, uAt);
        break;
      case 1:
        strOwn = Get(Target().through(pattern, iStart));
        strModel = model.substr(0, uAt + text.size());
        break;
      case 2:
        strOwn = Get(Target().from(pattern, iStart));
        strModel = model.substr(uAt);
        break;
      case 3:
        strOwn = Get(Target().after(pattern, iStart));
        strModel = model.substr(std::min(uAt + text.size(), model.size()));
        break;
      default:
        strOwn = Get(Target().at(pattern, iStart));
        strModel = model.substr(uAt, text.size());
    }
    if (iFound < 0) strModel.clear();
    Require(strOwn == strModel);
  }

  // A view whose parent has become shorter: what is left of it counts.
  void StaleView() {
    const int iFirst = Position(), nCount = static_cast<int>(Byte()) - 1;
    SubString view = Target().at(iFirst, nCount);
    const unsigned uForm = Byte();
    Target() = String(Model().data(), static_cast<int>(Model().size() / (1 + uForm % 3)));
    Require(view.Rest() <= view.length() && view.Rest() >= 0);
    const String copy(view);
    Require(copy.OK() && copy.length() == view.Rest());
    view.contains('a');
    compare(view, Target());
    view = "xyz";
    Require(Target().OK() && static_cast<std::size_t>(Target().length()) <= Model().size() + 3);
    Model() = Get(Target());
  }

  void SplitAndJoin() {
    String separator;
    const std::string text = Operand(&separator);
    String fields[8];
    const int nFields = split(Target(), fields, 8, separator);
    Require(nFields >= 0 && nFields <= 8);
    if (nFields == 0 || nFields == 8 || text.empty()) return;
    std::string joined = Get(join(fields, nFields, separator));
    const std::string& model = Model();
    if (joined.size() + text.size() == model.size()) joined += text;  // it ends with a separator
    Require(joined == model);
  }

  void Tokens() {
    const std::string delimiters = Terminated(Text());
    String tokens[5];
    std::vector<String> all;
    const int nTokens = tokenize(Target(), tokens, 5, String(delimiters.c_str()));
    const int nAll = tokenize(Target(), all, String(delimiters.c_str()));
    Require(nTokens == std::min(nAll, 5));
    const std::string model = Terminated(Model());
    std::size_t i = 0;
    for (int n = 0; n < nAll; ++n) {
      i = model.find_first_not_of(delimiters, i);
      Require(i != std::string::npos);
      const std::size_t uEnd = std::min(model.find_first_of(delimiters, i), model.size());
      Require(Get(all[static_cast<std::size_t>(n)]) == model.substr(i, uEnd - i));
      if (n < nTokens) Require(Get(tokens[n]) == model.substr(i, uEnd - i));
      i = uEnd;
    }
    Require(model.find_first_not_of(delimiters, i) == std::string::npos);
  }

  void Replicate() {
    String text;
    const std::string model = Operand(&text);
    const int n = static_cast<int>(Byte() % 20) - 2;
    if (model.size() * 20 > kLongest) return;
    Target() = replicate(text, n);
    Model().clear();
    for (int i = 0; i < n; ++i) Model() += model;
  }

  void Common() {
    String other;
    const std::string model = Operand(&other);
    const std::string strPrefix = Get(common_prefix(Target(), other));
    const std::string strSuffix = Get(common_suffix(Target(), other));
    std::size_t n = 0;
    while (n < model.size() && n < Model().size() && model[n] == Model()[n]) ++n;
    Require(strPrefix == model.substr(0, n));
    const std::size_t uShort = std::min(model.size(), Model().size());
    for (n = 0; n < uShort && model.rbegin()[static_cast<std::ptrdiff_t>(n)] ==
                                  Model().rbegin()[static_cast<std::ptrdiff_t>(n)];) {
      ++n;
    }
    Require(strSuffix == model.substr(model.size() - n));
    common_prefix(Target(), other, Position());
    common_suffix(Target(), other, -2 - Position());
  }

  static int Sign(int i) { return (i > 0) - (i < 0); }

  void Compare() {
    String other;
    const std::string model = Terminated(Operand(&other)), own = Terminated(Model());
    int iExpected = 0;
    for (std::size_t i = 0; i <= std::min(model.size(), own.size()) && iExpected == 0; ++i) {
      iExpected =
          static_cast<signed char>(own.c_str()[i]) - static_cast<signed char>(model.c_str()[i]);
    }
    Require(compare(Target(), other) == iExpected);
    Require(compare(Target(), other.chars()) == iExpected);
    Require((Target() == other) == (iExpected == 0) && (Target() < other) == (iExpected < 0));
    Require(Sign(fcompare(Target(), other)) == -Sign(fcompare(other, Target())));
  }

  void Move() {
    const unsigned uOther = Byte() % 4;
    if (static_cast<int>(uOther) == m_iTarget) return;
    String moved(std::move(m_strings[uOther]));
    m_strings[uOther] = Target();
    Target() = moved;
    std::swap(Model(), m_models[uOther]);
    Target().alloc(static_cast<int>(Byte()) * 4);
    Require(Target().allocation() >= Target().length());
  }

  // An argument with a placeholder never ends; a format may hold anything.
  void Placeholders() {
    String out;
    const int n = Sprintf(out, Target(), String("<a>"), String("b"));
    Require(out.OK() && n >= 0 && n <= Target().length());
  }

  void Elements() {
    const int i = Position() - static_cast<int>(Byte() % 3);
    const bool bValid = i >= 0 && static_cast<std::size_t>(i) < Model().size();
    Require(Target().elem(i) == (bValid ? Model()[static_cast<std::size_t>(i)] : '\0'));
    Target()[i] = 'x';
    if (bValid) Model()[static_cast<std::size_t>(i)] = 'x';
    Target().firstchar();
    Target().lastchar();
  }

  // Lengths wrap above 65535; the block holds what was written all the same.
  void BeyondLimit() {
    if (m_bBeyond || Model().empty()) return;
    m_bBeyond = true;
    String text(Target());
    for (int i = 0; i < 18; ++i) {
      text += text;
      Require(text.OK());
    }
    text = replicate('a', 65000);
    text.gsub('a', "aa");
    Require(text.OK());
    text.at(0, text.length()) = replicate('b', 65535);
    text.prepend(Target());
    Require(text.OK());
  }

  std::string_view m_code;
  String m_strings[4];
  std::string m_models[4];
  int m_iTarget = 0;
  bool m_bBeyond = false;
};
