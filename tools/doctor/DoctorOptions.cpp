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
      AddText(command, "--bundle", options.bundle,
              "Pack reports, configuration and log into this .tar.gz file, to send to somebody", kFileNameForm)
          ->type_name("FILE");
  command
      .add_flag("--keep-names", options.keepsNames, "Leave the names of user and machine and serial numbers in it")
      ->needs(bundle);
}

} // namespace vxtool
