#include "Media/MediaError.h"

namespace Quillmere::Velmira {

MediaError::MediaError(const std::string& path, const std::string& problem)
    : std::runtime_error(path + ": " + problem), mPath(path), mProblem(problem) {}

}  // namespace Quillmere::Velmira
