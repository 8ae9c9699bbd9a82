// Records the GL calls made through glbinding while it lives, with their arguments
// as glbinding prints them, for tests that pin an order of calls on a real context.
#pragma once

#include <string>
#include <vector>

namespace Quillmere::Velmira {

class GLCallRecorder {
public:
  struct Call {
    std::string name;                     // "glFlush"
    std::vector<std::string> parameters;  // as printed by glbinding
  };

  GLCallRecorder();
  ~GLCallRecorder();
  GLCallRecorder(const GLCallRecorder&) = delete;
  GLCallRecorder& operator=(const GLCallRecorder&) = delete;

  std::vector<std::string> names() const;
  // The calls of one function, in order.
  std::vector<Call> callsOf(const std::string& name) const;
  int count(const std::string& name) const;

private:
  std::vector<Call> mCalls;
};

}  // namespace Quillmere::Velmira
