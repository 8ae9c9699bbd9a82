// Basic scalar types and error codes shared by effect and AEGP interfaces.
#pragma once

#include <cstdint>

typedef int32_t A_long;
typedef uint32_t A_u_long;
typedef int16_t A_short;
typedef uint16_t A_u_short;
typedef char A_char;
typedef unsigned char A_u_char;
typedef unsigned char A_Boolean;
typedef uint64_t A_u_longlong;
typedef double A_FpLong;
typedef float A_FpShort;
typedef A_long A_Err;
typedef A_u_longlong A_HandleSize;

enum {
  A_Err_NONE = 0,
  A_Err_GENERIC = 1,
  A_Err_STRUCT = 2,
  A_Err_PARAMETER = 3,
  A_Err_ALLOC = 4,
  A_Err_WRONG_THREAD = 5,
  A_Err_CONST_PROJECT_MODIFICATION = 6,
  A_Err_MISSING_SUITE = 13
};
