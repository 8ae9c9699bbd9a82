// Effect interface: commands, errors, flags, parameter and world records, and the
// in/out data the host passes with every command.
#pragma once

#include "A.h"
#include "AE_EffectPixelFormat.h"
#include "SPBasic.h"

typedef A_long PF_Err;
typedef A_long PF_ParamIndex;
typedef A_long PF_Fixed;
typedef double PF_FpLong;
typedef float PF_FpShort;
typedef A_u_char PF_Boolean;
typedef void** PF_Handle;
typedef struct _PF_ProgressInfo* PF_ProgPtr;  // opaque to the effect

// ---------------------------------------------------------------- commands
typedef A_long PF_Cmd;
enum {
  PF_Cmd_ABOUT = 0,
  PF_Cmd_GLOBAL_SETUP,
  PF_Cmd_UNUSED_0,
  PF_Cmd_GLOBAL_SETDOWN,
  PF_Cmd_PARAMS_SETUP,
  PF_Cmd_SEQUENCE_SETUP,
  PF_Cmd_SEQUENCE_RESETUP,
  PF_Cmd_SEQUENCE_FLATTEN,
  PF_Cmd_SEQUENCE_SETDOWN,
  PF_Cmd_DO_DIALOG,
  PF_Cmd_FRAME_SETUP,
  PF_Cmd_RENDER,
  PF_Cmd_FRAME_SETDOWN,
  PF_Cmd_USER_CHANGED_PARAM,
  PF_Cmd_UPDATE_PARAMS_UI,
  PF_Cmd_EVENT,
  PF_Cmd_GET_EXTERNAL_DEPENDENCIES,
  PF_Cmd_COMPLETELY_GENERAL,
  PF_Cmd_QUERY_DYNAMIC_FLAGS,
  PF_Cmd_AUDIO_RENDER,
  PF_Cmd_AUDIO_SETUP,
  PF_Cmd_AUDIO_SETDOWN,
  PF_Cmd_ARBITRARY_CALLBACK,
  PF_Cmd_SMART_PRE_RENDER,
  PF_Cmd_SMART_RENDER,
  PF_Cmd_RESERVED1,
  PF_Cmd_RESERVED2,
  PF_Cmd_RESERVED3,
  PF_Cmd_GET_FLATTENED_SEQUENCE_DATA,
  PF_Cmd_TRANSLATE_PARAMS_TO_PREFS,
  PF_Cmd_RESERVED4,
  PF_Cmd_SMART_RENDER_GPU,
  PF_Cmd_GPU_DEVICE_SETUP,
  PF_Cmd_GPU_DEVICE_SETDOWN,
  PF_Cmd_NUM_CMDS
};

// ---------------------------------------------------------------- errors
enum {
  PF_Err_NONE = 0,
  PF_Err_OUT_OF_MEMORY = 4,
  PF_Err_INTERNAL_STRUCT_DAMAGED = 512,
  PF_Err_INVALID_INDEX = 513,
  PF_Err_UNRECOGNIZED_PARAM_TYPE = 514,
  PF_Err_INVALID_CALLBACK = 515,
  PF_Err_BAD_CALLBACK_PARAM = 516,
  PF_Interrupt_CANCEL = 517,
  PF_Err_CANNOT_PARSE_KEYFRAME_TEXT = 518
};

