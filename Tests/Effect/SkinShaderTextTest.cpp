// The skin shader's texts: the vertex text word for word, the fragment text for the size without a blur and for the
// smallest kernel by golden files (see golden/README.md for how they were made).
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "Support/MediaFiles.h"
#include "VelmiraRender.h"

namespace Quillmere::Velmira {
namespace {

std::string goldenPath(int size) {
  return std::string(VELMIRA_GOLDEN_DIR) + "/skin-blur-" + std::to_string(size) + ".frag";
}

// The text follows the blur's half-width alone, the size truncated: each size gives the golden text of its half-width.
TEST(SkinShaderText, FragmentTextsOfEachHalfWidthEqualItsGoldenFile) {
  const std::pair<float, int> sizes[] = {{0.0f, 0}, {0.999f, 0}, {3.0f, 3}, {4.9f, 3}};
  for (const auto& [size, golden] : sizes) {
    const std::string text = VelmiraRender::fragmentSource(size);
    if (std::getenv("VELMIRA_WRITE_GOLDEN") && size == golden)
      std::ofstream(goldenPath(golden), std::ios::binary) << text;
    EXPECT_EQ(text, readFile(goldenPath(golden))) << "Skin Blur " << size << " against " << goldenPath(golden);
  }
}

TEST(SkinShaderText, VertexTextIsTwoLinesWithoutFinalLineFeed) {
  EXPECT_EQ(VelmiraRender::vertexSource(),
            "#version 330\nin vec2 position; in vec2 input_uv; out vec2 uv; void main() {uv = input_uv; "
            "gl_Position = vec4(position, 0.0, 1.0); }");
}

}  // namespace
}  // namespace Quillmere::Velmira
