// Frames as picture files: one image, or one file per frame of a numbered sequence.
#pragma once

#include <memory>
#include <string>

#include "Media/FrameSink.h"
#include "Media/ImageEncoder.h"
#include "Media/MediaInfo.h"
#include "Media/TempFile.h"

namespace Quillmere::Velmira {

class ImageSink : public FrameSink {
public:
  // For a single image the temporary file is made now, and a sequence's folder is tried, so a folder that
  // cannot be written fails before any rendering.
  ImageSink(const std::string& path, const MediaInfo& source);

  void write(const ArgbFrame& frame) override;
  void finish() override;

private:
  // Each file is complete when it appears: encoded, written under a temporary name, renamed. A sequence file
  // is numbered by the frame's index, which is the file number of a source sequence, so numbers carry over.
  void writeFile(TempFile& file, const ArgbFrame& frame);

  std::string mPath;
  bool mSequence;
  ImageEncoder mEncoder;
  std::unique_ptr<TempFile> mSingle;
  int mWritten = 0;
};

}  // namespace Quillmere::Velmira
