// Inputs that make the most of a reader's time and memory: many records of few bytes, long lines,
// deep nesting, faults, counts of any value.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

struct HostileInput {
  const char* szName;
  const char* szReader;                          // of FileReaders()
  std::function<std::string(std::size_t)> make;  // a file of about that many bytes
  std::size_t uPeak = 256;                       // most megabytes that a megabyte of it may take
};

const std::vector<HostileInput>& HostileInputs();
