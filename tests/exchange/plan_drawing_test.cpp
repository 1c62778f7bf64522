// Drawings as other readers see them: DXF by its pairs of lines and, where it is installed, by
// ezdxf of Python; SVG by Python's parser of XML.
#include "zu/exchange/plan_drawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "tests/support/other_program.h"
#include "tests/support/temp_file.h"

namespace {

ZuPlanDrawing Plan() {
  ZuPlanDrawing plan;
  plan.points = {{{5403200.1, -1e-7, 0.3}, "Ecke \xC3\xBC & <5> %%d"},
                 {{NAN, 0, 0}, "none"},
                 {{5403210, 8, 1}, "\xE2\x82\xAC"}};
  plan.lines = {{{{5403200.1, -1e-7, 0.3}, {5403210, 8, 1}}, false},
                {{{5403200, 0, 0}, {5403210, 0, 0}, {5403210, 8, 1}}, true}};
  return plan;
}

const char* const kReadDxf =
    "import sys,ezdxf\n"
    "d=ezdxf.readfile(sys.argv[1]); m=d.modelspace()\n"
    "print(d.dxfversion, sorted(e.dxftype() for e in m))\n"
    "print(*[repr(v) for v in m.query(\"POINT\")[0].dxf.location])\n"
    "print([t.dxf.text.encode(\"unicode_escape\").decode() for t in m.query(\"TEXT\")])\n"
    "p=m.query(\"POLYLINE\")[0]; print(p.is_closed, len(p.vertices), p.vertices[2].dxf.location)\n";

}  // namespace

TEST(PlanDrawing, DxfIsReadByAnother) {
  std::ostringstream stream;
  EXPECT_EQ(ZuWriteDxf(stream, Plan()), 1u);
  const std::string strDxf = stream.str();
  EXPECT_NE(strDxf.find("  0\nPOINT\n  8\nPOINTS\n 10\n5403200.1\n 20\n-0.0000001\n 30\n0.3\n"),
            std::string::npos);
  EXPECT_NE(strDxf.find("  1\nEcke \xFC & <5> %%%%d\n"), std::string::npos);
  EXPECT_NE(strDxf.find("\\U+20AC"), std::string::npos);
  const TempFile file(strDxf, ".dxf");
  const std::string strRead = RunPython(kReadDxf, file.Path());
  if (strRead.empty()) GTEST_SKIP() << "python3-ezdxf is not installed";
  EXPECT_EQ(strRead,
            "AC1009 ['3DFACE', 'LINE', 'POINT', 'POINT', 'POLYLINE', 'TEXT', 'TEXT']\n"
            "5403200.1 -1e-07 0.3\n"
            "['Ecke \\\\xfc & <5> %%%%d', '\\\\\\\\U+20AC']\n"
            "True 3 (5403210.0, 8.0, 1.0)\n");
}

TEST(PlanDrawing, SvgIsWellFormed) {
  std::ostringstream stream;
  EXPECT_EQ(ZuWriteSvg(stream, Plan(), ZuPlanView::Front), 1u);
  const TempFile file(stream.str(), ".svg");
  const char* const szRead =
      "import sys,xml.dom.minidom as m\n"
      "d=m.parse(sys.argv[1]); t=d.getElementsByTagName(\"text\")[0]\n"
      "print(t.getAttribute(\"x\"), t.getAttribute(\"y\"), ascii(t.firstChild.data))\n"
      "print(d.getElementsByTagName(\"polygon\")[0].getAttribute(\"points\"))\n";
  const std::string strRead = RunPython(szRead, file.Path());
  if (strRead.empty()) GTEST_SKIP() << "python3 is not installed";
  EXPECT_EQ(strRead,
            "5403200.1 -0.3 'Ecke \\xfc & <5> %%d'\n"
            "5403200.0,-0.0 5403210.0,-0.0 5403210.0,-1.0\n");
}
