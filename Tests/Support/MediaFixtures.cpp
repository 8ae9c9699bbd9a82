#include "Support/MediaFixtures.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
}

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

namespace {

struct CodecFree {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameFree {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketFree {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct OutputFree {
  void operator()(AVFormatContext* c) const {
    if (c->pb) avio_closep(&c->pb);
    avformat_free_context(c);
  }
};
using Codec = std::unique_ptr<AVCodecContext, CodecFree>;
using Frame = std::unique_ptr<AVFrame, FrameFree>;
using Packet = std::unique_ptr<AVPacket, PacketFree>;
using Output = std::unique_ptr<AVFormatContext, OutputFree>;

void check(int err, const std::string& what) {
  if (err < 0) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(err, text, sizeof text);
    throw std::runtime_error("fixture: " + what + ": " + text);
  }
}

// Y'CbCr of an R'G'B' colour, by the matrix's luma weights, then scaled to the limited or full 8-bit range.
std::array<int, 3> toYuv(const std::array<int, 3>& rgb, int matrix, bool fullRange) {
  double kr = matrix == AVCOL_SPC_BT709 ? 0.2126 : 0.299;
  double kb = matrix == AVCOL_SPC_BT709 ? 0.0722 : 0.114;
  double r = rgb[0] / 255.0, g = rgb[1] / 255.0, b = rgb[2] / 255.0;
  double y = kr * r + (1 - kr - kb) * g + kb * b;
  double cb = (b - y) / (2 * (1 - kb));
  double cr = (r - y) / (2 * (1 - kr));
  if (fullRange)
    return {static_cast<int>(std::lround(y * 255)), static_cast<int>(std::lround(128 + cb * 255)),
            static_cast<int>(std::lround(128 + cr * 255))};
  return {static_cast<int>(std::lround(16 + y * 219)), static_cast<int>(std::lround(128 + cb * 224)),
          static_cast<int>(std::lround(128 + cr * 224))};
}

void fillVideoFrame(AVFrame& frame, const MediaFixtures::Video& video, int index) {
  check(av_frame_make_writable(&frame), "frame writable");
  std::array<int, 3> yuv = toYuv(video.colour, video.matrix, video.fullRange);
  int grey = MediaFixtures::frameMarker(index);
  std::array<int, 3> marker = toYuv({grey, grey, grey}, video.matrix, video.fullRange);
  for (int y = 0; y < video.height; ++y)
    for (int x = 0; x < video.width; ++x)
      frame.data[0][y * frame.linesize[0] + x] = static_cast<uint8_t>(x < 16 && y < 16 ? marker[0] : yuv[0]);
  for (int y = 0; y < video.height / 2; ++y)
    for (int x = 0; x < video.width / 2; ++x) {
      bool inMarker = x < 8 && y < 8;
      frame.data[1][y * frame.linesize[1] + x] = static_cast<uint8_t>(inMarker ? marker[1] : yuv[1]);
      frame.data[2][y * frame.linesize[2] + x] = static_cast<uint8_t>(inMarker ? marker[2] : yuv[2]);
    }
}

class Muxer {
public:
  Muxer(const std::string& path) : mPath(path) {
    AVFormatContext* raw = nullptr;
    check(avformat_alloc_output_context2(&raw, nullptr, nullptr, path.c_str()), "output " + path);
    mOutput.reset(raw);
  }
  AVFormatContext* get() { return mOutput.get(); }
  void open() {
    check(avio_open(&mOutput->pb, mPath.c_str(), AVIO_FLAG_WRITE), "open " + mPath);
    check(avformat_write_header(mOutput.get(), nullptr), "header");
  }
  void drain(AVCodecContext* codec, AVStream* stream) {
    Packet packet(av_packet_alloc());
    while (avcodec_receive_packet(codec, packet.get()) == 0) {
      // x264 leaves durations open; without them the last frame would have none and the clip end early.
      if (packet->duration == 0 && codec->codec_type == AVMEDIA_TYPE_VIDEO) packet->duration = 1;
      av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
      packet->stream_index = stream->index;
      check(av_interleaved_write_frame(mOutput.get(), packet.get()), "write");
    }
  }
  void close() {
    check(av_write_trailer(mOutput.get()), "trailer");
    mOutput.reset();
  }

private:
  std::string mPath;
  Output mOutput;
};

Codec openVideoEncoder(const MediaFixtures::Video& video, AVFormatContext* output) {
  const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
  if (!codec) throw std::runtime_error("fixture: libx264 is missing");
  Codec c(avcodec_alloc_context3(codec));
  c->width = video.width;
  c->height = video.height;
  c->pix_fmt = AV_PIX_FMT_YUV420P;
  c->time_base = AVRational{video.rateDen, video.rateNum};
  c->framerate = AVRational{video.rateNum, video.rateDen};
  c->colorspace = static_cast<AVColorSpace>(video.matrix);
  c->color_range = video.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  c->thread_count = 1;
  if (output->oformat->flags & AVFMT_GLOBALHEADER) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  AVDictionary* options = nullptr;
  // Lossless, so that a decoded colour differs from the one asked for only by the YUV conversion.
  av_dict_set(&options, "qp", "0", 0);
  av_dict_set(&options, "preset", "ultrafast", 0);
  int err = avcodec_open2(c.get(), codec, &options);
  av_dict_free(&options);
  check(err, "open libx264");
  return c;
}

Codec openAudioEncoder(AVFormatContext* output) {
  const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
  Codec c(avcodec_alloc_context3(codec));
  c->sample_fmt = AV_SAMPLE_FMT_FLTP;
  c->sample_rate = 48000;
  av_channel_layout_default(&c->ch_layout, 2);
  c->bit_rate = 96000;
  c->time_base = AVRational{1, 48000};
  if (output->oformat->flags & AVFMT_GLOBALHEADER) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  check(avcodec_open2(c.get(), codec, nullptr), "open aac");
  return c;
}

void writeBytes(const std::string& path, const std::vector<char>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("fixture: cannot write " + path);
}

// The name for frame n of a "%0Nd" or "%d" pattern.
std::string numbered(const std::string& pattern, int n) {
  std::size_t at = pattern.find('%');
  std::size_t end = pattern.find('d', at);
  int width = end > at + 1 ? std::atoi(pattern.substr(at + 1, end - at - 1).c_str()) : 0;
  std::string digits = std::to_string(n);
  if (static_cast<int>(digits.size()) < width) digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
  return pattern.substr(0, at) + digits + pattern.substr(end + 1);
}

std::vector<char> readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

MediaFixtures::MediaFixtures() {
  std::string templ = (fs::temp_directory_path() / "velmira-media-XXXXXX").string();
  std::vector<char> buffer(templ.begin(), templ.end());
  buffer.push_back('\0');
  if (!mkdtemp(buffer.data())) throw std::runtime_error("fixture: cannot make a temporary folder");
  mFolder = buffer.data();
}

MediaFixtures::~MediaFixtures() {
  std::error_code ec;
  fs::remove_all(mFolder, ec);
}

std::string MediaFixtures::path(const std::string& name) const { return (fs::path(mFolder) / name).string(); }

std::string MediaFixtures::makeVideo(const Video& video) {
  std::string file = path(video.name);
  Muxer muxer(file);
  Codec encoder = openVideoEncoder(video, muxer.get());
  AVStream* stream = avformat_new_stream(muxer.get(), nullptr);
  check(avcodec_parameters_from_context(stream->codecpar, encoder.get()), "video parameters");
  stream->time_base = encoder->time_base;
  if (video.rotation) {
    auto* matrix = reinterpret_cast<int32_t*>(av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 36));
    av_display_rotation_set(matrix, *video.rotation);
  }
  Codec audio;
  AVStream* audioStream = nullptr;
  if (video.audio) {
    audio = openAudioEncoder(muxer.get());
    audioStream = avformat_new_stream(muxer.get(), nullptr);
    check(avcodec_parameters_from_context(audioStream->codecpar, audio.get()), "audio parameters");
    audioStream->time_base = audio->time_base;
  }
  muxer.open();

