#include "Media/TempFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "Media/MediaError.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

TempFile::TempFile(const std::string& finalPath) : mFinalPath(finalPath) {
  fs::path target(finalPath);
  if (target.filename().empty()) throw MediaError(finalPath, "names a folder, not a file");
  std::error_code ec;
  if (fs::is_directory(target, ec)) throw MediaError(finalPath, "is a folder");
  std::string extension = target.extension().string();
  fs::path folder = target.parent_path();
  std::string name = "." + target.stem().string() + ".XXXXXX.partial" + extension;
  std::string templ = (folder / name).string();
  std::vector<char> buffer(templ.begin(), templ.end());
  buffer.push_back('\0');
  // The random part sits before ".partial<ext>", hence the suffix length.
  int fd = mkstemps(buffer.data(), static_cast<int>(std::strlen(".partial") + extension.size()));
  if (fd < 0) throw MediaError(finalPath, std::string("cannot be written: ") + std::strerror(errno));
  // mkstemps makes the file private (0600); a rendered picture is an ordinary file. Reading the umask would
  // mean changing it, which is process-wide and so unsafe beside other threads: 0644 is the common result.
  fchmod(fd, 0644);
  close(fd);
  mPath = buffer.data();
}

TempFile::~TempFile() {
  if (!mCommitted) std::remove(mPath.c_str());
}

void TempFile::commit() {
  if (std::rename(mPath.c_str(), mFinalPath.c_str()) != 0)
    throw MediaError(mFinalPath, std::string("cannot be put in place: ") + std::strerror(errno));
  mCommitted = true;
}

}  // namespace Quillmere::Velmira
