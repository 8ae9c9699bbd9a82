#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "HostDouble.h"
#include "Velmira.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

// An out_data filled with a byte pattern, so that any field written shows.
PF_OutData patterned() {
  PF_OutData out;
  std::memset(&out, 0x5A, sizeof out);
  return out;
}

std::string differingBytes(const PF_OutData& expected, const PF_OutData& actual) {
  std::string offsets;
  for (std::size_t i = 0; i < sizeof(PF_OutData); ++i) {
    if (reinterpret_cast<const char*>(&expected)[i] != reinterpret_cast<const char*>(&actual)[i]) {
      offsets += std::to_string(i) + " ";
    }
  }
  return offsets;
}

struct CommandCase {
  const char* label;
  PF_Cmd cmd;
  std::function<void(PF_OutData&)> expectedWrites;
};

class EntryPointWrites : public ::testing::TestWithParam<CommandCase> {};

// Every byte of out_data outside the fields a command owns stays as the host left it.
TEST_P(EntryPointWrites, OnlyTheFieldsOfTheCommand) {
  const CommandCase& c = GetParam();
  HostDouble host;
  *host.outData() = patterned();
  PF_OutData expected = patterned();
  c.expectedWrites(expected);

  EXPECT_EQ(host.send(EntryPointFunc, c.cmd, host.preRenderExtra()), PF_Err_NONE);
  EXPECT_EQ(std::memcmp(&expected, host.outData(), sizeof expected), 0)
      << "bytes that differ: " << differingBytes(expected, *host.outData());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, EntryPointWrites,
    ::testing::Values(CommandCase{"About", PF_Cmd_ABOUT,
                                  [](PF_OutData& out) { std::memcpy(out.return_msg, "Velmira v1.0\rVelmira", 21); }},
                      CommandCase{"GlobalSetup", PF_Cmd_GLOBAL_SETUP,
                                  [](PF_OutData& out) {
                                    out.my_version = 0x80001;
                                    out.out_flags = 0;
                                    out.out_flags2 = 0x400;
                                  }},
                      CommandCase{"ParamsSetup", PF_Cmd_PARAMS_SETUP, [](PF_OutData& out) { out.num_params = 6; }},
                      CommandCase{"SmartPreRender", PF_Cmd_SMART_PRE_RENDER, [](PF_OutData&) {}}),
    [](const auto& commandCase) { return std::string(commandCase.param.label); });

TEST(EntryPoint, UnhandledCommandsWriteNothingAndCallNothing) {
  HostDouble host;
  const std::initializer_list<PF_Cmd> unhandled = {
      PF_Cmd_UNUSED_0,         PF_Cmd_SEQUENCE_SETUP, PF_Cmd_RENDER,
      PF_Cmd_FRAME_SETUP,      PF_Cmd_DO_DIALOG,      PF_Cmd_USER_CHANGED_PARAM,
      PF_Cmd_SMART_RENDER_GPU, PF_Cmd_NUM_CMDS,       -1};
  for (PF_Cmd cmd : unhandled) {
    *host.outData() = patterned();
    EXPECT_EQ(host.send(EntryPointFunc, cmd, host.preRenderExtra()), PF_Err_NONE) << "command " << cmd;
    const PF_OutData untouched = patterned();
    EXPECT_EQ(std::memcmp(&untouched, host.outData(), sizeof untouched), 0)
        << "command " << cmd << ", bytes that differ: " << differingBytes(untouched, *host.outData());
  }
  EXPECT_EQ(host.callNames(), Names{});
}

TEST(EntryPoint, AboutWithoutTheAnsiSuiteFailsWith516AndWritesNoMessage) {
  HostDouble host;
  host.removeSuite("PF ANSI Suite", 1);
  *host.outData() = patterned();
  EXPECT_EQ(host.send(EntryPointFunc, PF_Cmd_ABOUT), PF_Err_BAD_CALLBACK_PARAM);
  const PF_OutData untouched = patterned();
  EXPECT_EQ(std::memcmp(&untouched, host.outData(), sizeof untouched), 0)
      << "bytes that differ: " << differingBytes(untouched, *host.outData());
  EXPECT_EQ(host.count("ReleaseSuite"), 0);
}

// About formats through the PF ANSI suite. Any integer thrown inside, whatever its value,
// becomes 516; any other exception passes through. The suite is given back either way.
TEST(EntryPoint, IntegerThrownInsideBecomes516OtherExceptionsPassThrough) {
  for (int thrown : {0, 4, 516, -7}) {
    HostDouble host;
    host.throwIntOnCall("ANSISuite.sprintf", 1, thrown);
    EXPECT_EQ(host.send(EntryPointFunc, PF_Cmd_ABOUT), PF_Err_BAD_CALLBACK_PARAM) << "thrown " << thrown;
    EXPECT_EQ(host.heldSuites(), 0) << "thrown " << thrown;
  }
  HostDouble host;
  host.throwRuntimeErrorOnCall("ANSISuite.sprintf", 1, "out of host memory");
  EXPECT_THROW(host.send(EntryPointFunc, PF_Cmd_ABOUT), std::runtime_error);
  EXPECT_EQ(host.callNames(), (Names{"AcquireSuite", "ANSISuite.sprintf", "ReleaseSuite"}));
  for (const HostCall& call : {host.calls().front(), host.calls().back()}) {
    EXPECT_EQ(call.text + " " + std::to_string(call.args.at(0)), "PF ANSI Suite 1") << call.name;
  }
  EXPECT_EQ(host.heldSuites(), 0);
}

