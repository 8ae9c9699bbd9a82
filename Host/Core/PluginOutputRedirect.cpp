#include "Core/PluginOutputRedirect.h"

#include <unistd.h>

#include <cstdio>

namespace Quillmere::Velmira {

PluginOutputRedirect::PluginOutputRedirect() {
  std::fflush(stdout);  // what the host wrote before stays on standard output
  mSavedStdout = ::dup(STDOUT_FILENO);
  if (mSavedStdout >= 0) ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

PluginOutputRedirect::~PluginOutputRedirect() {
  if (mSavedStdout < 0) return;
  std::fflush(stdout);  // the plug-in's text leaves through standard error, not later through stdout
  ::dup2(mSavedStdout, STDOUT_FILENO);
  ::close(mSavedStdout);
}

}  // namespace Quillmere::Velmira
