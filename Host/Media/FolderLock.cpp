#include "Media/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include <fmt/format.h>

#include "Media/CrashCleanup.h"
#include "Media/MediaError.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLockPrefix = ".velmira.";
constexpr const char* kLockSuffix = ".lock";
constexpr std::size_t kTokenLength = 6;  // mkostemps' XXXXXX

bool isLockName(const std::string& name) {
  return name.size() == std::strlen(kLockPrefix) + kTokenLength + std::strlen(kLockSuffix) &&
         name.rfind(kLockPrefix, 0) == 0 &&
         name.compare(name.size() - std::strlen(kLockSuffix), std::string::npos, kLockSuffix) == 0;
}

// True while `path` still names the file open on `fd`: a lock file removed by the render that swept it (and perhaps
// made again by another) is no longer the one locked.
bool stillNames(int fd, const std::string& path) {
  struct stat opened;
  struct stat named;
  return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino;
}

// FNV-1a: a stable, well-spread hash of the whole stem where the name must be cut.
std::uint64_t hashOf(const std::string& text) {
  std::uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : text) hash = (hash ^ c) * 1099511628211ull;
  return hash;
}

// The first `bytes` of `text`, not ending inside a UTF-8 character.
std::string headOf(const std::string& text, std::size_t bytes) {
  if (bytes >= text.size()) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  return text.substr(0, bytes);
}

}  // namespace

FolderLock::FolderLock(const std::string& folder, const std::string& forPath) : mFolder(folder.empty() ? "." : folder) {
  createLocked(forPath);
  CrashCleanup::add(mFolder, mToken);
  removeStale();
}

FolderLock::~FolderLock() {
  CrashCleanup::remove(mToken);
  // Removed while still locked: a render that opened it meanwhile finds the name gone once it gets the lock.
  std::remove(mPath.c_str());
  ::close(mFd);
}

// A render sweeping the folder may take the new file's lock before this one does, and then removes it; the lock is
// ours only once it is held on a file that still stands under its name.
void FolderLock::createLocked(const std::string& forPath) {
  for (;;) {
    std::string templ = (fs::path(mFolder) / (std::string(kLockPrefix) + "XXXXXX" + kLockSuffix)).string();
    std::vector<char> buffer(templ.begin(), templ.end());
    buffer.push_back('\0');
    int fd = ::mkostemps(buffer.data(), static_cast<int>(std::strlen(kLockSuffix)), O_CLOEXEC);
    if (fd < 0) throw MediaError(forPath, std::string("cannot be written: ") + std::strerror(errno));
    int locked;
    do {
      locked = ::flock(fd, LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    if (locked == 0 && stillNames(fd, buffer.data())) {
      mFd = fd;
      mPath = buffer.data();
      mToken = fs::path(mPath).filename().string().substr(std::strlen(kLockPrefix), kTokenLength);
      return;
    }
    ::close(fd);
    if (locked != 0) throw MediaError(forPath, std::string("cannot be locked: ") + std::strerror(errno));
  }
}

bool FolderLock::isOwnedBy(const std::string& name, const std::string& token) {
  return name.size() > 1 && name[0] == '.' && name.find("." + token + ".", 1) != std::string::npos;
}

// A lock that can be taken belongs to a render that ended without removing it, so its temporaries can go. The lock
// is held while they are removed, and its file goes last, so a sweep cut short leaves the lock for the next one.
void FolderLock::removeStale() const {
  std::error_code ec;
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(mFolder, ec))
    names.push_back(entry.path().filename().string());
  for (const std::string& lockName : names) {
    if (!isLockName(lockName) || lockName == fs::path(mPath).filename()) continue;
    const std::string lockPath = (fs::path(mFolder) / lockName).string();
    int fd = ::open(lockPath.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) continue;  // gone already, or another user's: not ours to judge
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0 && stillNames(fd, lockPath)) {
      const std::string token = lockName.substr(std::strlen(kLockPrefix), kTokenLength);
      for (const std::string& name : names)
        if (name != lockName && isOwnedBy(name, token)) std::remove((fs::path(mFolder) / name).c_str());
      std::remove(lockPath.c_str());
    }
    ::close(fd);
  }
}

std::string FolderLock::nameFor(const std::string& finalName, const std::string& role) const {
  const fs::path final(finalName);
  const std::string stem = final.stem().string(), extension = final.extension().string();
  const std::string tail = "." + mToken + "." + role + extension;
  long longest = ::pathconf(mFolder.c_str(), _PC_NAME_MAX);
  if (longest <= 0) longest = NAME_MAX;
  const std::size_t room = static_cast<std::size_t>(longest);
  if (1 + stem.size() + tail.size() <= room) return "." + stem + tail;
  const std::string hash = fmt::format("~{:016x}", hashOf(stem));
  const std::size_t fixed = 1 + hash.size() + tail.size();
  return "." + headOf(stem, room > fixed ? room - fixed : 0) + hash + tail;
}

}  // namespace Quillmere::Velmira
