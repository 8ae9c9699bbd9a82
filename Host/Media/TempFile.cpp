#include "Media/TempFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

#include "Media/MediaError.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

std::shared_ptr<const FolderLock> TempFile::lockFor(const std::string& finalPath) {
  fs::path target(finalPath);
  if (target.filename().empty()) throw MediaError(finalPath, "names a folder, not a file");
  std::error_code ec;
  if (fs::is_directory(target, ec)) throw MediaError(finalPath, "is a folder");
  return std::make_shared<const FolderLock>(target.parent_path().string(), finalPath);
}

TempFile::TempFile(const std::string& finalPath) : TempFile(finalPath, lockFor(finalPath)) {}

TempFile::TempFile(const std::string& finalPath, std::shared_ptr<const FolderLock> lock)
    : mFinalPath(finalPath), mLock(std::move(lock)) {
  const std::string name = mLock->nameFor(fs::path(finalPath).filename().string(), "partial");
  const std::string path = (fs::path(mLock->folder()) / name).string();
  // The token is this render's alone, so an existing name can only be a second file for the same final path.
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) throw MediaError(finalPath, std::string("cannot be written: ") + std::strerror(errno));
  ::close(fd);
  mPath = path;
}

TempFile::~TempFile() {
  if (!mCommitted) std::remove(mPath.c_str());
}

void TempFile::commit() {
  if (std::rename(mPath.c_str(), mFinalPath.c_str()) != 0)
    throw MediaError(mFinalPath, std::string("cannot be put in place: ") + std::strerror(errno));
  mCommitted = true;
}

std::string TempFile::keptName() const {
  return (fs::path(mLock->folder()) / mLock->nameFor(fs::path(mFinalPath).filename().string(), "kept")).string();
}

void TempFile::commitAll(const std::vector<TempFile*>& files) {
  // What stood at each final path: a second name for it (the old file kept), or nothing when there was none.
  struct Before {
    bool existed = false;
    std::optional<std::string> kept;
  };
  std::vector<Before> before(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::error_code ec;
    before[i].existed = fs::symlink_status(files[i]->mFinalPath, ec).type() != fs::file_type::not_found;
    const std::string kept = files[i]->keptName();
    if (before[i].existed && ::link(files[i]->mFinalPath.c_str(), kept.c_str()) == 0) before[i].kept = kept;
  }
  auto dropKept = [&before] {
    for (const Before& b : before)
      if (b.kept) std::remove(b.kept->c_str());
  };
  std::size_t placed = 0;
  try {
    for (; placed < files.size(); ++placed) files[placed]->commit();
  } catch (...) {
    for (std::size_t i = 0; i < placed; ++i) {
      if (before[i].kept && std::rename(before[i].kept->c_str(), files[i]->mFinalPath.c_str()) == 0)
        before[i].kept.reset();
      else if (!before[i].existed)
        std::remove(files[i]->mFinalPath.c_str());
    }
    dropKept();
    throw;
  }
  dropKept();
}

}  // namespace Quillmere::Velmira
