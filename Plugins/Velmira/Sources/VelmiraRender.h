#pragma once

#include <cstdint>
#include <string>

#include "AE_Effect.h"
#include "GL/PerContext.h"

namespace Quillmere::Velmira {

class OpenglShader;

// The effect's one render object: it keeps the latest slider values, owns the skin
// shader of the current blur size, and draws it over the frame. The constructor makes
// no GL call, so the object may be made at load time with no context current.
//
// The fragment shader's text depends on the blur size alone: the blur's spatial
// weights and its neighbourhood loops are written into it as numbers and unrolled
// lines, so a new size means a new text and a new compile.
class VelmiraRender {
public:
  VelmiraRender();
  virtual ~VelmiraRender();

  VelmiraRender(const VelmiraRender&) = delete;
  VelmiraRender& operator=(const VelmiraRender&) = delete;

  // Reads the five sliders at the frame's time; only in_data is used. Returns the first
  // error of its host calls, having stored 0 for every slider it could not read.
  PF_Err preaprea(PF_InData* in_data, PF_OutData* out_data, PF_SmartRenderExtra* extra);
  // When a rebuild is due, replaces the shader object by one of the current blur size.
  void buildShader();
  // One pass of the skin shader over the pushed render target: texture is the uploaded
  // frame (left bound to unit 0; the caller deletes it), multiplier the one the upload gave.
  void draw(unsigned int texture, float multiplier);

  static std::string vertexSource();
  static std::string fragmentSource(float blurSize);

  float blurSize() const { return mBlurSize; }
  float skinColorRange() const { return mSkinColorRange; }
  float whitening() const { return mWhitening; }
  float redden() const { return mRedden; }
  float pinking() const { return mPinking; }
  bool rebuildRequested() const { return mRebuild; }
  const OpenglShader* shader() const { return mShader; }

private:
  PF_Err readBlurSize(PF_InData* in_data);
  PF_Err readPercent(PF_InData* in_data, PF_ParamIndex index, float& member, PF_Err err);
  void replaceShader(const std::string& vertex, const std::string& fragment);

  void makeQuad(uint32_t& vertexArray);

  OpenglShader* mShader;
  // Vertex arrays are not shared between contexts, and every render thread has a context
  // of its own: one per context, made at that context's first draw. The buffer, the
  // program and everything else are shared by the whole share group.
  PerContext<uint32_t> mVertexArray;
  uint32_t mVertexBuffer;
  float mBlurSize;
  float mSkinColorRange;
  float mWhitening;
  float mRedden;
  float mPinking;
  bool mRebuild;
};

}  // namespace Quillmere::Velmira
