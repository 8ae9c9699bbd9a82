#pragma once

namespace Quillmere::Velmira {

// While it lives, whatever is written to standard output goes to the file descriptor given
// instead. The host wraps every plug-in command in one: effects print diagnostics with
// printf (the GL context banner, shader compile logs), and the command's standard output
// is kept for its results, so that `velmira params > sliders.txt` holds the table alone.
class PluginOutputRedirect {
public:
  explicit PluginOutputRedirect(int target);
  ~PluginOutputRedirect();
  PluginOutputRedirect(const PluginOutputRedirect&) = delete;
  PluginOutputRedirect& operator=(const PluginOutputRedirect&) = delete;

private:
  int mSavedStdout = -1;
};

}  // namespace Quillmere::Velmira
