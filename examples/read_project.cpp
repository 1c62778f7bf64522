// Reads a project file: what is wrong in it, its photos, and what was measured on them.
#include <zu/project/project.h>

#include <cstdio>

int main(int argc, char** argv) {
  ZuProject project;
  const bool bGood = project.Read(argc > 1 ? argv[1] : "samples/chessboard/left.prj");
  for (const ZuFinding& f : project.GetFindings()) std::puts(GetZuFindingLine(f).c_str());
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next())
    std::printf("%s: %d\n", p->GetName().chars(), project.Measurements(p->GetId()).Count());
  return bGood ? 0 : 3;
}
