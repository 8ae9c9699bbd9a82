#include <gtest/gtest.h>

#include <filesystem>

#include "Media/MediaPath.h"

namespace Quillmere::Velmira {
namespace {

// What a path names follows its text: a single %d or %0Nd in the file name makes a sequence, whose file of a frame
// has the number padded to N digits and "%%" as a literal percent sign; otherwise the extension decides, case ignored.
TEST(MediaPath, KindAndSequenceFileNameFollowTheText) {
  // Patterns, and their files of frame 123, which read back as that frame.
  const std::pair<const char*, const char*> sequences[] = {
      {"frame_%04d.png", "frame_0123.png"}, {"out/f%d.tif", "out/f123.tif"},        {"f_%02d.png", "f_123.png"},
      {"a_%09d.jpg", "a_000000123.jpg"},    {"d%%/x%%_%03d.png", "d%%/x%_123.png"}, {"%d0.png", "1230.png"}};
  for (const auto& [pattern, file] : sequences) {
    EXPECT_EQ(MediaPath::kindOf(pattern), MediaKind::Sequence) << pattern;
    EXPECT_EQ(MediaPath::sequenceFileName(pattern, 123), file);
    EXPECT_EQ(MediaPath::sequenceNumber(pattern, std::filesystem::path(file).filename()), 123) << pattern;
  }
  const std::pair<const char*, MediaKind> others[] = {
      {"100%.png", MediaKind::Image}, {"a%%b.png", MediaKind::Image},  {"a_%04d_%04d.png", MediaKind::Image},
      {"x%4d.png", MediaKind::Image}, {"x%00d.png", MediaKind::Image}, {"dir_%04d/still.png", MediaKind::Image},
      {"%s.png", MediaKind::Image},   {"CLIP.MP4", MediaKind::Video},  {"noextension", MediaKind::Image}};
  for (const auto& [path, kind] : others) EXPECT_EQ(MediaPath::kindOf(path), kind) << path;
}

}  // namespace
}  // namespace Quillmere::Velmira
