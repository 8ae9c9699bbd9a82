// The one error class of the media layer.
#pragma once

#include <stdexcept>
#include <string>

namespace Quillmere::Velmira {

// Thrown for every media failure: a missing, unreadable, truncated or corrupt file, an unknown format,
// a zero-sized frame, an output that cannot be written. what() reads "<path>: <problem>", so the host can
// print it as it stands.
class MediaError : public std::runtime_error {
public:
  MediaError(const std::string& path, const std::string& problem);

  // The file (or sequence pattern) the error is about.
  const std::string& path() const { return mPath; }
  // The problem without the path.
  const std::string& problem() const { return mProblem; }

private:
  std::string mPath;
  std::string mProblem;
};

}  // namespace Quillmere::Velmira
