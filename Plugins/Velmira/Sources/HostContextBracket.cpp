#include "HostContextBracket.h"

#include "GL/SaveRestoreGLContextMac.h"

namespace Quillmere::Velmira {

HostContextBracket::HostContextBracket() : mSaver(SaveRestoreGLContextMac::init()) {}

HostContextBracket::~HostContextBracket() {
  if (mSaver != nullptr) {
    mSaver->restore();
    mSaver->release();
  }
}

void HostContextBracket::restore() {
  if (mSaver != nullptr) {
    mSaver->restore();
  }
}

}  // namespace Quillmere::Velmira