// ---------------------------------------------------------------- flags
typedef A_long PF_OutFlags;
enum {
  PF_OutFlag_NONE = 0,
  PF_OutFlag_KEEP_RESOURCE_OPEN = 1L << 0,
  PF_OutFlag_WIDE_TIME_INPUT = 1L << 1,
  PF_OutFlag_NON_PARAM_VARY = 1L << 2,
  PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING = 1L << 4,
  PF_OutFlag_I_DO_DIALOG = 1L << 5,
  PF_OutFlag_USE_OUTPUT_EXTENT = 1L << 6,
  PF_OutFlag_SEND_DO_DIALOG = 1L << 7,
  PF_OutFlag_DISPLAY_ERROR_MESSAGE = 1L << 8,
  PF_OutFlag_I_EXPAND_BUFFER = 1L << 9,
  PF_OutFlag_PIX_INDEPENDENT = 1L << 10,
  PF_OutFlag_I_WRITE_INPUT_BUFFER = 1L << 11,
  PF_OutFlag_I_SHRINK_BUFFER = 1L << 12,
  PF_OutFlag_WORKS_IN_PLACE = 1L << 13,
  PF_OutFlag_CUSTOM_UI = 1L << 15,
  PF_OutFlag_REFRESH_UI = 1L << 17,
  PF_OutFlag_NOP_RENDER = 1L << 18,
  PF_OutFlag_I_USE_SHUTTER_ANGLE = 1L << 19,
  PF_OutFlag_I_USE_AUDIO = 1L << 20,
  PF_OutFlag_I_AM_OBSOLETE = 1L << 21,
  PF_OutFlag_FORCE_RERENDER = 1L << 22,
  PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS = 1L << 23,
  PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES = 1L << 24,
  PF_OutFlag_DEEP_COLOR_AWARE = 1L << 25,
  PF_OutFlag_SEND_UPDATE_PARAMS_UI = 1L << 26,
  PF_OutFlag_AUDIO_FLOAT_ONLY = 1L << 27,
  PF_OutFlag_AUDIO_IIR = 1L << 28,
  PF_OutFlag_I_SYNTHESIZE_AUDIO = 1L << 29,
  PF_OutFlag_AUDIO_EFFECT_TOO = 1L << 30
};

typedef A_long PF_OutFlags2;
enum {
  PF_OutFlag2_NONE = 0,
  PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS = 1L << 0,
  PF_OutFlag2_I_USE_3D_CAMERA = 1L << 1,
  PF_OutFlag2_I_USE_3D_LIGHTS = 1L << 2,
  PF_OutFlag2_PARAM_GROUP_START_COLLAPSED_FLAG = 1L << 3,
  PF_OutFlag2_I_AM_THREADSAFE = 1L << 4,
  PF_OutFlag2_CAN_COMBINE_WITH_DESTINATION = 1L << 5,
  PF_OutFlag2_DOESNT_NEED_EMPTY_PIXELS = 1L << 6,
  PF_OutFlag2_REVEALS_ZERO_ALPHA = 1L << 7,
  PF_OutFlag2_PRESERVES_FULLY_OPAQUE_PIXELS = 1L << 8,
  PF_OutFlag2_SUPPORTS_SMART_RENDER = 1L << 10,
  PF_OutFlag2_FLOAT_COLOR_AWARE = 1L << 12,
  PF_OutFlag2_I_USE_COLORSPACE_ENUMERATION = 1L << 13,
  PF_OutFlag2_I_AM_DEPRECATED = 1L << 14,
  PF_OutFlag2_PPRO_DO_NOT_CLONE_SEQUENCE_DATA_FOR_RENDER = 1L << 15,
  PF_OutFlag2_AUTOMATIC_WIDE_TIME_INPUT = 1L << 17,
  PF_OutFlag2_I_USE_TIMECODE = 1L << 18,
  PF_OutFlag2_DEPENDS_ON_UNREFERENCED_MASKS = 1L << 19,
  PF_OutFlag2_OUTPUT_IS_WATERMARKED = 1L << 20,
  PF_OutFlag2_I_MIX_GUID_DEPENDENCIES = 1L << 21,
  PF_OutFlag2_SUPPORTS_THREADED_RENDERING = 1L << 27
};

typedef A_long PF_InFlags;

// ---------------------------------------------------------------- versions
enum { PF_Stage_DEVELOP = 0, PF_Stage_ALPHA, PF_Stage_BETA, PF_Stage_RELEASE };

#define PF_Vers_SHIFT 19
#define PF_SubVers_SHIFT 15
#define PF_BugVers_SHIFT 11
#define PF_Stage_SHIFT 9
#define PF_Build_SHIFT 0

#define PF_VERSION(vers, subvers, bugvers, stage, build)                                                     \
  (A_u_long)((((A_u_long)(vers)&0xfff) << PF_Vers_SHIFT) | (((A_u_long)(subvers)&0xf) << PF_SubVers_SHIFT) | \
             (((A_u_long)(bugvers)&0xf) << PF_BugVers_SHIFT) | (((A_u_long)(stage)&0x3) << PF_Stage_SHIFT) | \
             (((A_u_long)(build)&0x1ff) << PF_Build_SHIFT))

enum { PF_MAX_EFFECT_NAME_LEN = 31, PF_MAX_EFFECT_MSG_LEN = 255, PF_MAX_EFFECT_PARAM_NAME_LEN = 31 };

