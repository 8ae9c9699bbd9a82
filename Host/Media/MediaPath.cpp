#include "Media/MediaPath.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>

namespace Quillmere::Velmira {

namespace {

// %d or %0Nd, with no other conversion in the name ("%%" is a literal percent sign).
bool findNumberField(const std::string& name, std::size_t& start, std::size_t& length) {
  int fields = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] != '%') continue;
    if (i + 1 < name.size() && name[i + 1] == '%') {
      ++i;
      continue;
    }
    std::size_t j = i + 1;
    if (j < name.size() && name[j] == '0') {
      ++j;
      if (j >= name.size() || name[j] < '1' || name[j] > '9') return false;
      ++j;
    }
    if (j >= name.size() || name[j] != 'd') return false;
    start = i;
    length = j + 1 - i;
    ++fields;
    i = j;
  }
  return fields == 1;
}

std::string fileNameOf(const std::string& path) { return std::filesystem::path(path).filename().string(); }

}  // namespace

bool MediaPath::isSequencePattern(const std::string& path) {
  std::size_t start = 0, length = 0;
  return findNumberField(fileNameOf(path), start, length);
}

std::string MediaPath::sequenceFileName(const std::string& pattern, std::int64_t number) {
  std::filesystem::path p(pattern);
  std::string name = p.filename().string();
  std::size_t start = 0, length = 0;
  if (!findNumberField(name, start, length)) return pattern;
  int width = length == 4 ? name[start + 2] - '0' : 0;
  char digits[32];
  std::snprintf(digits, sizeof digits, "%0*lld", width, static_cast<long long>(number));
  std::string out = name.substr(0, start) + digits + name.substr(start + length);
  // A literal percent sign in the rest of the name is written "%%".
  for (std::size_t i = 0; (i = out.find("%%", i)) != std::string::npos; ++i) out.erase(i, 1);
  return (p.parent_path() / out).string();
}

std::optional<std::int64_t> MediaPath::sequenceNumber(const std::string& pattern, const std::string& fileName) {
  // Each run of digits is tried as the number; the name is accepted only if the pattern prints exactly that name
  // for it, so "f2_0007.png" is not frame 2.
  for (std::size_t start = 0; start < fileName.size();) {
    if (fileName[start] < '0' || fileName[start] > '9') {
      ++start;
      continue;
    }
    std::size_t end = start;
    while (end < fileName.size() && fileName[end] >= '0' && fileName[end] <= '9') ++end;
    if (end - start <= 18) {
      std::int64_t number = std::stoll(fileName.substr(start, end - start));
      if (fileNameOf(sequenceFileName(pattern, number)) == fileName) return number;
    }
    start = end;
  }
  return std::nullopt;
}

MediaKind MediaPath::kindOf(const std::string& path) {
  if (isSequencePattern(path)) return MediaKind::Sequence;
  static const char* const kVideoExtensions[] = {".mp4", ".mov", ".mkv", ".m4v", ".webm", ".avi"};
  std::string ext = extension(path);
  for (const char* video : kVideoExtensions)
    if (ext == video) return MediaKind::Video;
  return MediaKind::Image;
}

std::string MediaPath::extension(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
  return ext;
}

}  // namespace Quillmere::Velmira
