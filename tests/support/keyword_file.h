// A text read by a reader whose keywords are bound to variables, functions and links.
//
//   KeywordFile file("IDS { 17 4 } LAST 5");
//   file.On("IDS", [&](ZuReaderObject* p) { return ids.Read(p); }).On("LAST", &iLast).Run();
#pragma once

#include <deque>
#include <functional>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"

template <class Reader = ZuReader>
class BasicKeywordFile {
 public:
  explicit BasicKeywordFile(std::string_view text) : file(text), reader(file.Path()) {}

  template <class Target>
  BasicKeywordFile& On(const char* szKeyword, Target target) {
    if constexpr (std::is_pointer_v<Target> || std::is_same_v<Target, Link>) {
      ZuReaderObject object(szKeyword, target);
      reader.RegisterObject(object);
    } else {
      m_handlers.emplace_back().read = target;
      ZuReaderObject object(szKeyword, Link(&m_handlers.back(), &Handler::Read));
      reader.RegisterObject(object);
    }
    return *this;
  }
  // The number of read errors.
  int Run() {
    reader.DoProcess(false);
    return reader.GetReadErrorCount();
  }

  TempFile file;
  Reader reader;

 private:
  struct Handler : LinkHdl {
    int Read(ZuReaderObject* pObject) { return static_cast<int>(read(pObject)); }
    std::function<long(ZuReaderObject*)> read;
  };
  std::deque<Handler> m_handlers;  // they stay where they are
};

using KeywordFile = BasicKeywordFile<>;
