#include "Core/SuiteBroker.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "AE_EffectSuites.h"
#include "AE_GeneralPlug.h"
#include "Core/AnsiCallbacks.h"
#include "Core/FloatIterator.h"
#include "Core/HostHandles.h"
#include "Core/MemoryHandles.h"
#include "Core/ScriptlessUtility.h"

namespace Quillmere::Velmira {

namespace {

using SuiteKey = std::pair<std::string, int32_t>;

const std::map<SuiteKey, const void*>& offeredSuites() {
  static const std::map<SuiteKey, const void*> kSuites{
      {{kPFANSISuite, kPFANSISuiteVersion1}, &AnsiCallbacks::suite()},
      {{kPFHandleSuite, kPFHandleSuiteVersion1}, &HostHandles::suite()},
      {{kPFIterateFloatSuite, kPFIterateFloatSuiteVersion1}, &FloatIterator::suite()},
      {{kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5}, &ScriptlessUtility::suite()},
      {{kAEGPMemorySuite, kAEGPMemorySuiteVersion1}, &MemoryHandles::suite()},
  };
  return kSuites;
}

std::mutex gMutex;
std::map<SuiteKey, std::size_t> gHeld;

}  // namespace

SPBasicSuite* SuiteBroker::basicSuite() {
  static SPBasicSuite kBasic{acquireSuite, releaseSuite, isEqual, allocateBlock, freeBlock, reallocateBlock, undefined};
  return &kBasic;
}

SPErr SuiteBroker::acquireSuite(const char* name, int32_t version, const void** suite) {
  if (!name || !suite) return kSPBadParameterError;
  auto found = offeredSuites().find({name, version});
  if (found == offeredSuites().end()) {
    *suite = nullptr;
    return kSPSuiteNotFoundError;
  }
  std::lock_guard<std::mutex> lock(gMutex);
  ++gHeld[found->first];
  *suite = found->second;
  return kSPNoError;
}

SPErr SuiteBroker::releaseSuite(const char* name, int32_t version) {
  if (!name) return kSPBadParameterError;
  std::lock_guard<std::mutex> lock(gMutex);
  auto held = gHeld.find({name, version});
  if (held == gHeld.end() || held->second == 0) return kSPSuiteNotFoundError;
  --held->second;
  return kSPNoError;
}

SPBoolean SuiteBroker::isEqual(const char* token1, const char* token2) {
  return token1 && token2 && std::strcmp(token1, token2) == 0;
}

SPErr SuiteBroker::allocateBlock(size_t size, void** block) {
  if (!block) return kSPBadParameterError;
  *block = std::malloc(size == 0 ? 1 : size);
  return *block ? kSPNoError : kSPOutOfMemoryError;
}

SPErr SuiteBroker::freeBlock(void* block) {
  std::free(block);
  return kSPNoError;
}

SPErr SuiteBroker::reallocateBlock(void* block, size_t newSize, void** newBlock) {
  if (!newBlock) return kSPBadParameterError;
  void* grown = std::realloc(block, newSize == 0 ? 1 : newSize);
  if (!grown) return kSPOutOfMemoryError;
  *newBlock = grown;
  return kSPNoError;
}

SPErr SuiteBroker::undefined() { return kSPUnimplementedError; }

std::size_t SuiteBroker::heldCount() {
  std::lock_guard<std::mutex> lock(gMutex);
  std::size_t total = 0;
  for (const auto& entry : gHeld) total += entry.second;
  return total;
}

std::size_t SuiteBroker::heldCount(const std::string& name, int32_t version) {
  std::lock_guard<std::mutex> lock(gMutex);
  auto held = gHeld.find({name, version});
  return held == gHeld.end() ? 0 : held->second;
}

}  // namespace Quillmere::Velmira
