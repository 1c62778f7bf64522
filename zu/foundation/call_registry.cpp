#include "zu/foundation/call_registry.h"

ZuCallRegistry& ZuCallRegistry::Application() {
  static ZuCallRegistry theRegistry;
  return theRegistry;
}

bool ZuCallRegistry::Register(const std::string& strName, const Link& link) {
  return !strName.empty() && link.IsSet() && m_calls.emplace(strName, link).second;
}

bool ZuCallRegistry::Unregister(std::string_view name) {
  const auto found = m_calls.find(name);
  if (found == m_calls.end()) return false;
  m_calls.erase(found);
  return true;
}

std::vector<std::string> ZuCallRegistry::GetNames() const {
  std::vector<std::string> names;
  for (const auto& call : m_calls) names.push_back(call.first);
  return names;
}

std::optional<long> ZuCallRegistry::Call(std::string_view name, void* pArg) const {
  const auto found = m_calls.find(name);
  if (found == m_calls.end()) return {};
  const Link link = found->second;  // the call may unregister itself
  return link.Call(pArg);
}
