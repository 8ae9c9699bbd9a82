#include "Support/MediaFixtures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
}

#include "Support/MediaFiles.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

namespace {

struct Release {
  void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
  void operator()(AVFrame* p) const { av_frame_free(&p); }
  void operator()(AVPacket* p) const { av_packet_free(&p); }
  void operator()(AVFormatContext* p) const {
    avio_closep(&p->pb);
    avformat_free_context(p);
  }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

void check(int err, const std::string& what) {
  if (err < 0) throw std::runtime_error("fixture: " + what + " failed with FFmpeg error " + std::to_string(err));
}

// Opens `codec` and gives it a stream of `out` in its own time base.
AVStream* addStream(AVFormatContext* out, AVCodecContext* codec) {
  if (out->oformat->flags & AVFMT_GLOBALHEADER) codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  check(avcodec_open2(codec, codec->codec, nullptr), "open an encoder");
  AVStream* stream = avformat_new_stream(out, nullptr);
  check(avcodec_parameters_from_context(stream->codecpar, codec), "stream");
  stream->time_base = codec->time_base;
  return stream;
}

// Sends `frame` (nullptr to flush) and muxes what comes out.
void encode(AVFormatContext* out, AVCodecContext* codec, AVStream* stream, const AVFrame* frame) {
  check(avcodec_send_frame(codec, frame), "encode");
  Owned<AVPacket> packet(av_packet_alloc());
  while (avcodec_receive_packet(codec, packet.get()) == 0) {
    // x264 leaves durations open; without them the last frame would have none and the clip end early.
    if (packet->duration == 0) packet->duration = 1;
    av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
    packet->stream_index = stream->index;
    check(av_interleaved_write_frame(out, packet.get()), "write");
  }
}

// Writes `frames` pictures, each filled by `fill`, with `codec` into `file`, beside a silent stereo AAC track as long
// as the pictures when `audio`. A still goes through the pipe muxer, which writes the encoder's bytes as they are.
void mux(const std::string& file, AVCodecContext* codec, int frames, bool audio, const std::optional<double>& rotation,
         const std::function<void(AVFrame&, int)>& fill) {
  AVFormatContext* raw = nullptr;
  const char* format = codec->codec_id == AV_CODEC_ID_H264 ? nullptr : "image2pipe";
  check(avformat_alloc_output_context2(&raw, nullptr, format, file.c_str()), "output " + file);
  Owned<AVFormatContext> out(raw);
  AVStream* stream = addStream(out.get(), codec);
  if (rotation)
    av_display_rotation_set(reinterpret_cast<int32_t*>(av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 36)),
                            *rotation);
  Owned<AVCodecContext> sound(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_AAC)));
  sound->sample_fmt = AV_SAMPLE_FMT_FLTP;
  sound->sample_rate = 48000;
  av_channel_layout_default(&sound->ch_layout, 2);
  sound->time_base = AVRational{1, 48000};
  AVStream* soundStream = audio ? addStream(out.get(), sound.get()) : nullptr;
  check(avio_open(&out->pb, file.c_str(), AVIO_FLAG_WRITE), "open " + file);
  check(avformat_write_header(out.get(), nullptr), "header");
  Owned<AVFrame> picture(av_frame_alloc()), samples(av_frame_alloc());
  picture->format = codec->pix_fmt;
  picture->width = codec->width;
  picture->height = codec->height;
  check(av_frame_get_buffer(picture.get(), 0), "picture frame");
  samples->format = sound->sample_fmt;
  samples->nb_samples = audio ? sound->frame_size : 0;
  check(av_channel_layout_copy(&samples->ch_layout, &sound->ch_layout), "layout");
  if (audio) check(av_frame_get_buffer(samples.get(), 0), "audio frame");
  if (audio) av_samples_set_silence(samples->data, 0, samples->nb_samples, 2, sound->sample_fmt);
  std::int64_t samplesDone = 0;
  for (int i = 0; i < frames; ++i) {
    check(av_frame_make_writable(picture.get()), "frame writable");
    fill(*picture, i);
    picture->pts = i;
    encode(out.get(), codec, stream, picture.get());
    // Audio up to the end of this frame, in whole AAC frames.
    for (; audio && av_compare_ts(samplesDone, sound->time_base, i + 1, codec->time_base) < 0;
         samplesDone += samples->nb_samples) {
      samples->pts = samplesDone;
      encode(out.get(), sound.get(), soundStream, samples.get());
    }
  }
  encode(out.get(), codec, stream, nullptr);
  if (audio) encode(out.get(), sound.get(), soundStream, nullptr);
  check(av_write_trailer(out.get()), "trailer");
}

