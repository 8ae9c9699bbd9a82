// Frames as picture files: one image, or one file per frame of a numbered sequence.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Media/FolderLock.h"
#include "Media/FrameSink.h"
#include "Media/ImageEncoder.h"
#include "Media/MediaInfo.h"
#include "Media/TempFile.h"

namespace Quillmere::Velmira {

class ImageSink : public FrameSink {
public:
  // For a single image the temporary file is made now, and a sequence's folder is locked, so a folder that
  // cannot be written fails before any rendering.
  ImageSink(const std::string& path, const MediaInfo& source);

  void write(const ArgbFrame& frame) override;
  // Puts the one picture, or every file of the sequence at once, in place: a sequence that fails before this leaves
  // none of its files and an earlier sequence of the same name as it was.
  void finish() override;

private:
  // A sequence file is numbered by the frame's index, which is the file number of a source sequence, so numbers
  // carry over; a frame of a number already written replaces it.
  void writeFile(TempFile& file, const ArgbFrame& frame);

  std::string mPath;
  bool mSequence;
  ImageEncoder mEncoder;
  std::unique_ptr<TempFile> mSingle;
  std::shared_ptr<const FolderLock> mSequenceLock;
  std::map<std::int64_t, TempFile> mSequenceFiles;
  int mWritten = 0;
};

}  // namespace Quillmere::Velmira
