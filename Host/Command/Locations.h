#pragma once

#include <string>

namespace Quillmere::Velmira {

// Where the command finds what it ships with: relative to its own executable, by the layout that an install has
// and the build tree copies (the build fixes the folders), so that both work without configuration and an install
// keeps working when the build tree is gone. With the default folders:
//   plug-in:  <bin>/../lib/velmira/plugins/Velmira.so
//   sample:   <bin>/../share/velmira/samples/astronaut.png
class Locations {
public:
  static std::string executable();
  static std::string executableDirectory();
  static std::string defaultPlugin();
  static std::string sample();
};

}  // namespace Quillmere::Velmira
