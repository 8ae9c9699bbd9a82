#include "NSAutoreleasePool.h"
#include "NSObject.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace Quillmere::Velmira {
namespace {

// Adds its name to a shared log when its last reference goes.
struct Tracked : NSObject {
  Tracked(std::string& gone, const char* name) : mGone(gone), mName(name) {}
  ~Tracked() override { mGone += mName; }
  std::string& mGone;
  const char* mName;
};

// Names are given in the order the objects must go. An outer pool drains the pools opened
// inside it first; once an inner pool has drained, the outer one collects again, and the
// drained one going out of scope drains nothing more. Without a pool, the thread's end releases.
TEST(NSAutoreleasePool, DrainGivesUpEachCollectedReferenceOnceInnerPoolsFirstAndWithoutOneTheThreadsEndDoes) {
  std::string gone;
  std::thread([&gone] { (new Tracked(gone, "thread "))->autorelease(); }).join();
  EXPECT_EQ("thread ", gone);
  Tracked* kept = new Tracked(gone, "kept ");
  NSAutoreleasePool outer;
  (new Tracked(gone, "d "))->autorelease();
  {
    NSAutoreleasePool inner;
    (new Tracked(gone, "a "))->autorelease();
    (new Tracked(gone, "b "))->autorelease();
    kept->retain();
    kept->autorelease();
    EXPECT_EQ("thread ", gone) << "before the drain";
    inner.drain();
    EXPECT_EQ("thread a b ", gone);
    EXPECT_EQ(1, kept->retainCount());
  }
  (new Tracked(gone, "e "))->autorelease();
  NSAutoreleasePool inner;
  (new Tracked(gone, "c "))->autorelease();
  outer.drain();
  kept->release();
  EXPECT_EQ("thread a b c d e kept ", gone);
}

}  // namespace
}  // namespace Quillmere::Velmira
