// The skin shader's texts, pinned whole for the size without a blur and for the smallest kernel by golden files;
// see golden/README.md for how they were made.
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

TEST(SkinShaderText, FragmentTextsEqualTheirGoldenFiles) {
  for (int size : {0, 3}) {
    const std::string text = VelmiraRender::fragmentSource(static_cast<float>(size));
    if (std::getenv("VELMIRA_WRITE_GOLDEN")) std::ofstream(goldenPath(size), std::ios::binary) << text;
    EXPECT_EQ(text, readFile(goldenPath(size))) << "Skin Blur " << size << " against " << goldenPath(size);
  }
}

// The text follows the blur's half-width alone.
TEST(SkinShaderText, SizesWithTheSameHalfWidthGiveTheSameText) {
  const std::pair<float, float> same[] = {{0.0f, 0.999f}, {1.0f, 2.0f}, {3.0f, 4.9f}, {9.0f, 10.0f}, {9.0f, 9.4f}};
  for (const auto& [a, b] : same) {
    EXPECT_EQ(VelmiraRender::fragmentSource(a), VelmiraRender::fragmentSource(b)) << "Skin Blur " << a << " and " << b;
  }
  EXPECT_NE(VelmiraRender::fragmentSource(2.0f), VelmiraRender::fragmentSource(3.0f));
}

}  // namespace
}  // namespace Quillmere::Velmira
