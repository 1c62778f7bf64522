// Joins two lists of points, as any program writes them: join_lists SOURCE CONTROL
#include <zu/zu.h>

#include <iostream>

int main(int argc, char** argv) {
  ZuPointList source, control, joined;
  if (argc < 3 || !ZuReadTable(argv[1], {}, source).m_Findings.IsWhole() ||
      !ZuReadTable(argv[2], {}, control).m_Findings.IsWhole()) {
    return 1;
  }
  ZuTrafo3d trafo;
  if (!trafo.CalcByControlPoints(&control, &source, 3, false)) return 1;
  trafo.Transform(joined, source, &control, false);
  std::cout << joined.Count() << " points, scale " << trafo.m_dScale << '\n';
}
