// Calls by name: who offers something registers a Link under a name, who wants it calls the name.
//
//   ZuCallRegistry::Application().Register("photo.show", Link(&viewer, &Viewer::ShowPhoto));
//   ZuCallRegistry::Application().Call("photo.show", &photo);
//
// Names are compared exactly. An object unregisters its calls before it ends.
//
// One thread at a time, also for calling: the registry has no lock. A call may register and
// unregister, itself included.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/link.h"

class ZU_API ZuCallRegistry {
 public:
  // That of the process.
  static ZuCallRegistry& Application();

  // False, nothing changed: an empty name, a name that is taken, an unset link.
  bool Register(const std::string& strName, const Link& link);
  // False where there is none of the name.
  bool Unregister(std::string_view name);

  bool IsRegistered(std::string_view name) const { return m_calls.find(name) != m_calls.end(); }
  // In the order of their bytes.
  std::vector<std::string> GetNames() const;

  // The result of Link::Call; none, and nothing called, where there is none of the name. pArg must
  // be what the function that was registered takes.
  std::optional<long> Call(std::string_view name, void* pArg) const;

 private:
  std::map<std::string, Link, std::less<>> m_calls;
};
