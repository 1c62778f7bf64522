// The work whose cost is followed over the number of elements.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace growth {

struct Case {
  std::string strName;
  double dBytes;                           // of memory and files, for one element
  std::function<double(std::size_t)> run;  // the best time of several for n elements [s]
  bool bReference = false;                 // not ours: to tell the work from the memory
};

std::vector<Case> AllCases();
std::vector<Case> NetworkCases();  // elements are rays; none where the build has no networks

}  // namespace growth
