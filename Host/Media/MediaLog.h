// How much of FFmpeg's own talk reaches stderr.
#pragma once

namespace Quillmere::Velmira {

// FFmpeg's libraries print to stderr by themselves, x264's statistics and every container's notes among them.
// The media layer reports what matters through MediaError, so a command mutes all but FFmpeg's errors, and
// turns the rest back on for a verbose run. Process-wide: call once, before readers and writers start.
class MediaLog {
public:
  static void setVerbose(bool verbose);
};

}  // namespace Quillmere::Velmira
