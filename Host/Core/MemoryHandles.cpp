#include "Core/MemoryHandles.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_set>

#include "Core/CallRecorder.h"

namespace Quillmere::Velmira {

namespace {

struct MemoryBlock {
  int lockCount;
  AEGP_MemSize size;
  void* data;
};

// Every block the host made and has not freed. A handle that is not here (never made,
// or already freed) is answered with an error instead of being trusted.
std::mutex gMutex;
std::unordered_set<MemoryBlock*> gLive;
std::atomic<std::size_t> gLiveCount{0};
std::atomic<AEGP_MemSize> gLiveBytes{0};

MemoryBlock* liveBlock(AEGP_MemHandle handle) {
  auto* block = reinterpret_cast<MemoryBlock*>(handle);
  std::lock_guard<std::mutex> lock(gMutex);
  return gLive.count(block) ? block : nullptr;
}

}  // namespace

A_Err MemoryHandles::newHandle(AEGP_PluginID, const A_char*, AEGP_MemSize size, AEGP_MemFlag flags,
                               AEGP_MemHandle* handle) {
  if (!handle) return A_Err_PARAMETER;
  *handle = nullptr;
  auto* block = new (std::nothrow) MemoryBlock{0, size, nullptr};
  if (!block) return A_Err_ALLOC;
  block->data = (flags & AEGP_MemFlag_CLEAR) ? std::calloc(size == 0 ? 1 : size, 1) : std::malloc(size == 0 ? 1 : size);
  if (!block->data) {
    delete block;
    return A_Err_ALLOC;
  }
  {
    std::lock_guard<std::mutex> lock(gMutex);
    gLive.insert(block);
  }
  ++gLiveCount;
  gLiveBytes += size;
  *handle = reinterpret_cast<AEGP_MemHandle>(block);
  return A_Err_NONE;
}

A_Err MemoryHandles::freeHandle(AEGP_MemHandle handle) {
  auto* block = reinterpret_cast<MemoryBlock*>(handle);
  {
    std::lock_guard<std::mutex> lock(gMutex);
    if (gLive.erase(block) == 0) return A_Err_PARAMETER;
  }
  // A locked handle may be freed: the caller is done with it either way.
  std::free(block->data);
  gLiveBytes -= block->size;
  --gLiveCount;
  delete block;
  return A_Err_NONE;
}

A_Err MemoryHandles::lockHandle(AEGP_MemHandle handle, void** pointer) {
  if (!pointer) return A_Err_PARAMETER;
  *pointer = nullptr;
  MemoryBlock* block = liveBlock(handle);
  if (!block) return A_Err_PARAMETER;
  ++block->lockCount;
  *pointer = block->data;
  return A_Err_NONE;
}

A_Err MemoryHandles::unlockHandle(AEGP_MemHandle handle) {
  MemoryBlock* block = liveBlock(handle);
  if (!block || block->lockCount == 0) return A_Err_PARAMETER;
  --block->lockCount;
  return A_Err_NONE;
}

A_Err MemoryHandles::handleSize(AEGP_MemHandle handle, AEGP_MemSize* size) {
  MemoryBlock* block = liveBlock(handle);
  if (!block || !size) return A_Err_PARAMETER;
  *size = block->size;
  return A_Err_NONE;
}

A_Err MemoryHandles::resizeHandle(const A_char*, AEGP_MemSize newSize, AEGP_MemHandle handle) {
  MemoryBlock* block = liveBlock(handle);
  if (!block) return A_Err_PARAMETER;
  if (block->lockCount > 0) return A_Err_GENERIC;  // a locked block must not move under its user
  void* grown = std::realloc(block->data, newSize == 0 ? 1 : newSize);
  if (!grown) return A_Err_ALLOC;
  gLiveBytes += newSize;
  gLiveBytes -= block->size;
  block->data = grown;
  block->size = newSize;
  return A_Err_NONE;
}

A_Err MemoryHandles::setReportingOn(A_Boolean) { return A_Err_NONE; }

A_Err MemoryHandles::memoryStats(AEGP_PluginID, A_long* count, A_long* size) {
  if (count) *count = static_cast<A_long>(gLiveCount.load());
  if (size) *size = static_cast<A_long>(gLiveBytes.load());
  return A_Err_NONE;
}

AEGP_MemHandle MemoryHandles::newText(const char* what, const char* text) {
  AEGP_MemHandle handle = nullptr;
  std::size_t length = std::strlen(text);
  if (newHandle(0, what, length + 1, AEGP_MemFlag_NONE, &handle) != A_Err_NONE) return nullptr;
  std::memcpy(reinterpret_cast<MemoryBlock*>(handle)->data, text, length + 1);
  return handle;
}

const AEGP_MemorySuite1& MemoryHandles::suite() {
  static const AEGP_MemorySuite1 kSuite{VELMIRA_TRACED("MemorySuite.AEGP_NewMemHandle", newHandle),
                                        VELMIRA_TRACED("MemorySuite.AEGP_FreeMemHandle", freeHandle),
                                        VELMIRA_TRACED("MemorySuite.AEGP_LockMemHandle", lockHandle),
                                        VELMIRA_TRACED("MemorySuite.AEGP_UnlockMemHandle", unlockHandle),
                                        VELMIRA_TRACED("MemorySuite.AEGP_GetMemHandleSize", handleSize),
                                        VELMIRA_TRACED("MemorySuite.AEGP_ResizeMemHandle", resizeHandle),
                                        VELMIRA_TRACED("MemorySuite.AEGP_SetMemReportingOn", setReportingOn),
                                        VELMIRA_TRACED("MemorySuite.AEGP_GetMemStats", memoryStats)};
  return kSuite;
}

std::size_t MemoryHandles::liveCount() { return gLiveCount.load(); }

}  // namespace Quillmere::Velmira
