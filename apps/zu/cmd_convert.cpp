// zu convert: a project as JSON and back.
#include <memory>

#include "commands.h"
#include "project_files.h"
#include "text_table.h"

namespace cli {

Runner DefineConvert(Options& options) {
  struct Values {
    std::string strProject, strOut;
  };
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file, or its JSON");
  options.Output("-o,--output", "FILE", &pValues->strOut, "the project as .json or .prj");
  options.Required();
  return [pValues](Context& context) {
    CheckProjectEnding(pValues->strOut);
    ZuProject project;
    ReadProjectFile(pValues->strProject, context, &project);
    WriteProjectFile(pValues->strOut, context, project);
    const auto iItems = static_cast<long long>(project.GetItems().size());
    context.Text() << Counted(iItems, "item") << " written to " << pValues->strOut << '\n';
    context.Root()["items"] = iItems;
    context.Root()["output"] = pValues->strOut;
    return kGood;
  };
}

}  // namespace cli
