#include "Media/ImageSink.h"

#include <cstdio>
#include <filesystem>
#include <vector>

#include "Media/MediaError.h"
#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

ImageSink::ImageSink(const std::string& path, const MediaInfo& source)
    : mPath(path), mSequence(MediaPath::isSequencePattern(path)), mEncoder(path, source.hasAlpha) {
  if (!mSequence)
    mSingle = std::make_unique<TempFile>(path);
  else
    mSequenceLock = std::make_shared<const FolderLock>(std::filesystem::path(path).parent_path().string(), path);
}

void ImageSink::writeFile(TempFile& file, const ArgbFrame& frame) {
  std::vector<std::uint8_t> bytes = mEncoder.encode(frame, file.finalPath());
  std::FILE* out = std::fopen(file.path().c_str(), "wb");
  if (!out) throw MediaError(file.finalPath(), "cannot be written");
  bool ok = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
  ok = std::fclose(out) == 0 && ok;
  if (!ok) throw MediaError(file.finalPath(), "cannot be written (disk full?)");
}

void ImageSink::write(const ArgbFrame& frame) {
  if (!mSequence) {
    if (mWritten > 0)
      throw MediaError(mPath,
                       "names one picture but a second frame came; write a pattern such as "
                       "frame_%04d.png for more");
    writeFile(*mSingle, frame);
  } else {
    const std::string name = MediaPath::sequenceFileName(mPath, frame.index);
    writeFile(mSequenceFiles.try_emplace(frame.index, name, mSequenceLock).first->second, frame);
  }
  ++mWritten;
}

void ImageSink::finish() {
  if (mSingle) {
    if (mWritten == 0) throw MediaError(mPath, "no frame was written");
    mSingle->commit();
    mSingle.reset();
    return;
  }
  if (mSequenceFiles.empty()) throw MediaError(mPath, "no frame was written");
  std::vector<TempFile*> files;
  for (auto& [index, file] : mSequenceFiles) files.push_back(&file);
  TempFile::commitAll(files);
  mSequenceFiles.clear();
}

}  // namespace Quillmere::Velmira
