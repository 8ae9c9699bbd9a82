// What a render that crashes can still take away with it: its temporary files.
#pragma once

#include <string>

namespace Quillmere::Velmira {

// A crash (SIGSEGV in a GL driver whose allocation failed, say) leaves no room for destructors, and a signal handler
// may call neither malloc nor the file system library. So each FolderLock registers here, ahead of time, what a
// handler needs: an open descriptor of its folder and its token. removeTemporaries() then uses system calls alone
// (getdents64, unlinkat), all async-signal-safe. It removes this render's ".partial" files and lock files; a ".kept"
// copy of an earlier output, made while a finished sequence is put in place, is left for the next render's sweep to
// judge, so that an earlier output is never lost to a crash halfway through being replaced.
class CrashCleanup {
public:
  // Both are called by FolderLock, on any thread. Registrations beyond a fixed number (a render has two folders at
  // most: the output's and the before/after picture's) are not kept; their files are swept by the next render.
  static void add(const std::string& folder, const std::string& token);
  static void remove(const std::string& token);

  // For a fatal signal's handler: async-signal-safe.
  static void removeTemporaries();
};

}  // namespace Quillmere::Velmira
