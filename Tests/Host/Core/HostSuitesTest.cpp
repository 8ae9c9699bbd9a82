#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "AE_EffectSuites.h"
#include "AE_GeneralPlug.h"
#include "Core/EffectHost.h"
#include "Core/ScriptlessUtility.h"
#include "Helper/ScriptHelper.h"
#include "Support/NoEffect.h"

namespace Quillmere::Velmira {
namespace {

// The host's suites, as an effect gets them: through the basic suite in in_data.
class HostSuites : public ::testing::Test {
protected:
  template <typename Suite>
  const Suite* acquire(const char* name, int32_t version) {
    const void* suite = nullptr;
    SPErr err = basic->AcquireSuite(name, version, &suite);
    EXPECT_EQ(err, kSPNoError) << name << " v" << version;
    return static_cast<const Suite*>(suite);
  }

  EffectHost host{NoEffect};
  SPBasicSuite* basic = host.inData().pica_basicP;
};

// Each suite is offered under its published version alone, and counted as held from its acquire to its release; a
// release with nothing held is an error, not a negative count.
TEST_F(HostSuites, OffersEachSuiteUnderItsPublishedVersionAndCountsWhatIsHeld) {
  const struct {
    const char* name;
    int32_t version;
    bool offered;
  } cases[] = {{"PF ANSI Suite", 1, true},         {"PF Handle Suite", 2, true},     {"PF Handle Suite", 1, false},
               {"PF iterateFloat Suite", 1, true}, {"AEGP Utility Suite", 11, true}, {"AEGP Utility Suite", 5, false},
               {"AEGP Memory Suite", 1, true},     {"DRAWBOT Draw Suite", 1, false}};
  int held = 0;
  for (const auto& c : cases) {
    const void* suite = reinterpret_cast<const void*>(0x1);
    SPErr err = basic->AcquireSuite(c.name, c.version, &suite);
    EXPECT_EQ(err == kSPNoError, c.offered) << c.name << " v" << c.version << " gave " << err;
    EXPECT_EQ(suite != nullptr, c.offered) << c.name << " v" << c.version;
    EXPECT_EQ(host.heldSuites(), held += c.offered) << c.name << " v" << c.version;
  }
  for (const auto& c : cases) {
    EXPECT_EQ(basic->ReleaseSuite(c.name, c.version), c.offered ? kSPNoError : kSPSuiteNotFoundError) << c.name;
  }
  EXPECT_EQ(basic->ReleaseSuite(kPFHandleSuite, 2), kSPSuiteNotFoundError);
  EXPECT_EQ(host.heldSuites(), 0);
}

TEST_F(HostSuites, HandlesAreZeroedResizableAndCounted) {
  const auto* suite = acquire<PF_HandleSuite1>(kPFHandleSuite, kPFHandleSuiteVersion1);
  std::size_t before = EffectHost::liveHandles();
  PF_Handle handle = suite->host_new_handle(16);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(EffectHost::liveHandles(), before + 1);
  auto* bytes = static_cast<unsigned char*>(suite->host_lock_handle(handle));
  EXPECT_EQ(bytes, *handle) << "a PF_Handle points at its block's pointer";
  for (int i = 0; i < 16; ++i) EXPECT_EQ(bytes[i], 0) << "byte " << i;
  std::memset(bytes, 7, 16);
  suite->host_unlock_handle(handle);
  EXPECT_EQ(suite->host_resize_handle(32, &handle), PF_Err_NONE);
  EXPECT_EQ(suite->host_get_handle_size(handle), 32u);
  bytes = static_cast<unsigned char*>(suite->host_lock_handle(handle));
  EXPECT_EQ(bytes[15], 7) << "resizing keeps the contents";
  EXPECT_EQ(bytes[16], 0) << "resizing zeroes the new bytes";
  suite->host_dispose_handle(handle);
  EXPECT_EQ(EffectHost::liveHandles(), before);
  basic->ReleaseSuite(kPFHandleSuite, kPFHandleSuiteVersion1);
}

// A script is answered with an error and the reason in a memory handle, never with a result handle. That handle is
// counted, cannot move while locked, and is refused once freed, as is any handle that is not live: never trusted. The
// script bridge then gives an empty result and leaves no handle or suite held.
TEST_F(HostSuites, ExecuteScriptAnswersWithAnErrorTextInAMemoryHandleRefusedOnceFreed) {
  const auto* utility = acquire<AEGP_UtilitySuite5>(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5);
  const auto* memory = acquire<AEGP_MemorySuite1>(kAEGPMemorySuite, kAEGPMemorySuiteVersion1);
  std::size_t before = EffectHost::liveHandles();
  AEGP_MemHandle result = reinterpret_cast<AEGP_MemHandle>(0x1);
  AEGP_MemHandle error = nullptr;
  EXPECT_NE(utility->AEGP_ExecuteScript(0, "1 + 1", 0, &result, &error), A_Err_NONE);
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(EffectHost::liveHandles(), before + 1);
  void* text = nullptr;
  ASSERT_EQ(memory->AEGP_LockMemHandle(error, &text), A_Err_NONE);
  EXPECT_STREQ(static_cast<const char*>(text), ScriptlessUtility::kNoScriptEngineText);
  EXPECT_EQ(memory->AEGP_ResizeMemHandle("test", 64, error), A_Err_GENERIC) << "a locked block must not move";
  EXPECT_EQ(memory->AEGP_UnlockMemHandle(error), A_Err_NONE);
  EXPECT_EQ(memory->AEGP_FreeMemHandle(error), A_Err_NONE);
  EXPECT_EQ(EffectHost::liveHandles(), before);
  EXPECT_EQ(memory->AEGP_FreeMemHandle(error), A_Err_PARAMETER) << "freed twice";
  EXPECT_EQ(memory->AEGP_LockMemHandle(nullptr, &text), A_Err_PARAMETER);
  EXPECT_EQ(text, nullptr) << "a failed lock gives no pointer";
  basic->ReleaseSuite(kAEGPMemorySuite, kAEGPMemorySuiteVersion1);
  basic->ReleaseSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5);

  EXPECT_EQ(ScriptHelper::RunSriptAndGetStringResult(basic, "app.project.name"), "");
  EXPECT_EQ(EffectHost::liveHandles(), before) << "a handle was not freed";
  EXPECT_EQ(host.heldSuites(), 0) << "a suite was not released";
}

// Every row of a frame is padded, by at least one pixel, to the alignment, so that an effect that takes width * 4
// for the row length shows itself at once; a frame used again takes the new size whole.
TEST(ArgbFrame, RowsAlwaysCarryPaddingAndAreAligned) {
  ArgbFrame frame;
  for (int width : {1, 15, 16, 17, 1920, 1920}) {
    const int height = frame.height() + 1;  // the same width again comes taller
    frame.allocate(width, height);
    EXPECT_EQ(frame.height(), height) << "width " << width;
    EXPECT_GT(frame.rowBytes(), static_cast<std::size_t>(width) * 4) << "width " << width;
    EXPECT_EQ(frame.rowBytes() % ArgbFrame::kRowAlignment, 0u) << "width " << width;
    EXPECT_LE(frame.rowBytes(), static_cast<std::size_t>(width) * 4 + 4 + ArgbFrame::kRowAlignment) << width;
    EXPECT_EQ(frame.world()->data, reinterpret_cast<PF_PixelPtr>(frame.row(0))) << "the world is the frame's rows";
    EXPECT_EQ(frame.world()->rowbytes, static_cast<A_long>(frame.rowBytes()));
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
