// The host's suite broker: suites are asked for by name and version.
#pragma once

#include <cstddef>
#include <cstdint>

typedef int32_t SPErr;
typedef unsigned char SPBoolean;

enum {
  kSPNoError = 0,
  kSPUnimplementedError = 0x21494d50,  // '!IMP'
  kSPOutOfMemoryError = -108,
  kSPBadParameterError = 0x7061726d,  // 'parm'
  kSPSuiteNotFoundError = 0x53214664  // 'S!Fd'
};

typedef struct SPBasicSuite {
  SPErr (*AcquireSuite)(const char* name, int32_t version, const void** suite);
  SPErr (*ReleaseSuite)(const char* name, int32_t version);
  SPBoolean (*IsEqual)(const char* token1, const char* token2);
  SPErr (*AllocateBlock)(size_t size, void** block);
  SPErr (*FreeBlock)(void* block);
  SPErr (*ReallocateBlock)(void* block, size_t newSize, void** newblock);
  SPErr (*Undefined)(void);
} SPBasicSuite;
