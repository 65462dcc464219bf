#include "export/output_names.h"

#include "export/vel_edit_path.h"
#include "host/dbo_reading.h"

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
  return stem + "_" + schematicName + "_" + NameOf(page) + ".dxf";
}

}  // namespace kalmor
