// What a decoder says through av_log while it decodes: the reasons FFmpeg gives for a damaged frame.
#pragma once

#include <mutex>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace Quillmere::Velmira {

// FFmpeg has one log callback for the whole process; the first DecoderLog installs one that hands each error to the
// log of the decoder that logged it, and passes everything else on to FFmpeg's own printing (which MediaLog's level
// still governs). Any number of decoders may be watched at once, on any threads.
class DecoderLog {
public:
  // Watches `decoder` (and its private context, which some decoders log through) until destroyed.
  explicit DecoderLog(const AVCodecContext& decoder);
  ~DecoderLog();
  DecoderLog(const DecoderLog&) = delete;
  DecoderLog& operator=(const DecoderLog&) = delete;

  // While one lives on a thread, errors that imgutils' size check logs on that thread, through a context of its own,
  // count as the watched decoder's: they are why the decoder then gives up.
  class Call {
  public:
    explicit Call(DecoderLog& log);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

  private:
    DecoderLog* mOuter;
  };

  // The errors logged since the last take, oldest first.
  std::vector<std::string> take();
  // Whether FFmpeg refused a picture for its size (imgutils' check) since the last take.
  bool refusedSize();

private:
  static void callback(void* context, int level, const char* format, va_list arguments);
  void add(std::string message, bool sizeCheck);

  const void* mDecoder;
  const void* mPrivate;
  std::mutex mMutex;
  std::vector<std::string> mMessages;
  bool mRefusedSize = false;
};

}  // namespace Quillmere::Velmira
