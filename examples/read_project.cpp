// Reads a project file: what is wrong in it, its photos, and what was measured on them.
#include <zu/project/project.h>

#include <cstdio>

int main(int argc, char** argv) {
  ZuProject project;
  const bool bGood = project.Read(argc > 1 ? argv[1] : "samples/chessboard/left.prj");
  for (const ZuFinding& f : project.GetFindings()) std::puts(GetZuFindingLine(f).c_str());
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    const int iPoints = project.Measurements(p->GetId()).Count();
    std::printf("photo %u %s: %d points\n", p->GetId(), p->GetName().chars(), iPoints);
  }
  return bGood ? 0 : 3;
}
