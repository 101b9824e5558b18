#include "properties/environment_export.h"

#include "properties/environment_lines.h"
#include "properties/temp_properties_file.h"

namespace ryn {

void exportEnvironment(const EnvironmentMap& environment) {
  if (environment.empty()) return;
  TempPropertiesFile::instance().append(environmentLines(environment));
}

}  // namespace ryn
