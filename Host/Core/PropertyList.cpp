#include "Core/PropertyList.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <fmt/format.h>

#include "Core/HostError.h"

namespace Quillmere::Velmira {

namespace {

std::string trimmed(const std::string& text) {
  auto first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  auto last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

// Every key the host needs before it loads an effect; a list without one is refused
// before the library is touched.
const char* const kRequiredKeys[] = {"Name", "Category", "MatchName", "EntryPoint", "Version", "OutFlags", "OutFlags2"};

}  // namespace

std::string PropertyList::pathFor(const std::string& pluginPath) {
  auto slash = pluginPath.find_last_of('/');
  auto dot = pluginPath.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return pluginPath + ".pipl";
  return pluginPath.substr(0, dot) + ".pipl";
}

PropertyList PropertyList::read(const std::string& path) {
  std::ifstream in(path);
  if (!in) {
    throw HostError::failure(
        fmt::format("{}: cannot read the plug-in's property list: {}", path, std::strerror(errno)));
  }
  return parse(in, path);
}

PropertyList PropertyList::parse(std::istream& in, const std::string& path) {
  PropertyList list;
  list.mPath = path;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    std::string content = trimmed(line.substr(0, line.find('#')));
    if (content.empty()) continue;
    auto equals = content.find('=');
    if (equals == std::string::npos) {
      throw HostError::failure(fmt::format("{}:{}: expected 'Key = Value', found '{}'", path, number, content));
    }
    list.mValues[trimmed(content.substr(0, equals))] = trimmed(content.substr(equals + 1));
  }
  for (const char* key : kRequiredKeys) list.text(key);
  for (const char* key : {"Version", "OutFlags", "OutFlags2"}) list.number(key);
  return list;
}

const std::string& PropertyList::text(const std::string& key) const {
  auto found = mValues.find(key);
  if (found == mValues.end()) {
    throw HostError::failure(fmt::format("{}: the plug-in's property list has no '{}'", mPath, key));
  }
  return found->second;
}

A_u_long PropertyList::number(const std::string& key) const {
  const std::string& value = text(key);
  char* end = nullptr;
  errno = 0;
  unsigned long long parsed = std::strtoull(value.c_str(), &end, 0);
  // strtoull skips blanks, takes a sign and stops at a NUL byte; a number here is its digits alone, all of them.
  const bool whole =
      !value.empty() && std::isdigit(static_cast<unsigned char>(value.front())) && end == value.c_str() + value.size();
  if (!whole || errno != 0 || parsed > 0xffffffffULL) {
    throw HostError::failure(fmt::format("{}: '{}' is not a 32-bit number: '{}'", mPath, key, value));
  }
  return static_cast<A_u_long>(parsed);
}

}  // namespace Quillmere::Velmira
