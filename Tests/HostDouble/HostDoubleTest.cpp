#include "HostDouble.h"

#include <gtest/gtest.h>

#include <vector>

namespace Quillmere::Velmira {
namespace {

TEST(HostWorld, PaddedRowsKeepTheirMarkerUntilWrittenInto) {
  HostWorld world(3, 2, 20);
  EXPECT_EQ(world.rowbytes(), 20);
  world.fill({255, 1, 2, 3});
  EXPECT_TRUE(world.paddingIntact());
  EXPECT_EQ(world.pixel(2, 1).blue, 3);
  reinterpret_cast<unsigned char*>(world.world()->data)[12] = 0;  // first padding byte of row 0
  EXPECT_FALSE(world.paddingIntact());
}

// Float worlds of 2 by 2 pixels with 16 bytes of padding a row; the callback records
// where it was called and what it read.
TEST(HostDouble, IterateFloatVisitsTheAreaWithTheSourceAtTheSamePlace) {
  HostDouble host;
  constexpr A_long kRowbytes = 2 * 16 + 16;
  std::vector<float> source(kRowbytes / 4 * 2), target(kRowbytes / 4 * 2);
  for (std::size_t k = 0; k < source.size(); ++k) {
    source[k] = static_cast<float>(k);
  }
  PF_EffectWorld src{}, dst{};
  for (auto [world, data] : {std::pair{&src, &source}, std::pair{&dst, &target}}) {
    world->data = reinterpret_cast<PF_PixelPtr>(data->data());
    world->width = 2;
    world->height = 2;
    world->rowbytes = kRowbytes;
  }
  std::vector<std::vector<float>> visits;
  const auto record = [](void* refcon, A_long x, A_long y, PF_PixelFloat* in, PF_PixelFloat* out) -> PF_Err {
    static_cast<std::vector<std::vector<float>>*>(refcon)->push_back(
        {static_cast<float>(x), static_cast<float>(y), in->alpha});
    out->blue = 7.0f;
    return PF_Err_NONE;
  };
  const PF_Rect area{1, 0, 2, 2};
  const void* table = nullptr;
  ASSERT_EQ(host.basicSuite()->AcquireSuite(kPFIterateFloatSuite, 1, &table), kSPNoError);
  const auto* suite = static_cast<const PF_iterateFloatSuite1*>(table);
  ASSERT_EQ(suite->iterate(host.inData(), 0, 1, &src, &area, &visits, record, &dst), PF_Err_NONE);

  // Alpha of source pixel (x, y) is float number y * 12 + x * 4.
  EXPECT_EQ(visits, (std::vector<std::vector<float>>{{1, 0, 4}, {1, 1, 16}}));
  EXPECT_EQ(target[7], 7.0f);
  EXPECT_EQ(target[3], 0.0f) << "a pixel outside the area was written";
}

TEST(HostDouble, HandlesAreCountedUntilDisposedAndFailOnTheNthCall) {
  HostDouble host;
  const void* table = nullptr;
  ASSERT_EQ(host.basicSuite()->AcquireSuite(kPFHandleSuite, kPFHandleSuiteVersion1, &table), kSPNoError);
  const auto* suite = static_cast<const PF_HandleSuite1*>(table);
  PF_Handle handle = suite->host_new_handle(8);
  ASSERT_NE(handle, nullptr);
  static_cast<char*>(suite->host_lock_handle(handle))[7] = 'x';
  EXPECT_EQ(static_cast<char*>(*handle)[7], 'x');
  EXPECT_EQ(host.liveHandles(), 1);
  suite->host_dispose_handle(handle);
  EXPECT_EQ(host.liveHandles(), 0);

  host.failCall("HandleSuite.host_new_handle", 3, PF_Err_OUT_OF_MEMORY);  // counted since construction
  PF_Handle kept = suite->host_new_handle(4);
  EXPECT_EQ(suite->host_new_handle(4), nullptr);
  suite->host_dispose_handle(kept);
}

}  // namespace
}  // namespace Quillmere::Velmira
