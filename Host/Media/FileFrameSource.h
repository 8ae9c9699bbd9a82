// The frames of one file, image or video, through libavformat and libavcodec.
#pragma once

#include <memory>
#include <string>

#include "Media/DecoderLog.h"
#include "Media/FfmpegHandles.h"
#include "Media/FrameSource.h"
#include "Media/MediaInfo.h"
#include "Media/PixelConverter.h"

namespace Quillmere::Velmira {

class FileFrameSource : public FrameSource {
public:
  // Opens the file and fills what it can tell of `info` (size, rate, time base, counts, colour, rotation).
  // Frame indexes count from 0; those outside `range` are decoded and dropped. A picture is decoded here already, as
  // its EXIF orientation, which may swap its sides, shows only on the decoded frame.
  FileFrameSource(const std::string& path, FrameRange range, MediaInfo& info, OnDamage onDamage = OnDamage::Fail);

  bool next(ArgbFrame& frame) override;
  void seek(std::int64_t index) override;

  // A whole still image read in one call, for the files of a sequence; returns its damage (under Accept).
  static std::vector<FrameDamage> readImage(const std::string& path, ArgbFrame& frame, MediaInfo& info,
                                            OnDamage onDamage);

private:
  void open();
  void openDecoder();
  void holdPicture();
  void describe(MediaInfo& info);
  bool decodeNext();
  void sendPacket();
  void checkDecoded();
  void damaged(FrameDamage damage);
  void deliver(ArgbFrame& frame);
  void seekVideo(std::int64_t index);
  std::int64_t indexOfDecoded() const;
  void checkComplete();
  [[noreturn]] void fail(const std::string& problem) const;

  std::string mPath;
  FrameRange mRange;
  OnDamage mOnDamage;
  InputFormatPtr mFormat;
  CodecContextPtr mDecoder;
  std::unique_ptr<DecoderLog> mLog;  // watches mDecoder: declared after it, so it stops watching first
  FramePtr mDecoded = FramePtr(av_frame_alloc());
  PacketPtr mPacket = PacketPtr(av_packet_alloc());
  PixelConverter mConverter;
  ArgbFrame mStored;  // a picture as stored, before its orientation turns it upright
  int mOrientation = 1;
  int mStream = -1;
  std::int64_t mStartPts = 0;
  std::int64_t mNextIndex = 0;
  std::int64_t mStatedFrames = 0;  // what the container says of the video's length; 0 when it does not
  std::int64_t mDecodedCount = 0;  // frames the decoder gave, in range or not
  int mMatrix = AVCOL_SPC_UNSPECIFIED;
  bool mFullRange = false;
  bool mStill = false;
  bool mHeld = false;  // mDecoded holds a picture decoded before it was asked for
  bool mDraining = false;
  bool mDone = false;
  bool mSeeking = false;  // the next decoded frame's number comes from its time, not from counting
};

}  // namespace Quillmere::Velmira
