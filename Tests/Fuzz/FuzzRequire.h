// An invariant of the parser under fuzzing. A broken one aborts, which libFuzzer reports as a crash, saving the input.
#pragma once

#include <cstdio>
#include <cstdlib>

#define FUZZ_REQUIRE(condition) \
  ((condition)                  \
       ? void()                 \
       : (std::fprintf(stderr, "%s:%d: invariant broken: %s\n", __FILE__, __LINE__, #condition), std::abort()))
