#pragma once

#include <istream>
#include <map>
#include <string>

#include "A.h"

namespace Quillmere::Velmira {

// The plug-in's property list, the file "<plug-in>.pipl" beside the library: what a host
// may know of an effect before it loads it. One "Key = Value" a line, '#' starts a comment.
class PropertyList {
public:
  // Throws HostError naming the file when it is missing or malformed, or lacks a key.
  static PropertyList read(const std::string& path);
  // The same for a list already open; `path` only names it in messages.
  static PropertyList parse(std::istream& in, const std::string& path);
  // The list that belongs to a plug-in library: same folder and name, extension .pipl.
  static std::string pathFor(const std::string& pluginPath);

  const std::string& path() const { return mPath; }
  const std::string& text(const std::string& key) const;
  A_u_long number(const std::string& key) const;

  std::string name() const { return text("Name"); }
  std::string category() const { return text("Category"); }
  std::string matchName() const { return text("MatchName"); }
  std::string entryPoint() const { return text("EntryPoint"); }
  A_u_long version() const { return number("Version"); }
  A_u_long outFlags() const { return number("OutFlags"); }
  A_u_long outFlags2() const { return number("OutFlags2"); }

private:
  std::string mPath;
  std::map<std::string, std::string> mValues;
};

}  // namespace Quillmere::Velmira
