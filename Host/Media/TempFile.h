// A file written under a temporary name beside its final path, so that a reader of the final path never sees
// it half-written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Media/FolderLock.h"

namespace Quillmere::Velmira {

class TempFile {
public:
  // Creates an empty file named by FolderLock::nameFor in the folder of `finalPath`, under a lock of its own or
  // under `lock`, which the files of one output share. Throws MediaError naming `finalPath` when the folder cannot be
  // written.
  explicit TempFile(const std::string& finalPath);
  TempFile(const std::string& finalPath, std::shared_ptr<const FolderLock> lock);
  // Removes the temporary file unless commit() moved it into place.
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& path() const { return mPath; }
  const std::string& finalPath() const { return mFinalPath; }

  // Renames the temporary file to the final path, replacing what stood there in one step.
  void commit();

  // Commits every file, or none: when one cannot be put in place, those already moved are taken back and what stood
  // at their final paths before is restored. Restoring needs a hard link to each old file; where the file system has
  // none, an old file already replaced stays replaced.
  static void commitAll(const std::vector<TempFile*>& files);

private:
  static std::shared_ptr<const FolderLock> lockFor(const std::string& finalPath);
  std::string keptName() const;

  std::string mFinalPath;
  std::shared_ptr<const FolderLock> mLock;
  std::string mPath;
  bool mCommitted = false;
};

}  // namespace Quillmere::Velmira