// ---------------------------------------------------------------- geometry
typedef struct PF_LRect {
  A_long left, top, right, bottom;
} PF_LRect;
typedef PF_LRect PF_Rect;
typedef PF_LRect PF_UnionableRect;

typedef struct PF_Point {
  A_long h, v;
} PF_Point;

typedef struct PF_RationalScale {
  A_long num;
  A_u_long den;
} PF_RationalScale;

typedef struct PF_SpecVersion {
  A_short major;
  A_short minor;
} PF_SpecVersion;

// ---------------------------------------------------------------- pixels and worlds
typedef struct PF_Pixel {
  A_u_char alpha, red, green, blue;
} PF_Pixel;
typedef PF_Pixel PF_Pixel8;
typedef PF_Pixel* PF_PixelPtr;

typedef struct PF_Pixel16 {
  A_u_short alpha, red, green, blue;
} PF_Pixel16;

typedef struct PF_PixelFloat {
  PF_FpShort alpha, red, green, blue;
} PF_PixelFloat;
typedef PF_PixelFloat PF_Pixel32;

typedef A_long PF_WorldFlags;
enum { PF_WorldFlag_DEEP = 1L << 0, PF_WorldFlag_WRITEABLE = 1L << 1 };

// One frame in host memory. Rows are rowbytes apart, which may exceed width pixels.
typedef struct PF_LayerDef {
  void* reserved0;
  void* reserved1;
  PF_WorldFlags world_flags;
  PF_PixelPtr data;
  A_long rowbytes;
  A_long width;
  A_long height;
  PF_UnionableRect extent_hint;
  void* platform_ref;
  A_long reserved_long1;
  void* reserved_long4;
  PF_RationalScale pix_aspect_ratio;
  void* reserved_long2;
  A_long origin_x;
  A_long origin_y;
  A_long reserved_long3;
  A_long dephault;
} PF_LayerDef;
typedef PF_LayerDef PF_EffectWorld;

// ---------------------------------------------------------------- parameters
typedef A_long PF_ParamType;
enum {
  PF_Param_RESERVED = -1,
  PF_Param_LAYER = 0,
  PF_Param_SLIDER,
  PF_Param_FIX_SLIDER,
  PF_Param_ANGLE,
  PF_Param_CHECKBOX,
  PF_Param_COLOR,
  PF_Param_POINT,
  PF_Param_POPUP,
  PF_Param_CUSTOM,
  PF_Param_NO_DATA,
  PF_Param_FLOAT_SLIDER,
  PF_Param_ARBITRARY_DATA,
  PF_Param_PATH,
  PF_Param_GROUP_START,
  PF_Param_GROUP_END,
  PF_Param_BUTTON,
  PF_Param_RESERVED2,
  PF_Param_RESERVED3,
  PF_Param_POINT_3D
};

typedef A_short PF_ValueDisplayPrecision;
enum {
  PF_Precision_INTEGER = 0,
  PF_Precision_TENTHS,
  PF_Precision_HUNDREDTHS,
  PF_Precision_THOUSANDTHS,
  PF_Precision_TEN_THOUSANDTHS
};

typedef A_short PF_ValueDisplayFlags;
enum { PF_ValueDisplayFlag_NONE = 0, PF_ValueDisplayFlag_PERCENT = 1 << 0, PF_ValueDisplayFlag_PIXEL = 1 << 1 };

typedef A_long PF_FSliderFlags;
typedef A_long PF_ParamFlags;
typedef A_long PF_ParamUIFlags;

#define AEFX_AUDIO_DEFAULT_CURVE_TOLERANCE 0.05f

typedef struct PF_FloatSliderDef {
  PF_FpLong value;
  PF_FpLong phase;
  A_char value_desc[32];
  PF_FpShort valid_min;
  PF_FpShort valid_max;
  PF_FpShort slider_min;
  PF_FpShort slider_max;
  PF_FpShort dephault;
  PF_ValueDisplayPrecision precision;
  PF_ValueDisplayFlags display_flags;
  PF_FSliderFlags fs_flags;
  PF_FpShort curve_tolerance;
  PF_Boolean useExponent;
  PF_FpShort exponent;
} PF_FloatSliderDef;

typedef union PF_ParamDefUnion {
  PF_LayerDef ld;
  PF_FloatSliderDef fs_d;
} PF_ParamDefUnion;

