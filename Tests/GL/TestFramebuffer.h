// A frame buffer object bound on the current context, complete (one colour texture)
// or incomplete (no attachment), for tests of the flush rule. Made and deleted on
// the same context, which must be current both times.
#pragma once

#include <cstdint>

namespace Quillmere::Velmira {

class TestFramebuffer {
public:
    explicit TestFramebuffer(bool complete);
    ~TestFramebuffer();
    TestFramebuffer(const TestFramebuffer&) = delete;
    TestFramebuffer& operator=(const TestFramebuffer&) = delete;

private:
    uint32_t mFramebuffer;
    uint32_t mTexture;
};

}  // namespace Quillmere::Velmira
