#include "TestFramebuffer.h"

#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

using namespace gl;

namespace Quillmere::Velmira {

TestFramebuffer::TestFramebuffer(bool complete) : mFramebuffer(0), mTexture(0)
{
    glGenFramebuffers(1, &mFramebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, mFramebuffer);
    if (complete) {
        glGenTextures(1, &mTexture);
        glBindTexture(GL_TEXTURE_2D, mTexture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glBindTexture(GL_TEXTURE_2D, 0);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mTexture, 0);
    }
}

TestFramebuffer::~TestFramebuffer()
{
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &mFramebuffer);
    if (mTexture != 0) {
        glDeleteTextures(1, &mTexture);
    }
}

}  // namespace Quillmere::Velmira
