#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace Quillmere::Velmira {

// Records every GL call made through glbinding while it lives, with its arguments as glbinding prints them, from
// any thread. One log at a time.
class GLCallLog {
public:
  struct Call {
    std::string name;
    std::vector<std::string> arguments;
    std::string text() const;  // "glName(a, b, c)"
  };

  GLCallLog();
  ~GLCallLog();
  GLCallLog(const GLCallLog&) = delete;
  GLCallLog& operator=(const GLCallLog&) = delete;

  std::vector<Call> calls() const;
  std::vector<std::string> names() const;
  // Only the calls whose names are among these, in order, as text.
  std::vector<std::string> only(const std::vector<std::string>& names) const;
  int count(const std::string& name) const;

private:
  mutable std::mutex mMutex;
  std::vector<Call> mCalls;
};

}  // namespace Quillmere::Velmira