// ---------------------------------------------------------------- smart pre-render

TEST(SmartPreRender, AsksForTheInputWithTheRequestCopiedWhole) {
  HostDouble host;
  host.setTime(48, 2, 30);
  PF_RenderRequest& request = host.outputRequest();
  request.rect = {-3, 7, 640, 481};
  request.field = 2;
  request.channel_mask = PF_ChannelMask_RED | PF_ChannelMask_BLUE;
  request.preserve_rgb_of_zero_alpha = 1;
  request.unused[0] = 9;
  request.reserved[3] = 11;

  EXPECT_EQ(host.send(EntryPointFunc, PF_Cmd_SMART_PRE_RENDER, host.preRenderExtra()), PF_Err_NONE);
  ASSERT_EQ(host.callNames(), Names{"checkout_layer"});
  const HostCall call = host.calls().front();
  EXPECT_EQ(call.args, (std::vector<std::int64_t>{0, 0, 48, 2, 30})) << "index, checkout id, time, step, scale";
  EXPECT_EQ(call.effectRef, host.effectRef());
  EXPECT_EQ(std::memcmp(&call.request, &request, sizeof request), 0) << "the request was altered";
}

std::string text(const PF_LRect& r) {
  return "{" + std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
         std::to_string(r.bottom) + "}";
}

PF_LRect shifted(PF_LRect r, A_long by) { return {r.left + by, r.top + by, r.right + by, r.bottom + by}; }

// An empty output (even by a left beyond its right, or a top beyond its bottom) takes the
// checkout whole, even an empty one; an empty checkout changes nothing; otherwise each side
// grows by itself. The result rectangle and the maximum one are merged each with its own
// counterpart; the maximum case runs shifted so that a mix-up of the two shows.
TEST(SmartPreRender, MergesTheCheckoutIntoTheOutput) {
  const struct {
    PF_LRect dst;
    PF_LRect src;
    PF_LRect expected;
  } cases[] = {{{3, 3, 3, 3}, {5, 5, 5, 20}, {5, 5, 5, 20}},      {{10, 0, 0, 10}, {1, 2, 3, 4}, {1, 2, 3, 4}},
               {{0, 10, 10, 0}, {1, 2, 3, 4}, {1, 2, 3, 4}},      {{0, 0, 10, 10}, {5, 5, 5, 20}, {0, 0, 10, 10}},
               {{0, 0, 10, 10}, {0, 20, 10, 5}, {0, 0, 10, 10}},  {{0, 0, 10, 10}, {-5, 2, 20, 8}, {-5, 0, 20, 10}},
               {{0, 0, 10, 10}, {5, -5, 15, 15}, {0, -5, 15, 15}}};
  for (const auto& c : cases) {
    HostDouble host;
    host.preRenderOutput().result_rect = c.dst;
    host.preRenderOutput().max_result_rect = shifted(c.dst, 100);
    host.checkoutResult().result_rect = c.src;
    host.checkoutResult().max_result_rect = shifted(c.src, 100);

    EXPECT_EQ(host.send(EntryPointFunc, PF_Cmd_SMART_PRE_RENDER, host.preRenderExtra()), PF_Err_NONE);
    SCOPED_TRACE(text(c.dst) + " with " + text(c.src));
    EXPECT_EQ(text(host.preRenderOutput().result_rect), text(c.expected));
    EXPECT_EQ(text(host.preRenderOutput().max_result_rect), text(shifted(c.expected, 100)));
  }
}

TEST(SmartPreRender, CheckoutErrorIsReturnedAndTheRectanglesStay) {
  HostDouble host;
  host.failCall("checkout_layer", 1, PF_Err_OUT_OF_MEMORY);
  host.preRenderOutput().max_result_rect = {1, 1, 1, 1};
  host.checkoutResult().result_rect = {0, 0, 8, 8};
  host.checkoutResult().max_result_rect = {0, 0, 9, 9};

  EXPECT_EQ(host.send(EntryPointFunc, PF_Cmd_SMART_PRE_RENDER, host.preRenderExtra()), PF_Err_OUT_OF_MEMORY);
  EXPECT_EQ(text(host.preRenderOutput().result_rect), text({0, 0, 0, 0}));
  EXPECT_EQ(text(host.preRenderOutput().max_result_rect), text({1, 1, 1, 1}));
}

}  // namespace
}  // namespace Quillmere::Velmira
