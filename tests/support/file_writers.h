// Every writer of files in one table.
#pragma once

#include <functional>
#include <memory>
#include <vector>

struct FileWriter {
  const char* szName;
  // Writes some records; not 0: it says that all went well.
  std::function<int(const char* szPath)> write;
  bool bTells;  // 0 stands for every fault; others always answer 1 and leave it to the stream's
                // state
};

const std::vector<FileWriter>& FileWriters();
