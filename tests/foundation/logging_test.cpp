#include <sys/stat.h>

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <locale>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/debug_logger.h"
#include "zu/foundation/logfile.h"
#include "zu/foundation/logger.h"
#include "zu/foundation/unicode.h"

namespace {

using Texts = std::vector<std::wstring>;

class CollectingLogger : public ZuLogger {
 public:
  using ZuLogger::ZuLogger;
  int Start() override { return m_iAnswer; }
  int Log(int, wchar_t const* szText) override {
    m_texts.emplace_back(szText);
    if (m_onLog) m_onLog();
    return 0;
  }
  Texts m_texts;
  int m_iAnswer = 0;
  std::function<void()> m_onLog;
};

class MasterLogger : public ZuMasterLogger {
 public:
  static std::wstring At(wchar_t const* szFormat, wchar_t const* szMessage, int iHour) {
    std::tm time = {};
    std::tie(time.tm_sec, time.tm_min, time.tm_hour) = std::tuple(9, 5, iHour);
    std::tie(time.tm_mday, time.tm_mon, time.tm_year) = std::tuple(3, 4, 124);
    wchar_t szLine[kLineLength];
    std::wcscpy(szLine, szFormat);
    FormatAt(szLine, szMessage, time);
    return szLine;
  }
};

// Whether a text is like a form in which 9 stands for a digit, a for a letter, ? for anything.
bool HasForm(std::string const& text, std::string const& form) {
  return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char c, char f) {
    const auto u = static_cast<unsigned char>(c);
    return c == f || f == '?' || (f == '9' && std::isdigit(u)) || (f == 'a' && std::isalpha(u));
  });
}

// A master registered for the test, with one logger of level 9.
class Logging : public ::testing::Test {
 protected:
  void SetUp() override {
    m_master.SetFormat(L"$mesg");
    m_master.AddLogger(&m_logger);
    ZuApplicationLogger::RegisterMasterLogger(&m_master);
    m_former =
        ZuSetDebugSink({[](void* pTexts, char const* szText) {
                          static_cast<std::vector<std::string>*>(pTexts)->emplace_back(szText);
                        },
                        &m_debug});
  }
  void TearDown() override {
    ZuApplicationLogger::RegisterMasterLogger(nullptr);
    ZuSetDebugSink(m_former);
  }
  ZuMasterLogger m_master;
  CollectingLogger m_logger{9};
  std::vector<std::string> m_debug;
  ZuDebugSink m_former;
};

TEST_F(Logging, MessagesReachLoggersOfTheirLevel) {
  CollectingLogger usual;
  m_master.AddLogger(&usual);
  m_master.AddLogger(nullptr);
  EXPECT_ROW("0 0", ZuApplicationLogger::Log(4, L"four"), ZuApplicationLogger::Log(3, L"three"));
  m_master.SubtractLogger(&usual);
  ZuApplicationLogger::Log(1, L"one");
  EXPECT_EQ(usual.m_texts, (Texts{L"three"}));
  EXPECT_EQ(m_logger.m_texts, (Texts{L"four", L"three", L"one"}));
  EXPECT_EQ(m_debug, (std::vector<std::string>{"Log: four", "Log: three", "Log: one"}));

  EXPECT_EQ(m_master.Start(), 0);
  m_logger.m_iAnswer = 7;
  EXPECT_EQ(m_master.Start(), 1);
}

// A logger may take itself or the next one off while it is called, and may log itself.
TEST_F(Logging, LoggersMayLeaveWhileTheyAreCalled) {
  auto pNext = std::make_unique<CollectingLogger>();
  CollectingLogger leaving, last;
  leaving.m_onLog = [&] {
    m_master.SubtractLogger(&leaving);
    m_master.SubtractLogger(pNext.get());
    pNext.reset();
    m_master.Log(1, L"inner");
  };
  m_master.AddLogger(&leaving);
  m_master.AddLogger(pNext.get());
  m_master.AddLogger(&last);
  ZuApplicationLogger::Log(1, L"a");
  ZuApplicationLogger::Log(1, L"b");
  EXPECT_EQ(leaving.m_texts, (Texts{L"a"}));
  EXPECT_EQ(last.m_texts, (Texts{L"inner", L"a", L"b"}));
}

