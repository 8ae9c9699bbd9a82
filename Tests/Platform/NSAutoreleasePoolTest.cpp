#include "NSAutoreleasePool.h"
#include "NSObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Quillmere::Velmira {
namespace {

// Notes its name in a shared list when its last reference goes.
class Tracked : public NSObject {
public:
  static Tracked* make(std::vector<std::string>& gone, const std::string& name) { return new Tracked(gone, name); }

protected:
  ~Tracked() override { mGone.push_back(mName); }

private:
  Tracked(std::vector<std::string>& gone, const std::string& name) : mGone(gone), mName(name) {}

  std::vector<std::string>& mGone;
  std::string mName;
};

TEST(NSAutoreleasePool, AutoreleasedObjectLivesUntilTheDrainUnlessRetained) {
  std::vector<std::string> gone;
  Tracked* kept = Tracked::make(gone, "kept");
  {
    NSAutoreleasePool pool;
    Tracked::make(gone, "temporary")->autorelease();
    kept->retain();
    kept->autorelease();
    EXPECT_THAT(gone, IsEmpty()) << "before the drain";
    pool.drain();
    EXPECT_THAT(gone, ElementsAre("temporary"));
    EXPECT_EQ(kept->retainCount(), 1);
  }
  EXPECT_THAT(gone, ElementsAre("temporary")) << "a drained pool going out of scope drains nothing again";
  kept->release();
}

TEST(NSAutoreleasePool, InnermostPoolCollectsAndDrainingAnOuterOneDrainsTheInnerFirst) {
  std::vector<std::string> gone;
  NSAutoreleasePool outer;
  Tracked::make(gone, "outer")->autorelease();
  NSAutoreleasePool inner;
  Tracked::make(gone, "inner")->autorelease();
  outer.drain();
  EXPECT_THAT(gone, ElementsAre("inner", "outer"));
}

TEST(NSAutoreleasePool, WithoutAPoolTheThreadsEndReleases) {
  std::vector<std::string> gone;
  std::thread([&gone] { Tracked::make(gone, "thread")->autorelease(); }).join();
  EXPECT_THAT(gone, ElementsAre("thread"));
}

}  // namespace
}  // namespace Quillmere::Velmira
