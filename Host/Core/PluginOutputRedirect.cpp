#include "Core/PluginOutputRedirect.h"

#include <unistd.h>

#include <cstdio>

namespace Quillmere::Velmira {

PluginOutputRedirect::PluginOutputRedirect(int target) {
  std::fflush(stdout);  // what the host wrote before stays on standard output
  mSavedStdout = ::dup(STDOUT_FILENO);
  if (mSavedStdout >= 0) ::dup2(target, STDOUT_FILENO);
}

PluginOutputRedirect::~PluginOutputRedirect() {
  if (mSavedStdout < 0) return;
  std::fflush(stdout);  // the plug-in's text goes to the target, not later to stdout
  ::dup2(mSavedStdout, STDOUT_FILENO);
  ::close(mSavedStdout);
}

}  // namespace Quillmere::Velmira
