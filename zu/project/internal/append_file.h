// A file that is only added to, in whole writes of the system.
#pragma once

#include <string>

namespace zu::internal {

// Opened behind its end, created where it is missing; -1 with errno set where that fails. The path
// is UTF-8; null fails.
int OpenForAppending(const char* szPath);
void CloseAppended(int iFile);
// The last byte is a line end, or there is none.
bool EndsWithLineEnd(int iFile);
// One write; false with errno set where not all bytes went out.
bool AppendBytes(int iFile, const std::string& strBytes);
// Waits until the disk has them.
bool SyncAppended(int iFile);

}  // namespace zu::internal
