#pragma once

namespace Quillmere::Velmira {

class SaveRestoreGLContextMac;

// The bracket round one host command that switches GL contexts: it notes the host's
// context when made, and gives it back at restore(), or at the latest when the command
// ends, also when an integer exception leaves it half-way (the entry's handler then
// returns 516 with the host's context current, as on the normal path). The saver object
// is released when the bracket ends: nothing needs it after the restore.
class HostContextBracket {
public:
  HostContextBracket();
  ~HostContextBracket();

  HostContextBracket(const HostContextBracket&) = delete;
  HostContextBracket& operator=(const HostContextBracket&) = delete;

  // The last step of a command's normal path; later calls do nothing.
  void restore();

private:
  SaveRestoreGLContextMac* mSaver;
};

}  // namespace Quillmere::Velmira
