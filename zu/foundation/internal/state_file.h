#pragma once

#include <string>

namespace zu::internal {

// Appends a text to a file of that name in the user's own state folder, which is made where it is
// missing. Nothing is written where there is no such folder, or where the name leads to anything
// but a plain file of this user.
void AppendToStateFile(char const* szName, std::string const& strText);

}  // namespace zu::internal
