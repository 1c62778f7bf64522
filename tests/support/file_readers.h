// Every reader of files in one table, for tests of what must hold for all of them.
//
//   for (const FileReader& reader : FileReaders()) {
//     const TempFile file(reader.sample());
//     const auto pRead = reader.make();
//     pRead->Read(file.Path());
//     ... pRead->Tell() ...
//   }
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

// What a reader fills.
class ReadObject {
 public:
  virtual ~ReadObject() = default;
  virtual void Read(const char* szPath) = 0;
  // All that was read, in the order of the file: one line for what comes as a whole or not at all.
  // A list whose chain is broken gives a line that says so. Numbers do not depend on the locale.
  virtual Lines Tell() const = 0;
};

struct FileReader {
  const char* szName;
  std::function<std::string()> sample;  // a good file of some records, with names that need memory
  std::function<std::unique_ptr<ReadObject>()> make;
};

const std::vector<FileReader>& FileReaders();