// Y'CbCr of an R'G'B' colour by the matrix's luma weights, scaled to the limited or the full 8-bit range.
std::array<int, 3> toYuv(const std::array<int, 3>& rgb, const MediaFixtures::Video& video) {
  const double kr = video.matrix == AVCOL_SPC_BT709 ? 0.2126 : 0.299;
  const double kb = video.matrix == AVCOL_SPC_BT709 ? 0.0722 : 0.114;
  const double y = (kr * rgb[0] + (1 - kr - kb) * rgb[1] + kb * rgb[2]) / 255;
  const double cb = (rgb[2] / 255.0 - y) / (2 * (1 - kb)), cr = (rgb[0] / 255.0 - y) / (2 * (1 - kr));
  const double luma = video.fullRange ? 255 : 219, chroma = video.fullRange ? 255 : 224;
  return {static_cast<int>(std::lround((video.fullRange ? 0 : 16) + y * luma)),
          static_cast<int>(std::lround(128 + cb * chroma)), static_cast<int>(std::lround(128 + cr * chroma))};
}

// A JPEG (full-range, lossy) holds the pattern's grey levels alone: its BT.601 luma, with neutral chroma.
void fillGrey(AVFrame& frame, const ArgbFrame& argb) {
  for (int y = 0; y < argb.height(); ++y)
    for (int x = 0; x < argb.width(); ++x) {
      const std::uint8_t* p = argb.row(y) + x * 4;
      frame.data[0][y * frame.linesize[0] + x] =
          static_cast<uint8_t>(std::lround(0.299 * p[1] + 0.587 * p[2] + 0.114 * p[3]));
      frame.data[1][y * frame.linesize[1] + x] = frame.data[2][y * frame.linesize[2] + x] = 128;
    }
}

}  // namespace

MediaFixtures::MediaFixtures() : mFolder((fs::temp_directory_path() / "velmira-media-XXXXXX").string()) {
  if (!mkdtemp(mFolder.data())) throw std::runtime_error("fixture: cannot make a temporary folder");
}

MediaFixtures::~MediaFixtures() {
  std::error_code ec;
  fs::remove_all(mFolder, ec);
}

std::string MediaFixtures::path(const std::string& name) const { return (fs::path(mFolder) / name).string(); }

std::string MediaFixtures::makeVideo(const Video& video) {
  Owned<AVCodecContext> codec(avcodec_alloc_context3(avcodec_find_encoder_by_name("libx264")));
  codec->width = video.width;
  codec->height = video.height;
  codec->pix_fmt = AV_PIX_FMT_YUV420P;
  codec->time_base = AVRational{video.rateDen, video.rateNum};
  codec->framerate = AVRational{video.rateNum, video.rateDen};
  codec->colorspace = static_cast<AVColorSpace>(video.matrix);
  codec->color_range = video.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  codec->thread_count = 1;
  // Lossless, so that a decoded colour differs from the one asked for only by the YUV conversion.
  av_opt_set(codec->priv_data, "qp", "0", 0);
  av_opt_set(codec->priv_data, "preset", "ultrafast", 0);
  const std::array<int, 3> flat = toYuv(video.colour, video);
  mux(path(video.name), codec.get(), video.frames, video.audio, video.rotation, [&](AVFrame& frame, int i) {
    const std::array<int, 3> marker = toYuv({frameMarker(i), frameMarker(i), frameMarker(i)}, video);
    for (int plane = 0, shift = 0; plane < 3; ++plane, shift = 1)  // 4:2:0 chroma is half the size both ways
      for (int y = 0; y < video.height >> shift; ++y)
        for (int x = 0; x < video.width >> shift; ++x)
          frame.data[plane][y * frame.linesize[plane] + x] =
              static_cast<uint8_t>((x << shift) < 16 && (y << shift) < 16 ? marker[plane] : flat[plane]);
  });
  return path(video.name);
}

ArgbFrame MediaFixtures::pattern(int width, int height, int index, bool alpha) {
  ArgbFrame frame;
  frame.allocate(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const int argb[4] = {alpha ? x * 37 + y * 11 + index : 255, x * 7 + index * 3, y * 13 + 5,
                           (x + y) * 9 + index * 29};
      for (int c = 0; c < 4; ++c) frame.row(y)[x * 4 + c] = static_cast<std::uint8_t>(argb[c] & 0xFF);
    }
  return frame;
}