TEST_F(Logging, LineFormat) {
  EXPECT_EQ(MasterLogger::At(L"$day.$month.$year $hour24:$minute:$second $mesg", L"$day", 23),
            L"03.05.2024 23:05:09 $day");
  EXPECT_EQ(MasterLogger::At(L"$day $day $hour12 $ampm", L"", 13), L"03 $day 01 PM");
  EXPECT_EQ(MasterLogger::At(L"$hour12 $ampm", L"", 12), L"12 PM");
  EXPECT_EQ(MasterLogger::At(L"$hour12 $ampm", L"", 0), L"00 AM");
  ZuMasterLogger plain;
  plain.AddLogger(&m_logger);
  plain.Log(3, L"text");
  EXPECT_TRUE(HasForm(UniToAnsi(m_logger.m_texts[0])(), "[99:99:99] text"));
}

TEST_F(Logging, BuffersAreCut) {
  const std::wstring big(5000, L'x');
  ZuApplicationLogger::Log(1, L"%ls", big.c_str());
  EXPECT_EQ(m_logger.m_texts.back(), std::wstring(499, L'x'));
  EXPECT_EQ(m_debug.back().size(), 5 + 1499u);
  m_master.SetFormat((big + L"$mesg").c_str());
  ZuApplicationLogger::Log(1, L"text");
  EXPECT_EQ(m_logger.m_texts.back(), std::wstring(200, L'x'));
  m_master.SetFormat((std::wstring(190, L'$') + L"$mesg$day").c_str());
  ZuApplicationLogger::LogText(1, big.c_str());
  EXPECT_EQ(m_logger.m_texts.back(), std::wstring(190, L'$') + std::wstring(309, L'x'));
}

// Every conversion gives what the run-time's own formatter gives; 8-bit text counts as UTF-8.
TEST_F(Logging, FormatsAsWprintf) {
#define ZU_EXPECT_FORMAT(...)                  \
  std::swprintf(szExpected, 400, __VA_ARGS__); \
  ZuApplicationLogger::Log(1, __VA_ARGS__);    \
  EXPECT_STREQ(m_logger.m_texts.back().c_str(), szExpected)
  wchar_t szExpected[400];
  ZU_EXPECT_FORMAT(L" %d Read Error(s) in %s:", 3, "a.prj");
  ZU_EXPECT_FORMAT(L" - Line: %06d, Status: %s", 42, "ParserErrorStream");
  ZU_EXPECT_FORMAT(L"%5d|%-5d|%+d|% d|%05d|%x|%#X|%o|%u%%", 1, 2, 3, 4, -5, 255u, 255u, 8u,
                   4000000000u);
  ZU_EXPECT_FORMAT(L"%ld %lld %zu %hd %hhu %td", -1L, 1LL << 40, std::size_t{7}, 70000, 300,
                   std::ptrdiff_t{-3});
  ZU_EXPECT_FORMAT(L"%.3f %10.4e %g %G %-8.2f|%*.*f %a %Lg", 1.5, 2.25e100, 1e-9, 1e20, 3.14159, 9,
                   2, 2.5, 1.0, 2.5L);
  ZU_EXPECT_FORMAT(L"%10s|%-10s|%.2s|%ls|%8ls|%.1ls|%c%lc", "ab", "cd", "efg", L"wide", L"w",
                   L"xyz", 'c', L'd');
  ZU_EXPECT_FORMAT(L"%p %5p", static_cast<void*>(this), static_cast<void*>(this));
#undef ZU_EXPECT_FORMAT
  ZuApplicationLogger::Log(1, L"%s %5s|", "\xC3\xA4", "\xFF");
  EXPECT_EQ(m_logger.m_texts.back(), L"\u00E4     \uFFFD|");
  const char acOpen[] = {'\xC3', '\xA4', 'b', 'c'};  // not terminated
  ZuApplicationLogger::Log(1, L"%.3s", acOpen);
  EXPECT_EQ(m_logger.m_texts.back(), L"\u00E4bc");
  ZuApplicationLogger::Log(1, L"%99999999999d%%%", 1);
  EXPECT_EQ(m_logger.m_texts.back().size(), 499u);
}

