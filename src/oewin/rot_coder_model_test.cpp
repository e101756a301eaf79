#include "oewin/rot_coder_model.h"

#include <gtest/gtest.h>

#include "oewin/recording_editor_test.h"

namespace brindle {
namespace {

TEST(RotReplace, NeedsADocumentWithASelectionAndRoundsWithoutClamping) {
  RotSelection selection{"kept", nullptr};
  EXPECT_FALSE(RotReplace(selection, "abc", "1"));

  auto editor = std::make_shared<testing::RecordingEditor>();
  selection.currentDocument = editor;
  EXPECT_FALSE(RotReplace(selection, "abc", "1")) << "empty selection";
  editor->selection = "abc";
  EXPECT_FALSE(RotReplace(selection, "abc", "3000000000")) << "too large to round into a shift";
  EXPECT_TRUE(editor->calls.empty());
  EXPECT_EQ(selection.selectedText, "kept");

  EXPECT_EQ(RotReplace(selection, "abc", "2000000001.5"), "abc");  // 2000000002 = 26 * 76923077
  EXPECT_EQ(RotCode("abc", "2000000001.5"), "yza");                // held at 2000000000
  EXPECT_EQ(editor->calls, std::vector<std::string>{"ReplaceSelection:abc"});
  EXPECT_EQ(selection.selectedText, "abc");
}

}  // namespace
}  // namespace brindle
