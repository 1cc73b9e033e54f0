// SPDX-License-Identifier: MIT
// The options of the command doctor.
#include "tools/doctor/DoctorOptions.h"

#include "tools/doctor/DoctorAreas.h"
#include "tools/OptionKinds.h"

namespace vxtool {

void AddDoctorOptions(CLI::App& command, TDoctorOptions& options)
{
  AddWordList(command, "--only", options.areas, DoctorAreas(), "Look at these areas only")->type_name("AREA,...");
  command
      .add_option_function<std::string>(
          "--disk", [&options](const std::string& text) { options.disk = text; },
          "Write for 2 s in this directory, and say whether it is fast enough for the camera")
      ->type_name("DIRECTORY");
  command.add_flag("-v,--verbose", options.showsAll, "Print also what is right");
  CLI::Option* const bundle =
      AddBundle(command, options.bundle, "Pack reports, configuration, log, call trace and check.json");
  AddText(command, "--trace", options.trace,
          "Pack this call trace; default: the newest one (*.vxtr) of the working directory", kFileNameForm)
      ->type_name("FILE")
      ->needs(bundle);
}

} // namespace vxtool
