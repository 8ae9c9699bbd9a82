#pragma once

#include <string>

#include "AE_Effect.h"
#include "Core/PropertyList.h"

namespace Quillmere::Velmira {

// One effect library, loaded as After Effects loads it: its property list is read first,
// then the library is opened and the entry named there is looked up. Unloaded at the end.
class PluginModule {
public:
  explicit PluginModule(const std::string& path);
  ~PluginModule();
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;

  const std::string& path() const { return mPath; }
  const PropertyList& properties() const { return mProperties; }
  PF_EntryPointFunc entry() const { return mEntry; }

private:
  std::string mPath;
  PropertyList mProperties;
  void* mLibrary = nullptr;
  PF_EntryPointFunc mEntry = nullptr;
};

}  // namespace Quillmere::Velmira
