// A render's claim on the temporary files it makes in one folder, so that a later render can tell the leftovers of a
// render that died (SIGKILL, a power cut) from the temporaries of one still running.
#pragma once

#include <string>

namespace Quillmere::Velmira {

// Holds flock(2) on a small file ".velmira.<token>.lock" of its own in the folder for as long as it lives; every
// temporary made under it carries the token in its name (nameFor). The kernel drops a flock when the last
// descriptor of its holder closes, which a killed process cannot prevent, so a lock that can be taken with
// LOCK_NB belongs to a render that no longer runs. A process id in the name, tested with kill(pid, 0), would be
// fooled by the id's reuse and cannot see a render on another machine sharing the folder; a lock can do both.
class FolderLock {
public:
  // Creates and locks this render's lock file, then removes the temporaries and lock files of dead renders in the
  // folder. Throws MediaError naming `forPath` when the folder cannot be written.
  FolderLock(const std::string& folder, const std::string& forPath);
  // Removes the lock file; temporaries are their owners' to remove.
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  const std::string& folder() const { return mFolder; }
  // Six characters unique among the lock files of the folder.
  const std::string& token() const { return mToken; }

  // The name of a temporary for the file `finalName` of this folder: ".<stem>.<token>.<role><ext>", the extension
  // last so that tools guessing by it still do. Where that would pass the folder's longest name (NAME_MAX, 255
  // bytes on most file systems) the stem is cut and ends in a hash of the whole, so that the frames of a sequence
  // whose names differ only near their end still get names of their own.
  std::string nameFor(const std::string& finalName, const std::string& role) const;

private:
  void createLocked(const std::string& forPath);
  void removeStale() const;
  static bool isOwnedBy(const std::string& name, const std::string& token);

  std::string mFolder;
  std::string mPath;
  std::string mToken;
  int mFd = -1;
};

}  // namespace Quillmere::Velmira
