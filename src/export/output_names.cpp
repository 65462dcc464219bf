#include "export/output_names.h"

#include "export/vel_edit_path.h"

namespace kalmor {

std::string MakeOutputStem(const std::string& path) {
  const CVelEditPath editPath(path.c_str());
  const std::string extension = editPath.GetExtension();
  const std::string& whole = editPath.GetPath();
  if (export_detail::CompareNoCase(extension, ".dxf") == 0) {
    return whole.substr(0, whole.size() - 4);
  }
  return whole;
}

std::string MakePageFileName(const std::string& stem, const std::string& schematicName,
                             const DboPage& page) {
  DboState state;
  std::string pageName;
  page.GetName(pageName, state);
  return stem + "_" + schematicName + "_" + pageName + ".dxf";
}

}  // namespace kalmor
