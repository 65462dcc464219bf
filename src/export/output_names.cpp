#include "export/output_names.h"

#include "export/vel_edit_path.h"

namespace kalmor {

std::string MakeOutputStem(const std::string& path) {
  const CVelEditPath editPath(path.c_str());
  const std::string extension = editPath.GetExtension();
  const std::string& whole = editPath.GetPath();
  if (detail::CompareNoCase(extension, ".dxf") == 0) {
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

std::optional<std::string> UnusableNameReason(std::string_view name) {
  if (name.empty()) {
    return "the name is empty";
  }
  if (name == "." || name == "..") {
    return "the name is \"" + std::string(name) + "\"";
  }
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '/' || c == '\\') {
      return std::string("the name holds a '") + c + "'";
    }
    if (byte < 0x20 || byte == 0x7f) {
      return "the name holds a control character";
    }
  }
  return std::nullopt;
}

}  // namespace kalmor
