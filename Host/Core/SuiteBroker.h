#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "SPBasic.h"

namespace Quillmere::Velmira {

// The host's SPBasicSuite: hands out the suites it offers by name and version, and counts
// what is held, so a test can see that every acquire had its release. The broker is one
// per process because SPBasicSuite's functions carry no pointer back to a host object.
class SuiteBroker {
public:
  static SPBasicSuite* basicSuite();

  // Suites acquired and not yet released, all names together, or of one name and version.
  static std::size_t heldCount();
  static std::size_t heldCount(const std::string& name, int32_t version);

private:
  static SPErr acquireSuite(const char* name, int32_t version, const void** suite);
  static SPErr releaseSuite(const char* name, int32_t version);
  static SPBoolean isEqual(const char* token1, const char* token2);
  static SPErr allocateBlock(size_t size, void** block);
  static SPErr freeBlock(void* block);
  static SPErr reallocateBlock(void* block, size_t newSize, void** newBlock);
  static SPErr undefined();
};

}  // namespace Quillmere::Velmira