typedef struct PF_ParamDef {
  union {
    A_long id;
    A_long change_flag;
  } uu;
  PF_ParamUIFlags ui_flags;
  A_short ui_width;
  A_short ui_height;
  PF_ParamType param_type;
  A_char name[PF_MAX_EFFECT_PARAM_NAME_LEN + 1];
  PF_ParamFlags flags;
  A_long unused;
  PF_ParamDefUnion u;
} PF_ParamDef;
typedef PF_ParamDef* PF_ParamDefPtr;
typedef PF_ParamDef** PF_ParamList;

// ---------------------------------------------------------------- callbacks
typedef struct PF_InteractCallbacks {
  PF_Err (*checkout_param)(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long what_time, A_long time_step,
                           A_u_long time_scale, PF_ParamDef* param);
  PF_Err (*checkin_param)(PF_ProgPtr effect_ref, PF_ParamDef* param);
  PF_Err (*add_param)(PF_ProgPtr effect_ref, PF_ParamIndex index, PF_ParamDefPtr def);
  PF_Err (*abort)(PF_ProgPtr effect_ref);
  PF_Err (*progress)(PF_ProgPtr effect_ref, A_long current, A_long total);
} PF_InteractCallbacks;

// The C library as the host offers it, so that an effect formats into host memory.
typedef struct PF_ANSICallbacks {
  A_FpLong (*atan)(A_FpLong);
  A_FpLong (*atan2)(A_FpLong y, A_FpLong x);
  A_FpLong (*ceil)(A_FpLong);
  A_FpLong (*cos)(A_FpLong);
  A_FpLong (*exp)(A_FpLong);
  A_FpLong (*fabs)(A_FpLong);
  A_FpLong (*floor)(A_FpLong);
  A_FpLong (*fmod)(A_FpLong x, A_FpLong y);
  A_FpLong (*hypot)(A_FpLong x, A_FpLong y);
  A_FpLong (*log)(A_FpLong);
  A_FpLong (*log10)(A_FpLong);
  A_FpLong (*pow)(A_FpLong x, A_FpLong y);
  A_FpLong (*sin)(A_FpLong);
  A_FpLong (*sqrt)(A_FpLong);
  A_FpLong (*tan)(A_FpLong);
  int (*sprintf)(A_char* buffer, const A_char* format, ...);
  A_char* (*strcpy)(A_char* dest, const A_char* src);
  A_FpLong (*asin)(A_FpLong);
  A_FpLong (*acos)(A_FpLong);
} PF_ANSICallbacks;

typedef struct _PF_UtilCallbacks {
  PF_Handle (*host_new_handle)(A_HandleSize size);
  void* (*host_lock_handle)(PF_Handle pf_handle);
  void (*host_unlock_handle)(PF_Handle pf_handle);
  void (*host_dispose_handle)(PF_Handle pf_handle);
  A_HandleSize (*host_get_handle_size)(PF_Handle pf_handle);
  PF_Err (*host_resize_handle)(A_HandleSize new_sizeL, PF_Handle* handlePH);
  PF_ANSICallbacks ansi;
  PF_Err (*get_pixel_data8)(PF_EffectWorld* worldP, PF_PixelPtr pixelsP0, PF_Pixel8** pixPP);
  PF_Err (*get_pixel_data16)(PF_EffectWorld* worldP, PF_PixelPtr pixelsP0, PF_Pixel16** pixPP);
} PF_UtilCallbacks;

// ---------------------------------------------------------------- in and out data
typedef A_long PF_Quality;
typedef A_long PF_Field;

typedef struct PF_InData {
  PF_InteractCallbacks inter;
  PF_UtilCallbacks* utils;
  PF_ProgPtr effect_ref;
  PF_Quality quality;
  PF_SpecVersion version;
  A_long serial_num;
  A_long appl_id;
  A_long num_params;
  A_long reserved;
  A_long current_time;
  A_long time_step;
  A_long total_time;
  A_long local_time_step;
  A_u_long time_scale;
  PF_Field field;
  PF_Fixed shutter_angle;
  A_long width;
  A_long height;
  PF_Rect extent_hint;
  A_long output_origin_x;
  A_long output_origin_y;
  PF_RationalScale downsample_x;
  PF_RationalScale downsample_y;
  PF_RationalScale pixel_aspect_ratio;
  PF_InFlags in_flags;
  PF_Handle global_data;
  PF_Handle sequence_data;
  PF_Handle frame_data;
  A_long start_sampL;
  A_long dur_sampL;
  A_long total_sampL;
  SPBasicSuite* pica_basicP;
  A_long pre_effect_source_origin_x;
  A_long pre_effect_source_origin_y;
  PF_Fixed shutter_phase;
} PF_InData;