  Frame picture(av_frame_alloc());
  picture->format = AV_PIX_FMT_YUV420P;
  picture->width = video.width;
  picture->height = video.height;
  check(av_frame_get_buffer(picture.get(), 0), "video frame");
  Frame sound(av_frame_alloc());
  std::int64_t samplesNeeded = 0, samplesDone = 0;
  if (audio) {
    sound->format = audio->sample_fmt;
    sound->nb_samples = audio->frame_size;
    sound->sample_rate = audio->sample_rate;
    check(av_channel_layout_copy(&sound->ch_layout, &audio->ch_layout), "layout");
    check(av_frame_get_buffer(sound.get(), 0), "audio frame");
    samplesNeeded = static_cast<std::int64_t>(video.frames) * 48000 * video.rateDen / video.rateNum;
  }
  for (int i = 0; i < video.frames; ++i) {
    fillVideoFrame(*picture, video, i);
    picture->pts = i;
    check(avcodec_send_frame(encoder.get(), picture.get()), "encode video");
    muxer.drain(encoder.get(), stream);
    // Audio up to the end of this frame, in whole AAC frames.
    std::int64_t until = static_cast<std::int64_t>(i + 1) * 48000 * video.rateDen / video.rateNum;
    while (audio && samplesDone < until && samplesDone < samplesNeeded) {
      check(av_frame_make_writable(sound.get()), "audio writable");
      for (int s = 0; s < sound->nb_samples; ++s) {
        float v = static_cast<float>(0.2 * std::sin(2 * M_PI * 440.0 * static_cast<double>(samplesDone + s) / 48000));
        for (int ch = 0; ch < 2; ++ch) reinterpret_cast<float*>(sound->data[ch])[s] = v;
      }
      sound->pts = samplesDone;
      samplesDone += sound->nb_samples;
      check(avcodec_send_frame(audio.get(), sound.get()), "encode audio");
      muxer.drain(audio.get(), audioStream);
    }
  }
  check(avcodec_send_frame(encoder.get(), nullptr), "flush video");
  muxer.drain(encoder.get(), stream);
  if (audio) {
    check(avcodec_send_frame(audio.get(), nullptr), "flush audio");
    muxer.drain(audio.get(), audioStream);
  }
  muxer.close();
  return file;
}

std::array<std::uint8_t, 4> MediaFixtures::patternPixel(int x, int y, int index, bool alpha) {
  auto byte = [](int v) { return static_cast<std::uint8_t>(v & 0xFF); };
  return {alpha ? byte(x * 37 + y * 11 + index) : std::uint8_t{255}, byte(x * 7 + index * 3), byte(y * 13 + 5),
          byte((x + y) * 9 + index * 29)};
}

std::string MediaFixtures::makePicture(const Picture& picture) {
  std::string file = path(picture.name);
  std::string ext = fs::path(file).extension().string();
  AVCodecID id = ext == ".png" ? AV_CODEC_ID_PNG : ext == ".tif" ? AV_CODEC_ID_TIFF : AV_CODEC_ID_NONE;
  if (id == AV_CODEC_ID_NONE) throw std::runtime_error("fixture: no picture format for " + file);
  AVPixelFormat format = picture.sixteenBit ? (picture.alpha ? AV_PIX_FMT_RGBA64BE : AV_PIX_FMT_RGB48BE)
                                            : (picture.alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24);
  if (id == AV_CODEC_ID_TIFF && picture.sixteenBit) format = picture.alpha ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_RGB48LE;
  Codec c(avcodec_alloc_context3(avcodec_find_encoder(id)));
  c->width = picture.width;
  c->height = picture.height;
  c->pix_fmt = format;
  c->time_base = AVRational{1, 25};
  check(avcodec_open2(c.get(), c->codec, nullptr), "open picture encoder");
  Frame frame(av_frame_alloc());
  frame->format = format;
  frame->width = picture.width;
  frame->height = picture.height;
  check(av_frame_get_buffer(frame.get(), 0), "picture frame");
  int channels = picture.alpha ? 4 : 3;
  for (int y = 0; y < picture.height; ++y) {
    uint8_t* row = frame->data[0] + y * frame->linesize[0];
    for (int x = 0; x < picture.width; ++x) {
      std::array<std::uint8_t, 4> argb = patternPixel(x, y, picture.index, picture.alpha);
      std::uint8_t values[4] = {argb[1], argb[2], argb[3], argb[0]};
      for (int ch = 0; ch < channels; ++ch) {
        if (!picture.sixteenBit) {
          row[x * channels + ch] = values[ch];
        } else {
          // v * 257 has v in both bytes, so the byte order cannot hide a mistake in bringing it down.
          uint8_t* p = row + (x * channels + ch) * 2;
          p[0] = values[ch];
          p[1] = values[ch];
        }
      }
    }
  }
  Packet packet(av_packet_alloc());
  check(avcodec_send_frame(c.get(), frame.get()), "encode picture");
  check(avcodec_send_frame(c.get(), nullptr), "flush picture");
  check(avcodec_receive_packet(c.get(), packet.get()), "picture packet");
  fs::create_directories(fs::path(file).parent_path());
  writeBytes(file, std::vector<char>(packet->data, packet->data + packet->size));
  return file;
}

std::string MediaFixtures::makeSequence(const std::string& pattern, int first, int count, int width, int height) {
  for (int n = first; n < first + count; ++n) {
    Picture picture;
    picture.name = numbered(pattern, n);
    picture.width = width;
    picture.height = height;
    picture.index = n;
    makePicture(picture);
  }
  return path(pattern);
}

std::string MediaFixtures::makeTruncated(const std::string& source, const std::string& name, double fraction) {
  std::vector<char> bytes = readBytes(source);
  bytes.resize(static_cast<std::size_t>(static_cast<double>(bytes.size()) * fraction));
  writeBytes(path(name), bytes);
  return path(name);
}

std::string MediaFixtures::makeCorrupt(const std::string& source, const std::string& name) {
  std::vector<char> bytes = readBytes(source);
  std::uint32_t state = 12345;
  for (std::size_t i = 16; i < bytes.size(); ++i) {
    state = state * 1664525u + 1013904223u;
    bytes[i] = static_cast<char>(state >> 24);
  }
  writeBytes(path(name), bytes);
  return path(name);
}

}  // namespace Quillmere::Velmira
