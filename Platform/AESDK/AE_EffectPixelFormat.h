// Pixel format codes: four-character codes packed low byte first.
#pragma once

#include "A.h"

typedef A_long PF_PixelFormat;

enum {
  PF_PixelFormat_ARGB32 = 0x62677261,   // "argb": 8 bits a channel
  PF_PixelFormat_ARGB64 = 0x36316561,   // "ae16": 16 bits a channel, 0 to 32768
  PF_PixelFormat_ARGB128 = 0x32336561,  // "ae32": float channels
  PF_PixelFormat_INVALID = 0x44494c56   // "VLID"
};
