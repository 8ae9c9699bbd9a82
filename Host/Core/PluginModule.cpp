#include "Core/PluginModule.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <fmt/format.h>

#include "Core/HostError.h"

namespace Quillmere::Velmira {

PluginModule::PluginModule(const std::string& path) : mPath(path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) {
    throw HostError::failure(
        fmt::format("{}: the plug-in is missing (build the Velmira target, or pass --plugin)", path));
  }
  mProperties = PropertyList::read(PropertyList::pathFor(path));
  // RTLD_LOCAL keeps the effect's symbols to itself, as a host does with every plug-in.
  // RTLD_NODELETE keeps its code mapped after dlclose: the GL libraries it loaded may still
  // call into it at process exit, and leak reports can then name its functions.
  mLibrary = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (!mLibrary) throw HostError::failure(fmt::format("{}: cannot load the plug-in: {}", path, ::dlerror()));
  void* symbol = ::dlsym(mLibrary, mProperties.entryPoint().c_str());
  if (!symbol) {
    ::dlclose(mLibrary);
    throw HostError::failure(fmt::format("{}: the plug-in has no entry '{}' named in {}", path,
                                         mProperties.entryPoint(), mProperties.path()));
  }
  mEntry = reinterpret_cast<PF_EntryPointFunc>(symbol);
}

PluginModule::~PluginModule() {
  if (mLibrary) ::dlclose(mLibrary);
}

}  // namespace Quillmere::Velmira
