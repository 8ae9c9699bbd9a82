#pragma once

#include <string>
#include <vector>

namespace Quillmere::Velmira {

struct SliderDefinition;

// The value of one slider over time: a constant, or keyframes "VALUE@TIME,VALUE@TIME..."
// with TIME in seconds ("2.5", "2.5s") or in frames ("120f"). Between keys the value is
// interpolated linearly; before the first key and after the last it holds.
class ParamTrack {
public:
  struct Key {
    double value = 0.0;
    double time = 0.0;      // as written
    bool inFrames = false;  // time counts frames, not seconds
  };

  ParamTrack() = default;
  static ParamTrack constant(double value);
  // Throws std::invalid_argument with a message that quotes the faulty piece.
  static ParamTrack parse(const std::string& text);

  // Throws std::out_of_range naming the slider and its valid range when a key lies outside.
  void checkRange(const SliderDefinition& slider) const;

  // Frame times become seconds at this rate; keys are then ordered by time. Throws
  // std::invalid_argument when two keys land on the same time.
  void resolve(double framesPerSecond);
  double valueAt(double seconds) const;

private:
  struct TimedValue {
    double seconds;
    double value;
  };

  static Key parseKey(const std::string& piece, bool needsTime);

  std::vector<Key> mKeys;
  std::vector<TimedValue> mResolved;
};

}  // namespace Quillmere::Velmira
