#include "zu/foundation/locale.h"

#include <clocale>

ZuCLocale::ZuCLocale(char const* szLocale) : m_strOldLocale(std::setlocale(LC_ALL, nullptr)) {
  std::setlocale(LC_ALL, szLocale);
}

ZuCLocale::~ZuCLocale() {
  if (!m_strOldLocale.empty()) std::setlocale(LC_ALL, m_strOldLocale);
}
