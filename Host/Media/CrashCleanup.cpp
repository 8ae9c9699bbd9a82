#include "Media/CrashCleanup.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace Quillmere::Velmira {

namespace {

constexpr int kSlots = 8;
constexpr std::size_t kTokenSize = 16;

// A slot is claimed first, then filled, then published by its descriptor; a handler reads the token only after it sees
// a descriptor.
struct Slot {
  std::atomic<bool> claimed{false};
  std::atomic<int> folder{-1};
  char token[kTokenSize] = {};
};
Slot gSlots[kSlots];

// As the kernel hands directory entries to getdents64 (glibc 2.36 declares no such type). The name is as long as the
// entry's length says, at most NAME_MAX and its NUL; only that much of it is read.
struct LinuxDirent64 {
  ino64_t inode;
  off64_t offset;
  unsigned short length;
  unsigned char type;
  char name[256];
};

// ".<anything>.<token>.partial<ext>" or ".velmira.<token>.lock".
bool isTemporaryOf(const char* name, const char* token) {
  if (name[0] != '.') return false;
  char mark[kTokenSize + 16] = ".";
  std::strcat(std::strcat(mark, token), ".");
  const char* at = std::strstr(name + 1, mark);
  if (!at) return false;
  const char* role = at + std::strlen(mark);
  return std::strncmp(role, "partial", 7) == 0 || std::strcmp(role, "lock") == 0;
}

void removeIn(int folder, const char* token) {
  alignas(LinuxDirent64) char buffer[4096];
  if (::lseek(folder, 0, SEEK_SET) != 0) return;
  for (;;) {
    long got = ::syscall(SYS_getdents64, folder, buffer, sizeof buffer);
    if (got <= 0) return;
    for (long at = 0; at < got;) {
      const auto* entry = reinterpret_cast<const LinuxDirent64*>(buffer + at);
      if (isTemporaryOf(entry->name, token)) ::unlinkat(folder, entry->name, 0);
      at += entry->length;
    }
  }
}

}  // namespace

void CrashCleanup::add(const std::string& folder, const std::string& token) {
  if (token.size() >= kTokenSize) return;
  for (Slot& slot : gSlots) {
    bool free = false;
    if (!slot.claimed.compare_exchange_strong(free, true)) continue;
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
      slot.claimed.store(false);
      return;
    }
    std::memcpy(slot.token, token.c_str(), token.size() + 1);
    slot.folder.store(fd);
    return;
  }
}

void CrashCleanup::remove(const std::string& token) {
  for (Slot& slot : gSlots) {
    int fd = slot.folder.load();
    if (fd == -1 || token != slot.token || !slot.folder.compare_exchange_strong(fd, -1)) continue;
    ::close(fd);
    slot.claimed.store(false);
  }
}

void CrashCleanup::removeTemporaries() {
  for (Slot& slot : gSlots) {
    int fd = slot.folder.load();
    if (fd != -1) removeIn(fd, slot.token);
  }
}

}  // namespace Quillmere::Velmira
