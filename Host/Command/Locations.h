#pragma once

#include <string>

namespace Quillmere::Velmira {

// Where the command finds what it ships with, relative to its own binary so that a build
// tree and an installed tree both work without configuration:
//   plug-in:  <bin>/../plugins/Velmira.so (the build's layout; an install keeps it)
//   sample:   <bin>/../share/velmira/samples/astronaut.png when installed, else the
//             samples/ folder of the source tree the binary was built from.
class Locations {
public:
  static std::string executableDirectory();
  static std::string defaultPlugin();
  static std::string sample();
};

}  // namespace Quillmere::Velmira
