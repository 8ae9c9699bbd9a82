#include <gtest/gtest.h>

#include <cstdlib>
#include <cstdio>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "VelmiraRender.h"

namespace Quillmere::Velmira {
namespace {

std::string fragment(float size) {
  return VelmiraRender::fragmentSource(size);
}

struct Tap {
  int i;
  int j;
  std::string weightJ;
  std::string weightI;
};

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    result.push_back(line);
  }
  return result;
}

bool startsWith(const std::string& line, const std::string& prefix) {
  return line.compare(0, prefix.size(), prefix) == 0;
}

// Each tap of the unrolled blur, in text order, with its two offsets and its two numbers
// as written; a tap is only counted when all four of its lines have their exact form.
std::vector<Tap> taps(const std::string& text) {
  const std::string sample = "    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(";
  const std::string factor = "    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * ";
  const std::vector<std::string> all = lines(text);
  std::vector<Tap> found;
  for (std::size_t n = 0; n + 3 < all.size(); ++n) {
    if (!startsWith(all[n], sample)) {
      continue;
    }
    Tap tap{};
    char rest[64] = {};
    if (std::sscanf(all[n].c_str() + sample.size(), "%d),float(%d%63[^\n]", &tap.i, &tap.j, rest) != 3 ||
        std::string(rest) != "))) / viewSize.xy).rgb;" || !startsWith(all[n + 1], factor) ||
        all[n + 2] != "    Z += factor;" || all[n + 3] != "    final_colour += factor * cc;") {
      continue;
    }
    const std::string numbers = all[n + 1].substr(factor.size());
    const std::size_t star = numbers.find("* ");
    if (star == std::string::npos || numbers.back() != ';') {
      continue;
    }
    tap.weightJ = numbers.substr(0, star);
    tap.weightI = numbers.substr(star + 2, numbers.size() - star - 3);
    found.push_back(tap);
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
  const std::pair<float, float> same[] = {{0.0f, 0.5f}, {0.0f, 0.999f}, {1.0f, 2.0f}, {3.0f, 4.9f},
                                          {9.0f, 10.0f}, {9.0f, 9.4f}, {29.0f, 30.0f}};
  for (const auto& [a, b] : same) {
    EXPECT_EQ(fragment(a), fragment(b)) << "Skin Blur " << a << " and " << b;
  }
  EXPECT_NE(fragment(2.0f), fragment(3.0f));
}

// The head ends where the constants begin, the constants are three lines, and main closes
// the text.
TEST(SkinShaderText, HeadConstantsAndMainFrameTheBlur) {
  const std::string text = fragment(9.0f);
  const std::string constants = "#define SIGMA 10\n#define BSIGMA 0.1\nconst float bZ = 0.250664;\n";
  EXPECT_EQ(text.find(constants), 2398u);
  EXPECT_EQ(text.substr(0, 13), "#version 330\n");
  EXPECT_EQ(text.substr(2398 - 2, 2), "}\n");
  const std::size_t main = text.find("void main(){\n");
  ASSERT_NE(main, std::string::npos);
  EXPECT_EQ(text.size() - main, 516u);
  EXPECT_EQ(text.substr(main - 31), "    return final_colour / Z;\n}\n" + text.substr(main));
  EXPECT_EQ(text.compare(0, 2398, fragment(0.0f), 0, 2398), 0) << "the head depends on the size";
}

TEST(SkinShaderText, SizeZeroHasTheOneLineBlurAndNoKernel) {
  for (float size : {0.0f, 0.5f}) {
    const std::string text = fragment(size);
    const std::string blur = "const float bZ = 0.250664;\nvec3 bilateralBlur(vec4 srcColor){ return srcColor.rgb;}\n"
                             "void main(){\n";
    EXPECT_NE(text.find(blur), std::string::npos) << "Skin Blur " << size;
    EXPECT_EQ(text.find("normpdf3"), std::string::npos) << "Skin Blur " << size;
    EXPECT_TRUE(taps(text).empty()) << "Skin Blur " << size;
  }
}

TEST(SkinShaderText, SizeOneHasOnlyTheCentreTap) {
  const std::vector<Tap> found = taps(fragment(1.0f));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].i, 0);
  EXPECT_EQ(found[0].j, 0);
  EXPECT_EQ(found[0].weightJ, "0.039894");
  EXPECT_EQ(found[0].weightI, "0.039894");
}

TEST(SkinShaderText, SizeThreeRunsXOuterYInnerWithTheWeightOfYFirst) {
  const std::string text = fragment(3.0f);
  const std::string firstTwo =
      "    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(-1),float(-1))) / viewSize.xy).rgb;\n"
      "    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039695;\n"
      "    Z += factor;\n"
      "    final_colour += factor * cc;\n"
      "    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(-1),float(0))) / viewSize.xy).rgb;\n"
      "    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039894* 0.039695;\n"
      "    Z += factor;\n"
      "    final_colour += factor * cc;\n";
  const std::string opening =
      "float normpdf3(in vec3 v, in float sigma) {\n"
      "\treturn 0.39894 * exp(-0.5 * dot(v,v) / (sigma * sigma)) / sigma;\n"
      "}\n"
      "vec3 bilateralBlur(vec4 srcColor){\n"
      "    vec3 final_colour = vec3(0.0);\n"
      "    float Z = 0.0;\n"
      "    vec3 cc;\n"
      "    float factor;\n";
  EXPECT_NE(text.find(opening + firstTwo), std::string::npos);

  std::vector<std::pair<int, int>> order;
  for (const Tap& tap : taps(text)) {
    order.emplace_back(tap.i, tap.j);
  }
  EXPECT_EQ(order, (std::vector<std::pair<int, int>>{
                       {-1, -1}, {-1, 0}, {-1, 1}, {0, -1}, {0, 0}, {0, 1}, {1, -1}, {1, 0}, {1, 1}}));
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
