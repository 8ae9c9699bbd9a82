#include "Media/DecoderLog.h"

#include <cstdarg>
#include <cstring>
#include <map>

extern "C" {
#include <libavutil/log.h>
}

namespace Quillmere::Velmira {

namespace {

// The watched decoders by the contexts they log through. A map and its mutex of their own, apart from each log's
// messages, so that the callback never holds a log's lock while it looks others up.
std::mutex& registryMutex() {
  static std::mutex mutex;
  return mutex;
}
std::map<const void*, DecoderLog*>& registry() {
  static std::map<const void*, DecoderLog*> logs;
  return logs;
}

thread_local DecoderLog* tCalling = nullptr;

// Errors count as damage, and one warning: a JPEG without its end marker was cut short, and FFmpeg decodes what is
// left, greying the rest, with nothing worse to say when the cut falls inside its picture data. Other warnings come
// from whole files too.
bool isDamage(int level, const char* format) {
  return level <= AV_LOG_ERROR || (level <= AV_LOG_WARNING && std::strncmp(format, "EOI missing", 11) == 0);
}

// imgutils logs through a class of its own, and only to refuse a size.
bool isSizeCheck(void* context) {
  const AVClass* type = context ? *static_cast<const AVClass* const*>(context) : nullptr;
  return type && std::strcmp(type->class_name, "IMGUTILS") == 0;
}

}  // namespace

DecoderLog::DecoderLog(const AVCodecContext& decoder) : mDecoder(&decoder), mPrivate(decoder.priv_data) {
  static std::once_flag installed;
  std::call_once(installed, [] { av_log_set_callback(&DecoderLog::callback); });
  std::lock_guard<std::mutex> lock(registryMutex());
  registry()[mDecoder] = this;
  if (mPrivate) registry()[mPrivate] = this;
}

DecoderLog::~DecoderLog() {
  std::lock_guard<std::mutex> lock(registryMutex());
  registry().erase(mDecoder);
  if (mPrivate) registry().erase(mPrivate);
}

DecoderLog::Call::Call(DecoderLog& log) : mOuter(tCalling) { tCalling = &log; }
DecoderLog::Call::~Call() { tCalling = mOuter; }

std::vector<std::string> DecoderLog::take() {
  std::lock_guard<std::mutex> lock(mMutex);
  std::vector<std::string> messages;
  messages.swap(mMessages);
  mRefusedSize = false;
  return messages;
}

bool DecoderLog::refusedSize() {
  std::lock_guard<std::mutex> lock(mMutex);
  return mRefusedSize;
}

void DecoderLog::add(std::string message, bool sizeCheck) {
  while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
  std::lock_guard<std::mutex> lock(mMutex);
  mRefusedSize = mRefusedSize || sizeCheck;
  if (!message.empty()) mMessages.push_back(std::move(message));
}

void DecoderLog::callback(void* context, int level, const char* format, va_list arguments) {
  va_list forwarded;
  va_copy(forwarded, arguments);
  bool kept = false;
  if (isDamage(level, format)) {
    std::lock_guard<std::mutex> lock(registryMutex());
    auto found = registry().find(context);
    bool sizeCheck = isSizeCheck(context);
    DecoderLog* log = found != registry().end() ? found->second : sizeCheck ? tCalling : nullptr;
    if (log) {
      char line[1024];
      int prefix = 0;  // the bare message: the caller adds the file and frame
      av_log_format_line2(nullptr, level, format, arguments, line, sizeof line, &prefix);
      log->add(line, sizeCheck);
      kept = true;
    }
  }
  // What is kept reaches the person in the render's own message; FFmpeg prints it too only on a verbose run.
  if (!kept || av_log_get_level() >= AV_LOG_INFO) av_log_default_callback(context, level, format, forwarded);
  va_end(forwarded);
}

}  // namespace Quillmere::Velmira
