#pragma once

namespace Quillmere::Velmira {

class AEOpenGLContext;

// A context of the plug-in's own kind for tests of single GL classes, made once per process and made current on the
// calling thread by use().
class TestContext {
public:
  static AEOpenGLContext& use();
};

}  // namespace Quillmere::Velmira
