// Which points take part in an estimate: the options --without, --check-points and --tolerance,
// which mean the same in every command that estimates from points.
//
//   --without       points that take no part and count for nothing; where other points are carried
//                   over, they are, too
//   --check-points  points that take no part, and what the result leaves to them: computed minus
//                   check, told apart from the residuals
//   --tolerance     exit code 1 where a residual or the deviation of a check point is longer
//
// Points are told by name or id, as --without 3,K107.
#pragma once

#include <array>
#include <initializer_list>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "context.h"
#include "exit_code.h"
#include "options.h"
#include "point_names.h"

namespace cli {

struct PointChoice {
  std::string strWithout, strCheck;
  double dTolerance = 0.0;  // 0: none

  bool IsAsked() const { return !strWithout.empty() || !strCheck.empty(); }
};

// What to write in place of the name of a point that is in none of the lists: "; did you mean K1?"
// or "; points such as 1, 2 and 3 are there".
std::string PointHint(const std::string& strName, std::initializer_list<const ZuPointList*> lists);

// A further line of a message that two lists have too few points in common.
std::string OwnPoints(const std::string& strFileA, const ZuPointList& a,
                      const std::string& strFileB, const ZuPointList& b);

// Declares --without and --check-points, and --tolerance unless the command has its own.
void AddPointChoice(Options& options, PointChoice* pChoice, bool bTolerance = true);

// What a result leaves to a point, in the unit of the coordinates; as many of the numbers as the
// command has dimensions.
struct Deviation {
  const ZuPoint* pPoint;
  std::array<double, 3> ad;

  double Length() const;
};

class PointRoles {
 public:
  // Looks the points up, after GiveCommonIds. Throws CommandError: (bad input) for a name that is
  // in none of the lists, (usage) for a point in both options or a text that cannot be understood.
  PointRoles(const PointChoice& choice, const std::string& strFiles,
             std::initializer_list<const ZuPointList*> lists);

  bool IsWithout(unsigned uId) const { return m_without.count(uId) != 0; }
  bool IsCheck(unsigned uId) const { return m_check.count(uId) != 0; }
  bool TakesPart(unsigned uId) const { return !IsWithout(uId) && !IsCheck(uId); }

  // Takes the common points without part out of the control list. Returns the check points.
  ZuPointList TakeOut(const ZuPointList& source, ZuPointList* pControl) const;

  // Of the check points: table, or keys without and check_points.
  void Write(const std::vector<Deviation>& checks, int iDimensions, std::ostream& text) const;
  void AddJson(const std::vector<Deviation>& checks, int iDimensions, Json* pRoot) const;

 private:
  std::set<unsigned> IdsOf(const std::string& strNames, const char* szOption,
                           const std::string& strFiles,
                           std::initializer_list<const ZuPointList*> lists) const;

  std::set<unsigned> m_without, m_check;
  std::vector<std::string> m_withoutLabels;
};

// Warns of each length beyond --tolerance; kNotAcceptable then, else eCode.
ExitCode WithinTolerance(const PointChoice& choice,
                         const std::vector<std::pair<std::string, double>>& lengths,
                         Context& context, ExitCode eCode);
// Appends the check points.
void AddLengths(const std::vector<Deviation>& checks,
                std::vector<std::pair<std::string, double>>* pLengths);

}  // namespace cli
