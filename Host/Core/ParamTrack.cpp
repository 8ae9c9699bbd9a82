#include "Core/ParamTrack.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include <fmt/format.h>

#include "Core/SliderDefinition.h"

namespace Quillmere::Velmira {

namespace {

std::vector<std::string> splitOn(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::string::size_type start = 0;
  for (;;) {
    auto end = text.find(separator, start);
    pieces.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return pieces;
    start = end + 1;
  }
}

std::string trimmed(const std::string& text) {
  auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  auto last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

double parseNumber(const std::string& text, const char* what) {
  if (text.empty()) throw std::invalid_argument(fmt::format("{} is missing", what));
  const char* begin = text.c_str();
  char* end = nullptr;
  double number = std::strtod(begin, &end);
  if (end != begin + text.size() || !std::isfinite(number)) {
    throw std::invalid_argument(fmt::format("'{}' is not a number", text));
  }
  return number;
}

}  // namespace

ParamTrack ParamTrack::constant(double value) {
  ParamTrack track;
  track.mKeys.push_back({value, 0.0, false});
  track.mResolved.push_back({0.0, value});
  return track;
}

ParamTrack ParamTrack::parse(const std::string& text) {
  auto pieces = splitOn(text, ',');
  // A lone value without a time is a constant; in a list every key needs its time,
  // since a key without one has no place on the time line.
  bool needsTime = pieces.size() > 1;
  ParamTrack track;
  for (const auto& piece : pieces) track.mKeys.push_back(parseKey(trimmed(piece), needsTime));
  // Only frame times need the rate; a track without them is usable at once.
  if (!track.mKeys.front().inFrames && !needsTime) track.resolve(1.0);
  return track;
}

ParamTrack::Key ParamTrack::parseKey(const std::string& piece, bool needsTime) {
  if (piece.empty()) throw std::invalid_argument("empty keyframe (two commas in a row, or one at an end)");
  auto at = piece.find('@');
  if (at == std::string::npos) {
    if (needsTime) throw std::invalid_argument(fmt::format("keyframe '{}' has no @TIME", piece));
    return {parseNumber(piece, "value"), 0.0, false};
  }
  Key key;
  key.value = parseNumber(trimmed(piece.substr(0, at)), "value before @");
  const std::string written = trimmed(piece.substr(at + 1));
  std::string time = written;
  if (!time.empty() && (time.back() == 'f' || time.back() == 's')) {
    key.inFrames = time.back() == 'f';
    time.pop_back();
  }
  if (time.empty()) throw std::invalid_argument(fmt::format("time after @ in '{}' is missing", piece));
  char* end = nullptr;
  key.time = std::strtod(time.c_str(), &end);
  if (end != time.c_str() + time.size() || !std::isfinite(key.time)) {
    throw std::invalid_argument(fmt::format("'{}': '{}' is not a time", piece, written));
  }
  if (key.time < 0.0) throw std::invalid_argument(fmt::format("keyframe '{}' has a negative time", piece));
  return key;
}

void ParamTrack::checkRange(const SliderDefinition& slider) const {
  for (const auto& key : mKeys) {
    if (!slider.accepts(key.value)) {
      throw std::out_of_range(fmt::format("{}: {:g} is outside its valid range {:g} to {:g}{}", slider.name, key.value,
                                          slider.validMin, slider.validMax, slider.isPercent() ? " %" : ""));
    }
  }
}

void ParamTrack::resolve(double framesPerSecond) {
  mResolved.clear();
  for (const auto& key : mKeys) {
    mResolved.push_back({key.inFrames ? key.time / framesPerSecond : key.time, key.value});
  }
  std::stable_sort(mResolved.begin(), mResolved.end(),
                   [](const TimedValue& a, const TimedValue& b) { return a.seconds < b.seconds; });
  for (std::size_t i = 1; i < mResolved.size(); ++i) {
    if (mResolved[i].seconds == mResolved[i - 1].seconds) {
      throw std::invalid_argument(fmt::format("two keyframes at the same time ({:g} s)", mResolved[i].seconds));
    }
  }
}

double ParamTrack::valueAt(double seconds) const {
  if (mResolved.empty()) throw std::logic_error("ParamTrack::valueAt before resolve");
  if (seconds <= mResolved.front().seconds) return mResolved.front().value;
  if (seconds >= mResolved.back().seconds) return mResolved.back().value;
  auto after = std::upper_bound(mResolved.begin(), mResolved.end(), seconds,
                                [](double t, const TimedValue& key) { return t < key.seconds; });
  auto before = after - 1;
  double share = (seconds - before->seconds) / (after->seconds - before->seconds);
  return before->value + (after->value - before->value) * share;
}

}  // namespace Quillmere::Velmira
