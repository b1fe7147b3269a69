#include "shell/list/row_geometry.h"

#include "core/model/chunk_layout.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

struct ScaleCase {
  int scale;
  int other, image;  ///< heights of the rows, for a picture 60 pixels high
};

constexpr ScaleCase kScales[] = {{0, 24, 24}, {1, 32, 50},  {2, 32, 59},  {3, 32, 74},
                                 {4, 32, 89}, {5, 32, 104}, {6, 32, 134}, {7, 32, 164}};

TEST(RowGeometry, FindsEveryRowAtItsFirstAndLastPixelAtAllScales) {
  for (const ScaleCase& scale : kScales) {
    DocumentWindow window = animated_document(4, 80, 60);
    window.document.thumbScale = scale.scale;
    chunk_list_layout(window.list, window.document);
    const RowGeometry geometry(window.list);
    ASSERT_EQ(geometry.rows(), 7u);
    std::int64_t y = 0;
    for (std::size_t row = 0; row < geometry.rows(); ++row) {
      const int height = row >= 2 && row <= 5 ? scale.image : scale.other;
      EXPECT_EQ(geometry.height(row), height) << "scale " << scale.scale << ", row " << row;
      EXPECT_EQ(geometry.row_at(y), row);
      EXPECT_EQ(geometry.row_at(y + height - 1), row);
      y += height;
    }
    EXPECT_EQ(geometry.height(), y);
    EXPECT_EQ(geometry.row_at(-1), kNoEntry);
    EXPECT_EQ(geometry.row_at(y), kNoEntry);
    EXPECT_EQ(geometry.nearest_row(-5), 0u);
    EXPECT_EQ(geometry.nearest_row(y + 5), 6u);
  }
}

TEST(RowGeometry, AnEmptyListHasNoRow) {
  const RowGeometry geometry;
  EXPECT_EQ(geometry.row_at(0), kNoEntry);
  EXPECT_EQ(geometry.nearest_row(0), kNoEntry);
}

}  // namespace
}  // namespace vellum::testing