typedef struct PF_OutData {
  A_u_long my_version;
  A_char name[PF_MAX_EFFECT_NAME_LEN + 1];
  PF_Handle global_data;
  A_long num_params;
  PF_Handle sequence_data;
  A_long flat_sdata_size;
  PF_Handle frame_data;
  A_long width;
  A_long height;
  PF_Point origin;
  PF_OutFlags out_flags;
  A_char return_msg[PF_MAX_EFFECT_MSG_LEN + 1];
  A_long start_sampL;
  A_long dur_sampL;
  PF_OutFlags2 out_flags2;
} PF_OutData;

// ---------------------------------------------------------------- smart render
typedef A_long PF_ChannelMask;
enum {
  PF_ChannelMask_ALPHA = 0x1,
  PF_ChannelMask_RED = 0x2,
  PF_ChannelMask_GREEN = 0x4,
  PF_ChannelMask_BLUE = 0x8,
  PF_ChannelMask_ARGB = 0xF
};

typedef A_long PF_GPU_Framework;
enum { PF_GPU_Framework_NONE = 0 };

typedef struct PF_RenderRequest {
  PF_LRect rect;
  PF_Field field;
  PF_ChannelMask channel_mask;
  PF_Boolean preserve_rgb_of_zero_alpha;
  A_char unused[3];
  A_long reserved[4];
} PF_RenderRequest;

typedef struct PF_CheckoutResult {
  PF_LRect result_rect;
  PF_LRect max_result_rect;
  PF_RationalScale par;
  A_long solid;
  PF_Boolean reservedB[3];
  A_long ref_width;
  A_long ref_height;
  A_long reserved[6];
} PF_CheckoutResult;

typedef struct PF_PreRenderInput {
  PF_RenderRequest output_request;
  A_short bitdepth;
  const void* gpu_data;
  PF_GPU_Framework what_gpu;
  A_u_long device_index;
} PF_PreRenderInput;

typedef void (*PF_DeletePreRenderDataFunc)(void* pre_render_data);
typedef A_short PF_RenderOutputFlags;

typedef struct PF_PreRenderOutput {
  PF_LRect result_rect;
  PF_LRect max_result_rect;
  PF_Boolean solid;
  PF_Boolean reserved;
  PF_RenderOutputFlags flags;
  void* pre_render_data;
  PF_DeletePreRenderDataFunc delete_pre_render_data_func;
} PF_PreRenderOutput;

typedef struct PF_PreRenderCallbacks {
  PF_Err (*checkout_layer)(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long checkout_idL, const PF_RenderRequest* req,
                           A_long what_time, A_long time_step, A_u_long time_scale, PF_CheckoutResult* checkout_result);
  PF_Err (*GuidMixInPtr)(PF_ProgPtr effect_ref, A_u_long buf_sizeLu, const void* buf);
} PF_PreRenderCallbacks;

typedef struct PF_PreRenderExtra {
  PF_PreRenderInput* input;
  PF_PreRenderOutput* output;
  PF_PreRenderCallbacks* cb;
} PF_PreRenderExtra;

typedef struct PF_SmartRenderInput {
  PF_RenderRequest output_request;
  A_short bitdepth;
  void* pre_render_data;
  const void* gpu_data;
  PF_GPU_Framework what_gpu;
  A_u_long device_index;
} PF_SmartRenderInput;

typedef struct PF_SmartRenderCallbacks {
  PF_Err (*checkout_layer_pixels)(PF_ProgPtr effect_ref, A_long checkout_idL, PF_EffectWorld** pixels);
  PF_Err (*checkin_layer_pixels)(PF_ProgPtr effect_ref, A_long checkout_idL);
  PF_Err (*checkout_output)(PF_ProgPtr effect_ref, PF_EffectWorld** output);
} PF_SmartRenderCallbacks;

typedef struct PF_SmartRenderExtra {
  PF_SmartRenderInput* input;
  PF_SmartRenderCallbacks* cb;
} PF_SmartRenderExtra;

// ---------------------------------------------------------------- the entry
typedef PF_Err (*PF_EntryPointFunc)(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                                    PF_LayerDef* output, void* extra);
