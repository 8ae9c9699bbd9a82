#include "Media/MediaPath.h"

#include <algorithm>
#include <cctype>
#include <charconv>
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

// The text around the number field, where "%%" stands for one percent sign.
std::string literal(std::string text) {
  for (std::size_t i = 0; (i = text.find("%%", i)) != std::string::npos; ++i) text.erase(i, 1);
  return text;
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
  return (p.parent_path() / (literal(name.substr(0, start)) + digits + literal(name.substr(start + length)))).string();
}

std::optional<std::int64_t> MediaPath::sequenceNumber(const std::string& pattern, const std::string& fileName) {
  const std::string name = fileNameOf(pattern);
  std::size_t start = 0, length = 0;
  if (!findNumberField(name, start, length)) return std::nullopt;
  // The number is all that lies between the pattern's text before its field and after it, digits of the
  // name's own included: "f_%d0.png" names frame 5 "f_50.png".
  const std::string before = literal(name.substr(0, start)), after = literal(name.substr(start + length));
  if (fileName.size() <= before.size() + after.size() || fileName.compare(0, before.size(), before) != 0 ||
      fileName.compare(fileName.size() - after.size(), after.size(), after) != 0)
    return std::nullopt;
  const char* first = fileName.data() + before.size();
  const char* last = fileName.data() + fileName.size() - after.size();
  std::int64_t number = 0;
  auto [end, error] = std::from_chars(first, last, number);
  if (*first < '0' || *first > '9' || error != std::errc() || end != last) return std::nullopt;
  // Only the pattern's own spelling: "f_7.png" is not frame 7 of "f_%04d.png", nor "f_007.png" of "f_%d.png".
  if (fileNameOf(sequenceFileName(pattern, number)) != fileName) return std::nullopt;
  return number;
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
