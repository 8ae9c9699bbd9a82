// What the media tests share: one folder of test media, a copy as the host makes it, and ways to read back what a
// test wrote.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

#include "Core/ArgbFrame.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"

namespace Quillmere::Velmira {

// Made at first use and kept for the whole program: making H.264 with audio is the slow part. Each clip has ten
// frames, a stereo AAC track and, where the container can hold one, a display matrix turning it 90 degrees
// clockwise.
inline MediaFixtures& sharedMedia() {
  static MediaFixtures media;
  static const bool made = [] {
    for (const char* name : {"clip.mp4", "clip.mov", "clip.mkv", "ntsc.mov"}) {
      MediaFixtures::Video video;
      video.name = name;
      video.rotation = 90.0;
      if (std::string(name) == "ntsc.mov") {
        video.rateNum = 30000;
        video.rateDen = 1001;
      }
      media.makeVideo(video);
    }
    return true;
  }();
  static_cast<void>(made);
  return media;
}

// A clip's marker block is stored losslessly as a grey; decoding adds at most the YUV rounding of one or two codes.
constexpr int kMarkerTolerance = 2;

// Reads `input` (within `range`) and writes every frame to `output`, as the host does.
inline void copy(const std::string& input, const std::string& output, FrameRange range = {}) {
  MediaReader reader(input, range);
  MediaWriter writer(output, reader.info());
  ArgbFrame frame;
  while (reader.read(frame)) writer.write(frame);
  writer.finish();
}

// The first pixel channel where two frames differ, in words; empty when they are the same.
inline std::string firstDifference(const ArgbFrame& got, const ArgbFrame& want) {
  if (got.width() != want.width() || got.height() != want.height())
    return "size " + std::to_string(got.width()) + "x" + std::to_string(got.height());
  for (int y = 0; y < got.height(); ++y)
    for (int x = 0; x < got.width(); ++x)
      for (int c = 0; c < 4; ++c)
        if (channel(got, x, y, c) != channel(want, x, y, c))
          return "pixel " + std::to_string(x) + "," + std::to_string(y) + " channel " + "argb"[c] + " is " +
                 std::to_string(channel(got, x, y, c)) + ", not " + std::to_string(channel(want, x, y, c));
  return "";
}

// The picture MediaFixtures::makePicture stores, as a frame.
inline ArgbFrame patternFrame(int width, int height, int index, bool alpha) {
  ArgbFrame frame;
  frame.allocate(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      std::copy_n(MediaFixtures::patternPixel(x, y, index, alpha).begin(), 4, frame.row(y) + x * 4);
  return frame;
}

// How far the colour channels of a frame stand from one flat colour, outside the 16x16 marker block at the top
// left that video fixtures carry.
struct Difference {
  int max = 0;
  double mean = 0.0;
};

inline Difference differenceFromFlat(const ArgbFrame& frame, const std::array<int, 3>& colour) {
  Difference d;
  long long sum = 0, count = 0;
  for (int y = 0; y < frame.height(); ++y)
    for (int x = 0; x < frame.width(); ++x)
      for (int c = 0; c < 3 && (x >= 16 || y >= 16); ++c, ++count) {
        int diff = std::abs(channel(frame, x, y, c + 1) - colour[static_cast<std::size_t>(c)]);
        d.max = std::max(d.max, diff);
        sum += diff;
      }
  d.mean = count ? static_cast<double>(sum) / static_cast<double>(count) : 0.0;
  return d;
}

// The audio a container holds, read with libavformat alone.
struct AudioSummary {
  int streams = 0;
  std::string codec;
  int sampleRate = 0;
  int packets = 0;
  double firstSeconds = 1e9;
  double endSeconds = -1e9;  // end of the last packet
};

inline AudioSummary summariseAudio(const std::string& path) {
  AudioSummary summary;
  AVFormatContext* format = nullptr;
  if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return summary;
  avformat_find_stream_info(format, nullptr);
  const int wanted = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  for (unsigned i = 0; i < format->nb_streams; ++i)
    summary.streams += format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
  AVPacket* packet = av_packet_alloc();
  while (wanted >= 0 && av_read_frame(format, packet) >= 0) {
    AVStream* stream = format->streams[wanted];
    if (packet->stream_index == wanted) {
      summary.codec = avcodec_get_name(stream->codecpar->codec_id);
      summary.sampleRate = stream->codecpar->sample_rate;
      summary.firstSeconds = std::min(summary.firstSeconds, packet->pts * av_q2d(stream->time_base));
      summary.endSeconds = std::max(summary.endSeconds, (packet->pts + packet->duration) * av_q2d(stream->time_base));
      ++summary.packets;
    }
    av_packet_unref(packet);
  }
  av_packet_free(&packet);
  avformat_close_input(&format);
  return summary;
}

}  // namespace Quillmere::Velmira