TEST_F(Logging, DebugOutputIsCut) {
  dbgprintf("%d-%s %.4f", 7, "P", 1.25);
  EXPECT_EQ(m_debug.back(), "7-P 1.2500");
  dbgprintf("%s", std::string(9000, 'x').c_str());
  EXPECT_EQ(m_debug.back().size(), kZuDebugTextSize - 1u);
  dbgprintf(L"%ls|%s", L"\u20AC", "e");
  EXPECT_EQ(m_debug.back(), "\xE2\x82\xAC|e");
  const wchar_t szNoCharacter[] = {L'a', static_cast<wchar_t>(0x7FFFFFFF), 0};
  dbgprintf("good %ls", szNoCharacter);  // the run-time's formatter refuses it
  EXPECT_EQ(m_debug.back().substr(0, 4), "good");
}

std::string Content(std::filesystem::path const& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class LogFiles : public Logging {
 protected:
  LogFiles() : m_folder(std::string(m_place.Path()) + ".logs") {
    std::filesystem::create_directories(m_folder);
    ::setenv("XDG_STATE_HOME", m_folder.c_str(), 1);
  }
  ~LogFiles() override {
    ::unsetenv("XDG_STATE_HOME");
    std::filesystem::remove_all(m_folder);
  }
  const TempFile m_place;  // a name of its own
  const std::filesystem::path m_folder;
};

// The debug logger's line holds the address of the text and not the text.
TEST_F(LogFiles, DebugLoggerWritesAddresses) {
  EXPECT_FALSE(IsZuvoDebugLoggerInstalled());
  InstallZuvoDebugLogger();
  InstallZuvoDebugLogger();
  EXPECT_TRUE(IsZuvoDebugLoggerInstalled());
  ZuApplicationLogger::Log(2, L"secret");
  UninstallZuvoDebugLogger();
  EXPECT_FALSE(IsZuvoDebugLoggerInstalled());
  ZuApplicationLogger::Log(2, L"after");
  EXPECT_EQ(m_logger.m_texts, (Texts{L"InstallZuvoDebugLogger()", L"secret",
                                     L"UninstallZuvoDebugLogger()", L"after"}));
  const std::string text = Content(m_folder / "ZuvoProtokoll.log");
  EXPECT_TRUE(text.starts_with("2 : ") && text.find('\n') == text.size() - 1) << text;
  EXPECT_NE(std::strtoull(text.c_str() + 4, nullptr, 16), 0u);
}

TEST_F(LogFiles, DebugLoggerFollowsNoLink) {
  const auto target = m_folder / "target";
  std::ofstream(target) << "kept";
  std::filesystem::create_symlink(target, m_folder / "ZuvoProtokoll.log");
  ZuZuvoDebugLogger logger;
  EXPECT_ROW("0 kept", logger.Log(1, L"text"), Content(target));
  std::filesystem::remove(m_folder / "ZuvoProtokoll.log");
  ASSERT_EQ(::mkfifo((m_folder / "ZuvoProtokoll.log").c_str(), 0600), 0);
  EXPECT_EQ(logger.Log(1, L"text"), 0);  // and does not wait at a pipe
}

struct Comma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST_F(LogFiles, ReportIsAppendedUnderAHeader) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const auto path = m_folder / "report.log";
  for (int i = 0; i < 2; ++i) {
    ZuLogfile log(path.c_str());
    EXPECT_TRUE(log.good());
    log << 1.5 << "\n";
  }
  const std::string report = std::string(132, '/') + "\n//  aaa aaa ?9 99:99:99 9999\n//  1.5\n";
  const std::string text = Content(path);
  EXPECT_TRUE(HasForm(text, report + report)) << text;
  std::locale::global(before);
  EXPECT_TRUE(ZuLogfile((m_folder / "no folder" / "x.log").c_str()).fail());
}

}  // namespace
