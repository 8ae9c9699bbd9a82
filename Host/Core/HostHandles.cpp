#include "Core/HostHandles.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "Core/CallRecorder.h"

namespace Quillmere::Velmira {

namespace {

// The handle is the address of `data`, the first member, so *handle is the block itself.
struct HandleBlock {
  void* data;
  A_HandleSize size;
};

std::atomic<std::size_t> gLiveHandles{0};

HandleBlock* blockOf(PF_Handle handle) { return reinterpret_cast<HandleBlock*>(handle); }

}  // namespace

PF_Handle HostHandles::newHandle(A_HandleSize size) {
  auto* block = new (std::nothrow) HandleBlock{nullptr, size};
  if (!block) return nullptr;
  // Zeroed, so a plug-in that reads before it writes sees the same bytes on every run.
  block->data = std::calloc(size == 0 ? 1 : size, 1);
  if (!block->data) {
    delete block;
    return nullptr;  // the effect API reports a failed allocation by a null handle
  }
  ++gLiveHandles;
  return reinterpret_cast<PF_Handle>(block);
}

void* HostHandles::lockHandle(PF_Handle handle) { return handle ? blockOf(handle)->data : nullptr; }

void HostHandles::unlockHandle(PF_Handle) {
  // Blocks never move while they live, so locking pins nothing.
}

void HostHandles::disposeHandle(PF_Handle handle) {
  if (!handle) return;
  std::free(blockOf(handle)->data);
  delete blockOf(handle);
  --gLiveHandles;
}

A_HandleSize HostHandles::handleSize(PF_Handle handle) { return handle ? blockOf(handle)->size : 0; }

PF_Err HostHandles::resizeHandle(A_HandleSize newSize, PF_Handle* handle) {
  if (!handle || !*handle) return PF_Err_BAD_CALLBACK_PARAM;
  HandleBlock* block = blockOf(*handle);
  void* grown = std::realloc(block->data, newSize == 0 ? 1 : newSize);
  if (!grown) return PF_Err_OUT_OF_MEMORY;
  if (newSize > block->size) std::memset(static_cast<char*>(grown) + block->size, 0, newSize - block->size);
  block->data = grown;
  block->size = newSize;
  return PF_Err_NONE;
}

const PF_HandleSuite1& HostHandles::suite() {
  static const PF_HandleSuite1 kSuite{VELMIRA_TRACED("HandleSuite.host_new_handle", newHandle),
                                      VELMIRA_TRACED("HandleSuite.host_lock_handle", lockHandle),
                                      VELMIRA_TRACED("HandleSuite.host_unlock_handle", unlockHandle),
                                      VELMIRA_TRACED("HandleSuite.host_dispose_handle", disposeHandle),
                                      VELMIRA_TRACED("HandleSuite.host_get_handle_size", handleSize),
                                      VELMIRA_TRACED("HandleSuite.host_resize_handle", resizeHandle)};
  return kSuite;
}

std::size_t HostHandles::liveCount() { return gLiveHandles.load(); }

}  // namespace Quillmere::Velmira
