// Runs a reader over a text and notes what every handler gets, in the order of the calls.
//
//   Trace().Run("PAIR 1 2.5 BLOCK { INT 7 }")  ==  "(1 2.5)<7>"
//
// Keywords at every level: INT (data) notes 7; PAIR, ROWS, NAMED, VALUES are readers of values;
// BLOCK takes the same keywords again; LOOK only looks at its token; GIVE gives it back; OPEN
// reads on over a { through the parser and leaves the block to the reader.
#pragma once

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/reader.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // never deleted through the base

// Shows the state that a run must give back.
class OpenReader : public ZuReader {
 public:
  using ZuReader::ZuReader;

  bool IsAtRest(int iKeywords) const {
    return m_InstanceList.Count() == 1 && m_pCurrentInstance == m_InstanceList.First() &&
           m_pCurrentInstance->Count() == iKeywords && m_iOpenHandlers == 0;
  }
};

#pragma GCC diagnostic pop

class Trace : public LinkHdl {
 public:
  enum Option : int {
    kPlain = 0,
    kGoOn = 1,         // an error handler that notes !status@line and goes on
    kTellUnknown = 2,  // a handler that notes ?KEYWORD@line and skips the value
    kUnnamed = 4,      // "_NOT_DEFINED" takes pairs, with or without braces
    kOverBlockEnd = 8,
    kSimple = 16,  // simple mode with PAIR as its object
  };

  // The notes; behind a | the entries of the error list as status@line.
  std::string Run(std::string_view text, int nOptions = kPlain) {
    const TempFile file(text);
    return RunFile(file.Path(), nOptions);
  }
  std::string RunFile(const char* szPath, int nOptions) {
    m_strNotes.clear();
    m_iRegistered = 0;
    OpenReader reader(szPath);
    if ((nOptions & kSimple) != 0) {
      reader.SetSimpleMode(true);
      Register(reader, ZuReaderObject(Link(this, &Trace::Pair)));
    }
    if ((nOptions & kUnnamed) != 0) Register(reader, ZuReaderObject(Link(this, &Trace::Unnamed)));
    if ((nOptions & kGoOn) != 0) reader.SetParserErrorHdl(Link(this, &Trace::Fault));
    reader.SkipUnknownToken((nOptions & kTellUnknown) == 0);
    reader.SetUnknownTokenHdl(Link(this, &Trace::Unknown));
    RegisterAll([&](ZuReaderObject& object) { reader.RegisterObject(object); });
    const int iKeywords = m_iRegistered;
    m_iResult = reader.DoProcess((nOptions & kOverBlockEnd) != 0);
    m_bAtRest = reader.IsAtRest(iKeywords);
    m_eStatus = reader.GetParser().GetStatus().m_eStatus;
    std::string strErrors;
    for (const ZuReaderError* p = reader.GetReaderErrorList().First(); p; p = p->Next()) {
      strErrors += ' ' + std::to_string(p->m_eStatus) + '@' + std::to_string(p->m_uLine);
    }
    return strErrors.empty() ? m_strNotes : m_strNotes + " |" + strErrors;
  }

  int m_iResult = 0;
  bool m_bAtRest = false;
  eZuParserStatus m_eStatus = ParserStatusOK;

 private:
  template <class Function>
  void RegisterAll(Function&& registerObject) {
    ZuReaderObject objects[] = {
        {"PAIR", Link(this, &Trace::Pair)},     {"ROWS", Link(this, &Trace::Rows)},
        {"NAMED", Link(this, &Trace::Named)},   {"VALUES", Link(this, &Trace::Values)},
        {"BLOCK", Link(this, &Trace::Block)},   {"LOOK", Link(this, &Trace::Look)},
        {"GIVE", Link(this, &Trace::GiveBack)}, {"OPEN", Link(this, &Trace::Open)},
        {"INT", Link(this, &Trace::Int)},
    };
    for (ZuReaderObject& object : objects) registerObject(object);
    m_iRegistered += static_cast<int>(std::size(objects));
  }
  void Register(ZuReader& reader, ZuReaderObject object) {
    reader.RegisterObject(object);
    ++m_iRegistered;
  }

  int Int(ZuReaderObject* pObject) {
    Note(pObject->GetStreamParser().GetTokenInt());
    return 1;
  }
  int Pair(ZuReaderObject* pObject) {
    const int i = pObject->TakeInt();
    const double d = pObject->TakeNumber();
    Note('(', i, ' ', d, ')');
    return 1;
  }
  int Rows(ZuReaderObject* pObject) {
    pObject->ReadRows([&] { Pair(pObject); });
    Note('.');
    return 1;
  }
  int Named(ZuReaderObject* pObject) {
    Pair(pObject);
    Pair(pObject);
    const String strName = pObject->TakeString();
    Note(strName.chars());
    return 1;
  }
  int Values(ZuReaderObject* pObject) {
    Note('[', pObject->TakeInt());
    for (int i = 0; i < 3; ++i) Note(' ', pObject->TakeValue());
    Note(']');
    return 1;
  }
  int Block(ZuReaderObject* pObject) {
    Note('<');
    RegisterAll([&](ZuReaderObject& object) { pObject->RegisterObject(object); });
    pObject->DoProcess();
    Note('>');
    return 1;
  }
  int Look(ZuReaderObject* pObject) {
    Note('L', pObject->GetStreamParser().GetToken().m_eType);
    return 1;
  }
  int GiveBack(ZuReaderObject* pObject) {
    Note('G');
    pObject->GetStreamParser().SkipNextParse(true);
    return 1;
  }
  int Open(ZuReaderObject* pObject) {
    ZuReader* pReader = pObject->GetReader();
    while (pReader->GetParser().ParseForToken(pReader->GetStream()).m_eType != eZuTokenEof) {
      if (pObject->IsBlockOpen()) break;
    }
    Note('O');
    return 1;
  }
  int Unnamed(ZuReaderObject* pObject) {
    if (pObject->IsBlockOpen()) pObject->TakeBlockOpen();
    return Pair(pObject);
  }
  long Unknown(ZuReader* pReader) {
    Note('?', pReader->GetParser().GetToken().m_szText, '@',
         pReader->GetParser().GetStatus().m_uLine);
    pReader->SkipUnknownValue();
    return 1;
  }
  long Fault(ZuReader* pReader) {
    const ZuReaderError* pError = pReader->GetReaderErrorList().Last();
    Note('!', pError->m_eStatus, '@', pError->m_uLine);
    return 1;
  }

  template <class... T>
  void Note(const T&... values) {
    ((m_strNotes += Told(values)), ...);
  }
  static std::string Told(char c) { return {c}; }
  template <class T>
  static std::string Told(const T& value) {
    return Text(value);
  }

  std::string m_strNotes;
  int m_iRegistered = 0;
};
