#include <cstdint>
#include <sstream>
#include <string>

#include "Core/HostError.h"
#include "Core/PropertyList.h"
#include "FuzzRequire.h"

using namespace Quillmere::Velmira;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  PropertyList list;
  try {
    list = PropertyList::parse(in, "fuzz.pipl");
  } catch (const HostError&) {
    return 0;
  }
  // A value is what stands between '=' and the line's end or '#', blanks trimmed, so writing the list out again
  // reads back the same; a number's value is the number alone.
  const char* const keys[] = {"Name", "Category", "MatchName", "EntryPoint", "Version", "OutFlags", "OutFlags2"};
  std::string written;
  for (const char* key : keys) {
    const std::string& value = list.text(key);
    FUZZ_REQUIRE(value.find_first_of("#\n") == std::string::npos);
    FUZZ_REQUIRE(value.empty() || (value.front() != ' ' && value.back() != ' '));
    written += std::string(key) + " = " + value + "\n";
  }
  for (const char* key : {"Version", "OutFlags", "OutFlags2"})
    FUZZ_REQUIRE(list.text(key).find_first_not_of("0123456789abcdefABCDEFxX") == std::string::npos);
  std::istringstream again(written);
  const PropertyList copy = PropertyList::parse(again, "again.pipl");
  for (const char* key : keys) FUZZ_REQUIRE(copy.text(key) == list.text(key));
  return 0;
}