std::string MediaFixtures::makePicture(const Picture& picture) {
  const fs::path extension = fs::path(picture.name).extension();
  const bool tiff = extension == ".tif", jpeg = extension == ".jpg";  // else PNG
  const int channels = picture.alpha ? 4 : 3, bytes = picture.sixteenBit ? 2 : 1;
  Owned<AVCodecContext> codec(avcodec_alloc_context3(avcodec_find_encoder(jpeg   ? AV_CODEC_ID_MJPEG
                                                                          : tiff ? AV_CODEC_ID_TIFF
                                                                                 : AV_CODEC_ID_PNG)));
  codec->width = picture.width;
  codec->height = picture.height;
  codec->pix_fmt = jpeg         ? AV_PIX_FMT_YUVJ444P
                   : bytes == 1 ? (picture.alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24)
                   : tiff       ? (picture.alpha ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_RGB48LE)
                                : (picture.alpha ? AV_PIX_FMT_RGBA64BE : AV_PIX_FMT_RGB48BE);
  codec->color_range = jpeg ? AVCOL_RANGE_JPEG : AVCOL_RANGE_UNSPECIFIED;
  codec->time_base = AVRational{1, 25};
  const ArgbFrame argb = pattern(picture.width, picture.height, picture.index, picture.alpha);
  fs::create_directories(fs::path(path(picture.name)).parent_path());
  mux(path(picture.name), codec.get(), 1, false, {}, [&](AVFrame& frame, int) {
    if (jpeg) return fillGrey(frame, argb);
    for (int y = 0; y < picture.height; ++y)
      for (int x = 0; x < picture.width; ++x)
        for (int ch = 0; ch < channels; ++ch) {
          // v * 257 + e rounds to v for |e| < 128.5; e varies, so that truncating instead of rounding, or taking
          // the bytes in the wrong order, comes out wrong somewhere.
          const int v = argb.row(y)[x * 4 + (ch + 1) % 4];
          const int stored = bytes == 1 ? v : std::clamp(v * 257 + (x * 37 + y * 11 + ch * 53) % 255 - 127, 0, 65535);
          for (int b = 0; b < bytes; ++b)  // TIFF's 16 bits are little-endian, PNG's big-endian
            frame.data[0][y * frame.linesize[0] + (x * channels + ch) * bytes + b] =
                static_cast<uint8_t>(stored >> 8 * (tiff ? b : bytes - 1 - b));
        }
  });
  return path(picture.name);
}

std::string MediaFixtures::makeSequence(const std::string& pattern, int first, int count, int width, int height) {
  for (int n = first; n < first + count; ++n) {
    char name[1024];
    check(av_get_frame_filename2(name, sizeof name, pattern.c_str(), n, 0), "name frame of " + pattern);
    makePicture({name, width, height, false, false, n});
  }
  return path(pattern);
}

std::string MediaFixtures::makeTruncated(const std::string& source, const std::string& name, double fraction) {
  const std::string bytes = readFile(source);
  writeFile(path(name), bytes.substr(0, static_cast<std::size_t>(static_cast<double>(bytes.size()) * fraction)));
  return path(name);
}

std::string MediaFixtures::makeCorrupt(const std::string& source, const std::string& name) {
  std::string bytes = readFile(source);
  for (std::size_t i = 16; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 2654435761u >> 24);
  writeFile(path(name), bytes);
  return path(name);
}

std::tuple<int, double, double> MediaFixtures::audioOf(const std::string& file) {
  int packets = 0;
  double start = 1e9, end = -1e9;
  AVFormatContext* format = nullptr;
  check(avformat_open_input(&format, file.c_str(), nullptr, nullptr), "open " + file);
  Owned<AVPacket> packet(av_packet_alloc());
  for (; av_read_frame(format, packet.get()) >= 0; av_packet_unref(packet.get())) {
    const AVStream* stream = format->streams[packet->stream_index];
    if (stream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
    ++packets;
    start = std::min(start, static_cast<double>(packet->pts) * av_q2d(stream->time_base));
    end = std::max(end, static_cast<double>(packet->pts + packet->duration) * av_q2d(stream->time_base));
  }
  avformat_close_input(&format);
  return {packets, start, end};
}

}  // namespace Quillmere::Velmira
