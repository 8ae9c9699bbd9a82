#include "Command/OverwriteCheck.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Core/HostError.h"
#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

namespace {

namespace fs = std::filesystem;

using Identity = std::pair<dev_t, ino_t>;
using Numbers = std::pair<std::int64_t, std::int64_t>;

std::optional<Identity> identityOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return Identity{status.st_dev, status.st_ino};
}

// Two names of one file: the same inode where both exist, else the same place once links are followed.
bool sameFile(const std::string& a, const std::string& b) {
  std::optional<Identity> left = identityOf(a), right = identityOf(b);
  if (left || right) return left == right;
  std::error_code error;
  return fs::weakly_canonical(fs::absolute(a), error) == fs::weakly_canonical(fs::absolute(b), error);
}

std::vector<std::string> filesOf(const std::string& path, Numbers numbers) {
  if (!MediaPath::isSequencePattern(path)) return {path};
  std::vector<std::string> files;
  for (std::int64_t n = numbers.first; n <= numbers.second; ++n) files.push_back(MediaPath::sequenceFileName(path, n));
  return files;
}

std::string alias(const std::string& name, const std::string& file) {
  return name == file ? "" : fmt::format(" ({} under another name)", file);
}

}  // namespace

void OverwriteCheck::refuse(const MediaInfo& input, const std::string& output, const std::string& compare) {
  std::map<Identity, std::string> read;
  Numbers allInputFiles{input.firstNumber, input.lastNumber};
  for (const std::string& file : filesOf(input.path, allInputFiles)) {
    if (std::optional<Identity> identity = identityOf(file)) read.emplace(*identity, file);
  }
  const FrameRange written = input.frames();
  std::vector<std::string> outputs = filesOf(output, {written.first, written.last});
  if (!compare.empty()) {
    for (const std::string& file : outputs) {
      if (sameFile(compare, file)) {
        throw HostError::usage(
            fmt::format("--compare {} is also the output{}; give the before/after picture a name "
                        "of its own",
                        compare, alias(compare, file)));
      }
    }
    outputs.push_back(compare);
  }
  for (const std::string& file : outputs) {
    std::optional<Identity> identity = identityOf(file);
    if (!identity) continue;
    auto found = read.find(*identity);
    if (found != read.end()) {
      throw HostError::usage(
          fmt::format("{} is the input{}; velmira never writes over its input, choose another output", file,
                      alias(file, found->second)));
    }
  }
}

}  // namespace Quillmere::Velmira
