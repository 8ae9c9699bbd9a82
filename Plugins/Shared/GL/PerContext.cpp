#include "GL/PerContext.h"

#include "CGLCurrent.h"

namespace Quillmere::Velmira {

const void* currentContextKey() { return CGLGetCurrentContext(); }

}  // namespace Quillmere::Velmira
