// A file written under a temporary name beside its final path, so that a reader of the final path never sees
// it half-written.
#pragma once

#include <string>

namespace Quillmere::Velmira {

class TempFile {
public:
  // Creates an empty, uniquely named file ".<name>.<random>.partial<ext>" in the folder of `finalPath`; the
  // extension stays last so that tools guessing by it still do. Throws MediaError naming `finalPath` when the
  // folder cannot be written.
  explicit TempFile(const std::string& finalPath);
  // Removes the temporary file unless commit() moved it into place.
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& path() const { return mPath; }
  const std::string& finalPath() const { return mFinalPath; }

  // Renames the temporary file to the final path, replacing what stood there in one step.
  void commit();

private:
  std::string mFinalPath;
  std::string mPath;
  bool mCommitted = false;
};

}  // namespace Quillmere::Velmira
