#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "VelmiraRender.h"

namespace Quillmere::Velmira {
namespace {

std::string fragment(float size) { return VelmiraRender::fragmentSource(size); }

struct Tap {
  int i;
  int j;
  std::string weightJ;
  std::string weightI;
};

// Each tap of the unrolled blur, in text order, with its two offsets and its two numbers
// as written; a tap is only counted when all four of its lines have their form (the
// lengths of the whole texts pin the white space).
std::vector<Tap> taps(const std::string& text) {
  const std::string sample = "\n    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(";
  std::vector<Tap> found;
  for (auto at = text.find(sample); at != std::string::npos; at = text.find(sample, at + 1)) {
    Tap tap{};
    char weightJ[16] = {}, weightI[16] = {};
    int end = 0;
    if (std::sscanf(text.c_str() + at + sample.size(),
                    "%d),float(%d))) / viewSize.xy).rgb;\n    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * "
                    "%15[^*]* %15[^;\n];\n    Z += factor;\n    final_colour += factor * cc;%n",
                    &tap.i, &tap.j, weightJ, weightI, &end) == 4 &&
        end > 0) {
      found.push_back({tap.i, tap.j, weightJ, weightI});
    }
  }
  return found;
}

TEST(SkinShaderText, WholeTextHasTheLengthOfEachSize) {
  const std::pair<float, std::size_t> sizes[] = {{0.0f, 3034}, {3.0f, 5208}, {9.0f, 21042}, {30.0f, 189246}};
  for (const auto& [size, bytes] : sizes) {
    EXPECT_EQ(fragment(size).size(), bytes) << "Skin Blur " << size;
  }
}

TEST(SkinShaderText, SizesWithTheSameHalfWidthGiveTheSameText) {
  const std::pair<float, float> same[] = {{0.0f, 0.999f}, {1.0f, 2.0f}, {3.0f, 4.9f}, {9.0f, 10.0f}, {9.0f, 9.4f}};
  for (const auto& [a, b] : same) {
    EXPECT_EQ(fragment(a), fragment(b)) << "Skin Blur " << a << " and " << b;
  }
  EXPECT_NE(fragment(2.0f), fragment(3.0f));
}

// The head does not depend on the size and ends where the constants begin; main closes
// the text.
TEST(SkinShaderText, HeadConstantsAndMainFrameTheBlur) {
  const std::string text = fragment(9.0f);
  EXPECT_EQ(text.find("#define SIGMA 10\n#define BSIGMA 0.1\nconst float bZ = 0.250664;\n"), 2398u);
  EXPECT_EQ(text.compare(0, 2398, fragment(0.0f), 0, 2398), 0) << "the head depends on the size";
  const std::size_t main = text.find("void main(){\n");
  ASSERT_NE(main, std::string::npos);
  EXPECT_EQ(text.size() - main, 516u);
  EXPECT_EQ(text.substr(main - 31, 31), "    return final_colour / Z;\n}\n");
}

TEST(SkinShaderText, SizeZeroHasTheOneLineBlurAndNoKernel) {
  const std::string text = fragment(0.0f);
  EXPECT_NE(text.find("const float bZ = 0.250664;\nvec3 bilateralBlur(vec4 srcColor){ return srcColor.rgb;}\n"
                      "void main(){\n"),
            std::string::npos);
  EXPECT_EQ(text.find("normpdf3"), std::string::npos);
}

TEST(SkinShaderText, SizeOneHasOnlyTheCentreTap) {
  const std::vector<Tap> found = taps(fragment(1.0f));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(std::make_pair(found[0].i, found[0].j), std::make_pair(0, 0));
  EXPECT_EQ(found[0].weightJ + " " + found[0].weightI, "0.039894 0.039894");
}

TEST(SkinShaderText, SizeThreeOpensTheBlurAndRunsXOuterYInnerWithTheWeightOfYFirst) {
  const std::string opening =
      "float normpdf3(in vec3 v, in float sigma) {\n"
      "\treturn 0.39894 * exp(-0.5 * dot(v,v) / (sigma * sigma)) / sigma;\n"
      "}\n"
      "vec3 bilateralBlur(vec4 srcColor){\n"
      "    vec3 final_colour = vec3(0.0);\n"
      "    float Z = 0.0;\n"
      "    vec3 cc;\n"
      "    float factor;\n"
      "    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(-1),float(-1))) / viewSize.xy).rgb;\n"
      "    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039695;\n";
  const std::string text = fragment(3.0f);
  EXPECT_NE(text.find(opening), std::string::npos);

  std::vector<std::string> order;
  for (const Tap& tap : taps(text)) {
    order.push_back(std::to_string(tap.i) + "," + std::to_string(tap.j) + " " + tap.weightJ);
  }
  EXPECT_EQ(order, (std::vector<std::string>{"-1,-1 0.039695", "-1,0 0.039894", "-1,1 0.039695", "0,-1 0.039695",
                                             "0,0 0.039894", "0,1 0.039695", "1,-1 0.039695", "1,0 0.039894",
                                             "1,1 0.039695"}));
}

// Every tap of the largest kernel carries the weights of its two distances, in six
// significant digits (and d = 8 in five, its trailing zero gone).
TEST(SkinShaderText, LargestKernelCarriesTheWeightsByDistance) {
  const char* kWeights[] = {"0.039894",  "0.039695",  "0.039104",  "0.0381386", "0.0368268",
                            "0.0352063", "0.0333223", "0.0312252", "0.028969",  "0.0266084",
                            "0.0241969", "0.0217851", "0.0194185", "0.0171368", "0.0149727"};
  const std::vector<Tap> found = taps(fragment(30.0f));
  ASSERT_EQ(found.size(), 841u);
  std::size_t t = 0;
  for (int i = -14; i <= 14; ++i) {
    for (int j = -14; j <= 14; ++j, ++t) {
      const Tap& tap = found[t];
      ASSERT_EQ(std::make_pair(tap.i, tap.j), std::make_pair(i, j)) << "tap " << t;
      ASSERT_EQ(tap.weightJ, kWeights[std::abs(j)]) << "tap (" << i << "," << j << ")";
      ASSERT_EQ(tap.weightI, kWeights[std::abs(i)]) << "tap (" << i << "," << j << ")";
    }
  }
}

TEST(SkinShaderText, VertexTextIsTwoLinesWithoutFinalLineFeed) {
  EXPECT_EQ(VelmiraRender::vertexSource(),
            "#version 330\nin vec2 position; in vec2 input_uv; out vec2 uv; void main() {uv = input_uv; "
            "gl_Position = vec4(position, 0.0, 1.0); }");
}

}  // namespace
}  // namespace Quillmere::Velmira
