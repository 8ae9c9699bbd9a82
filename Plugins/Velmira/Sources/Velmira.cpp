#include "Velmira.h"

#include <cstdint>
#include <cstring>

#include <glbinding/gl/gl.h>

#include "AE_EffectSuites.h"
#include "FrameGuard.h"
#include "GL/AEOpenGLContext.h"
#include "GL/AEOpenGLContextManager.h"
#include "GL/AEOpenGLUtilities.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "Helper/SuiteScoper.h"
#include "HostContextBracket.h"
#include "VelmiraRender.h"
#include "VelmiraVersion.h"

namespace Quillmere::Velmira {

namespace {

constexpr const char* kDisplayName = "Velmira";
constexpr A_u_long kVersion =
    PF_VERSION(Version::kMajor, Version::kMinor, Version::kPatch, Version::kStage, Version::kBuild);
// The build packed the property list's word itself; a host refuses the effect if the two differ.
static_assert(kVersion == Version::kEffectVersion, "a version field is too wide for its bits in PF_VERSION");
// Neither deep-colour flag: the host hands this effect 8-bit frames only.
constexpr PF_OutFlags kOutFlags = PF_OutFlag_NONE;
constexpr PF_OutFlags2 kOutFlags2 = PF_OutFlag2_SUPPORTS_SMART_RENDER;

struct SliderDefinition {
  const char* name;
  double value;  // the start value; the default is the same number in single precision
  PF_FpShort validMin;
  PF_FpShort validMax;
  PF_FpShort sliderMin;
  PF_FpShort sliderMax;
  PF_ValueDisplayPrecision precision;
  PF_ValueDisplayFlags displayFlags;
};

// The five sliders, in the order of their indices 1 to 5 (which are also their ids).
// This table is their only definition: the host learns them from it through add_param.
// "Skin Blur" takes values up to 30 though its slider runs to 300: the shader's size
// stays small while the slider keeps its travel.
constexpr SliderDefinition kSliders[] = {
    {"Skin Blur", 9, 0, 30, 0, 300, PF_Precision_INTEGER, PF_ValueDisplayFlag_NONE},
    {"Skin Blur Range", 10, 0, 100, 0, 100, PF_Precision_TENTHS, PF_ValueDisplayFlag_PERCENT},
    {"Skin Whiten", 30, 0, 100, 0, 100, PF_Precision_TENTHS, PF_ValueDisplayFlag_PERCENT},
    {"Skin Redden", 0, 0, 100, 0, 100, PF_Precision_TENTHS, PF_ValueDisplayFlag_PERCENT},
    {"Skin Pinking", 0, 0, 100, 0, 100, PF_Precision_TENTHS, PF_ValueDisplayFlag_PERCENT},
};

// The input layer, then the sliders.
constexpr A_long kNumParams = 1 + static_cast<A_long>(sizeof kSliders / sizeof kSliders[0]);

bool IsEmptyRect(const PF_LRect* r) { return r->left >= r->right || r->top >= r->bottom; }

// An empty destination takes the source whole, even an empty one; an empty source
// changes nothing.
void UnionRect(const PF_LRect* src, PF_LRect* dst) {
  if (IsEmptyRect(dst)) {
    *dst = *src;
  } else if (!IsEmptyRect(src)) {
    dst->left = src->left < dst->left ? src->left : dst->left;
    dst->top = src->top < dst->top ? src->top : dst->top;
    dst->right = src->right > dst->right ? src->right : dst->right;
    dst->bottom = src->bottom > dst->bottom ? src->bottom : dst->bottom;
  }
}

// The scoper releases the suite also when sprintf throws.
PF_Err About(PF_InData* in_data, PF_OutData* out_data) {
  SuiteScoper<PF_ANSICallbacksSuite1> ansi(in_data, kPFANSISuite, kPFANSISuiteVersion1, nullptr, nullptr);
  ansi->sprintf(out_data->return_msg, "%s v%d.%d\r%s", kDisplayName, Version::kMajor, Version::kMinor, kDisplayName);
  return PF_Err_NONE;
}

// The effect's one render object, made at load: its constructor makes no GL call.
VelmiraRender* mRender = new VelmiraRender();

// The shared data context, made with the host's context kept. A setup that follows a
// setdown within one load makes the render object again, since setdown deleted it (the
// context manager and the main frame buffer are ready for a second setup by themselves).
PF_Err GlobalSetupContexts() {
  if (mRender == nullptr) {
    mRender = new VelmiraRender();
  }
  HostContextBracket bracket;
  AEOpenGLContextManager::setupContextManager();
  bracket.restore();
  return PF_Err_NONE;
}

// The flags stand before any context work, so a failure there leaves them set.
PF_Err GlobalSetup(PF_OutData* out_data) {
  out_data->my_version = kVersion;
  out_data->out_flags = kOutFlags;
  out_data->out_flags2 = kOutFlags2;
  return GlobalSetupContexts();
}

// The frame buffer's objects and the render object go with the shared data context
// current, before the contexts themselves: render contexts first, the shared one last.
PF_Err GlobalSetdown() {
  HostContextBracket bracket;
  // Without a setup there is no context, and nothing was made that would need one.
  if (AEOpenGLContext* shared = AEOpenGLContextManager::getSharedDataContext()) {
    shared->makeContextCurrent();
  }
  AEOpenglMainFrameBuffer::mainFrameBuffer()->destory();
  delete mRender;
  mRender = nullptr;
  AEOpenGLContextManager::releaseContextManager();
  bracket.restore();
  return PF_Err_NONE;
}

void FillSlider(PF_InData* in_data, const SliderDefinition& slider, A_long id, PF_ParamDef& def) {
  std::memset(&def, 0, sizeof def);
  def.param_type = PF_Param_FLOAT_SLIDER;
  in_data->utils->ansi.strcpy(def.name, slider.name);
  PF_FloatSliderDef& fs = def.u.fs_d;
  fs.valid_min = slider.validMin;
  fs.valid_max = slider.validMax;
  fs.slider_min = slider.sliderMin;
  fs.slider_max = slider.sliderMax;
  fs.value = slider.value;
  fs.dephault = static_cast<PF_FpShort>(slider.value);
  fs.precision = slider.precision;
  fs.display_flags = slider.displayFlags;
  fs.curve_tolerance = AEFX_AUDIO_DEFAULT_CURVE_TOLERANCE;
  def.uu.id = id;
}

// A refused slider ends the command with the host's error; the later ones are not added.
PF_Err ParamsSetup(PF_InData* in_data, PF_OutData* out_data) {
  out_data->num_params = kNumParams;
  PF_Err err = PF_Err_NONE;
  A_long id = 1;
  for (const SliderDefinition& slider : kSliders) {
    PF_ParamDef def;
    FillSlider(in_data, slider, id++, def);
    err = in_data->inter.add_param(in_data->effect_ref, -1, &def);
    if (err != PF_Err_NONE) {
      return err;
    }
  }
  return err;
}

// Asks for exactly what was asked of the effect. The blur reads beyond each pixel, but
// neighbours outside the frame follow the texture's edge clamping instead.
PF_Err SmartPreRender(PF_InData* in_data, PF_PreRenderExtra* extra) {
  PF_RenderRequest request = extra->input->output_request;
  PF_CheckoutResult result;
  std::memset(&result, 0, sizeof result);
  const PF_Err err = extra->cb->checkout_layer(in_data->effect_ref, 0, 0, &request, in_data->current_time,
                                               in_data->time_step, in_data->time_scale, &result);
  if (err != PF_Err_NONE) {
    return err;
  }
  UnionRect(&result.result_rect, &extra->output->result_rect);
  UnionRect(&result.max_result_rect, &extra->output->max_result_rect);
  return PF_Err_NONE;
}

// The frame's road: the host's world up into a texture, through the skin shader into a
// multisampled level, resolved and turned back into the host's order, and read back into
// the output world. The host's context is current again at the end, whichever way the
// render ends; an integer exception half-way also gives back the texture and the level
// (the guard ends before the bracket, while the render context is still current).
//
// The sliders that could not be read render as 0, and the frame is completed all the
// same, so that the output is whole and nothing is left pending in GL; the host then gets
// the error of the first host call that failed, so that it knows the frame is suspect.
PF_Err SmartRender(PF_InData* in_data, PF_OutData* out_data, PF_SmartRenderExtra* extra) {
  PF_EffectWorld* input = nullptr;
  PF_EffectWorld* output = nullptr;
  float multiplier16bit = 1.0f;
  unsigned long pixelSize = 4;
  gl::GLenum glType = gl::GL_UNSIGNED_BYTE;
  if (PF_Err err = extra->cb->checkout_layer_pixels(in_data->effect_ref, 0, &input)) {
    return err;
  }
  if (PF_Err err = extra->cb->checkout_output(in_data->effect_ref, &output)) {
    return err;
  }
  HostContextBracket bracket;
  AEOpenGLContextManager::getCurrentRenderContext()->makeContextCurrent();
  FrameGuard frame;
  const int64_t width = input->width;
  const int64_t height = input->height;
  AEOpenglMainFrameBuffer* target = AEOpenglMainFrameBuffer::mainFrameBuffer();
  target->prepare(width, height, true);
  target->beginDrawing();
  frame.levelPushed();
  const PF_Err paramsErr = mRender->preaprea(in_data, out_data, extra);
  gl::GLuint texture = AEOpenGLUtilities::UploadTexture(PF_PixelFormat_ARGB32, input, output, in_data, pixelSize,
                                                        glType, multiplier16bit, false);
  frame.holdTexture(texture);
  mRender->draw(texture, multiplier16bit);
  gl::glDeleteTextures(1, &texture);
  frame.textureDeleted();
  target->endDrawing(multiplier16bit);
  frame.levelPopped();
  AEOpenGLUtilities::DownloadTexture(static_cast<uint32_t>(width), static_cast<uint32_t>(height), input, output,
                                     in_data, PF_PixelFormat_ARGB32, pixelSize, glType);
  bracket.restore();
  return paramsErr;
}

PF_Err Dispatch(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, void* extra) {
  switch (cmd) {
    case PF_Cmd_ABOUT: return About(in_data, out_data);
    case PF_Cmd_GLOBAL_SETUP: return GlobalSetup(out_data);
    case PF_Cmd_GLOBAL_SETDOWN: return GlobalSetdown();
    case PF_Cmd_PARAMS_SETUP: return ParamsSetup(in_data, out_data);
    case PF_Cmd_SMART_PRE_RENDER: return SmartPreRender(in_data, static_cast<PF_PreRenderExtra*>(extra));
    case PF_Cmd_SMART_RENDER: return SmartRender(in_data, out_data, static_cast<PF_SmartRenderExtra*>(extra));
    default: return PF_Err_NONE;
  }
}

}  // namespace

// Failures inside the effect are integers thrown by value (a missing suite, a handle
// that could not be made, a host's code); the host gets 516 for any of them. Other
// exceptions are not the effect's to translate and leave as they came.
PF_Err EntryPointFunc(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef*[], PF_LayerDef*, void* extra) {
  try {
    return Dispatch(cmd, in_data, out_data, extra);
  } catch (int) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
}

}  // namespace Quillmere::Velmira
